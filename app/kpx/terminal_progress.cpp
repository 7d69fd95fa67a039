#include "kpx/terminal_progress.h"

#include "platform/terminal.h"

namespace kelpdex::kpx {

TerminalProgress::TerminalProgress(FILE* err, std::string label)
    : err_(err),
      label_(std::move(label)),
      enabled_(platform::IsTerminal(err)),
      start_(Clock::now()),
      lastShown_(start_) {
  previous_ = SetProgressSink(enabled_ ? this : nullptr);
}

TerminalProgress::~TerminalProgress() {
  SetProgressSink(previous_);
  // The line goes, so that the command's own output or message starts on a clean line.
  if (shown_) std::fputs("\r\x1b[K", err_);
}

std::string TerminalProgress::Line(const std::string& label, uint64_t done, uint64_t total) {
  char amount[32];
  if (total != 0) {
    std::snprintf(amount, sizeof amount, "%3d%%",
                  static_cast<int>(done >= total ? 100 : done * 100 / total));
  } else {
    std::snprintf(amount, sizeof amount, "%.1f MB", static_cast<double>(done) / (1024.0 * 1024.0));
  }
  return "kpx: " + label + " " + amount;
}

void TerminalProgress::Progress(uint64_t done, uint64_t total) {
  Clock::time_point now = Clock::now();
  // Quick operations show nothing; slow ones a line refreshed a few times a second.
  if (now - start_ < std::chrono::seconds(1)) return;
  if (shown_ && now - lastShown_ < std::chrono::milliseconds(200)) return;
  lastShown_ = now;
  shown_ = true;
  std::fprintf(err_, "\r%s\x1b[K", Line(label_, done, total).c_str());
  std::fflush(err_);
}

}  // namespace kelpdex::kpx
