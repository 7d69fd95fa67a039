// The reporters: the last line of every command, which shows a failure code, a message or a
// question through the active Prompter. They never fail and never report about themselves.
#pragma once

#include <string_view>

#include "core/error_code.h"

namespace kelpdex {

// Shows the text of `code` with the application's title, an exclamation icon and OK.
void ShowError(ErrorCode code);
// The same for the XML reader's codes: the text, a line break, and "Line: " with the line.
void ShowErrorAtLine(ErrorCode code, int line);
// Shows a text of another origin as it stands, with the same title and flags.
void ShowMessage(std::string_view text);
// Shows string `stringId` with `flags` (task-modal added) and returns the answer's id.
int Ask(int stringId, unsigned flags);
// The same for a text already formatted from a string of the table.
int AskText(std::string_view text, unsigned flags);
// Shows the text of the OS's last error, and with the second form a name below it. Returns false,
// showing nothing, when there is no last error.
bool ShowSystemError();
bool ShowSystemError(std::string_view name);

// The text ShowErrorAtLine shows, for callers that need it without a box.
std::string ErrorTextAtLine(ErrorCode code, int line);

}  // namespace kelpdex
