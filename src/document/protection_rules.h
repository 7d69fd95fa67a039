// The decisions around password protection that the lifecycle and the two password dialogs make:
// the Database Protection dialog's checks on OK, the open of a protected file, and the questions
// a save of a protected document asks. Every question goes through the active Prompter.
#pragma once

#include <string>

#include "core/document_kind.h"
#include "core/password.h"
#include "store/workbook.h"

namespace kelpdex {

class DocumentSession;

// The shortest password the Database Protection dialog takes.
constexpr size_t kMinPasswordLength = 6;

// The question asked before a password that leaves the read-only copy open to anyone.
extern const char* const kReadOnlyAccessQuestion;

enum class ProtectionCheck : unsigned char {
  kAccepted,        // the dialog ends
  kStay,            // the dialog stays as it is
  kStayOnPassword,  // the dialog stays, with the password box focused and its text selected
};

// What OK in the Database Protection dialog decides, in the dialog's order: with password
// protection, the read-only question when the copy is allowed (anything but Yes stays), then at
// least six characters, then the same text in both boxes. Messages are shown as it goes.
ProtectionCheck CheckProtectionAnswers(const ProtectionAnswers& answers);

// The dialog's answers as the document takes them: mode 1 with the read-only copy, mode 2
// without, and the password; or no protection and no password.
void ApplyProtection(Workbook& book, const ProtectionAnswers& answers);

// The Protection command: the dialog, started from the document's settings, its answers checked
// again and applied, the document marked modified. False when cancelled or refused.
bool ChangeProtection(DocumentSession& session);

// The open of a native file: when it is a protected binary file, asks for its password (offering
// the read-only copy in mode 1). `usePassword` says whether `password` is to open it. False when
// the user cancelled; any other file goes on without a question.
bool AskPasswordForOpen(const std::string& path, Password& password, bool& usePassword);

// Before a save of the document as `kind`: a protected document saved in a foreign kind is told
// that its protection is dropped; one saved in an XML form is asked to switch to binary (Cancel
// stops the save); one whose password is not in memory (opened as its read-only copy) has its
// protection set anew. False when the save is to stop.
bool ConfirmProtectedSave(Workbook& book, NativeFormat defaultFormat, DocumentKind kind);

}  // namespace kelpdex
