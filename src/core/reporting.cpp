#include "core/reporting.h"

#include <string>

#include "core/prompter.h"
#include "core/strings.h"
#include "platform/os.h"
#include "text/utf8.h"

namespace kelpdex {

namespace {

constexpr unsigned kErrorFlags = mb::kTaskModal | mb::kIconExclamation | mb::kOk;

// The title is looked up on every call; without it the box has an empty title.
std::string_view Title() {
  const char* title = LoadStringText(str::kAppName);
  return title != nullptr ? std::string_view(title) : std::string_view();
}

}  // namespace

void ShowError(ErrorCode code) {
  ActivePrompter().MessageBox(Title(), ErrorText(code), kErrorFlags);
}

std::string ErrorTextAtLine(ErrorCode code, int line) {
  return FormatMessageText("%1!s!\nLine: %2!d!", {ErrorText(code), line});
}

void ShowErrorAtLine(ErrorCode code, int line) {
  ActivePrompter().MessageBox(Title(), ErrorTextAtLine(code, line), kErrorFlags);
}

void ShowMessage(std::string_view text) {
  ActivePrompter().MessageBox(Title(), text, kErrorFlags);
}

int Ask(int stringId, unsigned flags) {
  const char* text = LoadStringText(stringId);
  return AskText(text != nullptr ? text : "", flags);
}

int AskText(std::string_view text, unsigned flags) {
  return ActivePrompter().MessageBox(Title(), text, flags | mb::kTaskModal);
}

bool ShowSystemError() {
  return ShowSystemError(std::string_view());
}

bool ShowSystemError(std::string_view name) {
  int code = platform::LastSystemError();
  if (code == 0) return false;
  // The OS describes its errors in UTF-8; messages are in the code page.
  std::string text = text::Utf8ToCp1252(platform::SystemErrorText(code));
  if (!name.empty()) {
    text += '\n';
    text.append(name);
  }
  ShowMessage(text);
  return true;
}

}  // namespace kelpdex
