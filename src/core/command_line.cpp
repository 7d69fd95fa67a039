#include "core/command_line.h"

#include "text/code_page.h"

namespace kelpdex {

namespace {

struct SwitchWord {
  const char* word;
  CommandSwitch value;
};

constexpr SwitchWord kSwitchWords[] = {
    {"UnregServer", CommandSwitch::kUnregServer}, {"Uninstall", CommandSwitch::kUninstall},
    {"RegServer", CommandSwitch::kRegServer},     {"Automation", CommandSwitch::kAutomation},
    {"Embedding", CommandSwitch::kEmbedding},
};

bool IntroducesSwitch(std::string_view line, size_t at, bool slashIsPathSeparator) {
  char c = line[at];
  if (c == '-') return true;
  if (c != '/') return false;
  if (!slashIsPathSeparator) return true;
  return at == 0 || line[at - 1] == ' ' || line[at - 1] == '\t';
}

}  // namespace

CommandSwitch ScanCommandLine(std::string_view line, bool slashIsPathSeparator) {
  for (size_t at = 0; at < line.size(); ++at) {
    if (!IntroducesSwitch(line, at, slashIsPathSeparator)) continue;
    std::string_view rest = line.substr(at + 1);
    for (const SwitchWord& w : kSwitchWords) {
      if (text::EqualNoCase(rest, w.word)) return w.value;
    }
  }
  return CommandSwitch::kNone;
}

CommandSwitch ScanCommandLine(std::string_view line) {
#ifdef _WIN32
  return ScanCommandLine(line, false);
#else
  return ScanCommandLine(line, true);
#endif
}

std::string JoinArguments(int argc, const char* const* argv) {
  std::string line;
  for (int i = 1; i < argc; ++i) {
    if (i > 1) line += ' ';
    line += argv[i];
  }
  return line;
}

std::string_view PathFromCommandLine(std::string_view line) {
  size_t start = line.find_first_not_of(" \t");
  return start == std::string_view::npos ? std::string_view() : line.substr(start);
}

}  // namespace kelpdex
