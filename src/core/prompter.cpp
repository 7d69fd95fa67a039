#include "core/prompter.h"

#include <string>

#include "platform/terminal.h"
#include "text/utf8.h"

namespace kelpdex {

namespace {

bool Allows(unsigned flags, int answerId) {
  switch (flags & mb::kButtonMask) {
    case mb::kOkCancel:
      return answerId == answer::kOk || answerId == answer::kCancel;
    case mb::kYesNoCancel:
      return answerId == answer::kYes || answerId == answer::kNo || answerId == answer::kCancel;
    case mb::kYesNo:
      return answerId == answer::kYes || answerId == answer::kNo;
    default:
      return answerId == answer::kOk;
  }
}

// Message texts may span lines; on a terminal each message stays one line.
std::string OneLine(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  bool pendingBreak = false;
  for (char c : text) {
    if (c == '\n' || c == '\r') {
      pendingBreak = !out.empty();
      continue;
    }
    if (pendingBreak) {
      out += ' ';
      pendingBreak = false;
    }
    out += c;
  }
  return out;
}

int ParseAnswer(const char* line, unsigned flags) {
  char c = line[0];
  if (c == 'y' || c == 'Y') return answer::kYes;
  if (c == 'n' || c == 'N') return answer::kNo;
  if (c == 'c' || c == 'C') return answer::kCancel;
  if (c == 'o' || c == 'O' || c == '\n') {
    return (flags & mb::kButtonMask) == mb::kOk || (flags & mb::kButtonMask) == mb::kOkCancel
               ? answer::kOk
               : 0;
  }
  return 0;
}

const char* ChoicesOf(unsigned flags) {
  switch (flags & mb::kButtonMask) {
    case mb::kOkCancel:
      return " [ok/cancel] ";
    case mb::kYesNoCancel:
      return " [y/n/c] ";
    case mb::kYesNo:
      return " [y/n] ";
    default:
      return "";
  }
}

Prompter* activePrompter = nullptr;

}  // namespace

int CautiousAnswer(unsigned flags) {
  if (Allows(flags, answer::kCancel)) return answer::kCancel;
  if (Allows(flags, answer::kNo)) return answer::kNo;
  return answer::kOk;
}

ConsolePrompter::ConsolePrompter(FILE* out, FILE* in, std::string_view prefix, int defaultAnswer)
    : out_(out), in_(in), prefix_(prefix), defaultAnswer_(defaultAnswer) {}

int ConsolePrompter::MessageBox(std::string_view /*title*/, std::string_view text, unsigned flags) {
  std::string line(prefix_);
  text::AppendCp1252AsUtf8(line, OneLine(text));
  bool question = (flags & mb::kButtonMask) != mb::kOk;
  if (!question) {
    line += '\n';
    std::fputs(line.c_str(), out_);
    std::fflush(out_);
    return answer::kOk;
  }
  if (defaultAnswer_ != 0 && Allows(flags, defaultAnswer_)) return defaultAnswer_;
  if (in_ == nullptr || !platform::IsTerminal(in_)) return CautiousAnswer(flags);
  for (;;) {
    std::fputs((line + ChoicesOf(flags)).c_str(), out_);
    std::fflush(out_);
    char reply[64];
    if (std::fgets(reply, sizeof reply, in_) == nullptr) return CautiousAnswer(flags);
    int id = ParseAnswer(reply, flags);
    if (id != 0 && Allows(flags, id)) return id;
  }
}

Prompter& ActivePrompter() {
  if (activePrompter != nullptr) return *activePrompter;
  static ConsolePrompter console(stderr, stdin, "");
  return console;
}

Prompter* SetActivePrompter(Prompter* prompter) {
  Prompter* previous = activePrompter;
  activePrompter = prompter;
  return previous;
}

}  // namespace kelpdex
