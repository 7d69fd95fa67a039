#include "document/protection_rules.h"

#include "core/prompter.h"
#include "core/reporting.h"
#include "core/strings.h"
#include "document/document_session.h"
#include "document/document_status.h"
#include "persist/file_kind.h"

namespace kelpdex {

const char* const kReadOnlyAccessQuestion =
    "The protection option you've selected will allow anyone to open the workbook in the "
    "'read-only' mode without using the password.\nContinue?";

ProtectionCheck CheckProtectionAnswers(const ProtectionAnswers& answers) {
  if (!answers.protect) return ProtectionCheck::kAccepted;
  if (answers.allowReadOnly &&
      AskText(kReadOnlyAccessQuestion, mb::kYesNo | mb::kIconQuestion) != answer::kYes) {
    return ProtectionCheck::kStay;
  }
  if (answers.password.size() < kMinPasswordLength) {
    Ask(str::kPasswordTooShort, mb::kOk | mb::kIconExclamation);
    return ProtectionCheck::kStayOnPassword;
  }
  // Byte for byte: case and every other character count.
  if (answers.password.view() != answers.confirmation.view()) {
    Ask(str::kPasswordsDiffer, mb::kOk | mb::kIconExclamation);
    return ProtectionCheck::kStay;
  }
  return ProtectionCheck::kAccepted;
}

void ApplyProtection(Workbook& book, const ProtectionAnswers& answers) {
  if (!answers.protect) {
    book.protectionMode = 0;
    book.password.Wipe();
    return;
  }
  book.protectionMode = answers.allowReadOnly ? 1 : 2;
  book.password.CopyFrom(answers.password);
}

namespace {

// The dialog from the document's settings, then its answers checked once more, as a dialog that
// cannot check them itself may have passed them on.
bool RunProtectionDialog(Workbook& book) {
  ProtectionAnswers answers;
  answers.protect = book.protectionMode != 0;
  answers.allowReadOnly = book.protectionMode == 1;
  answers.password.CopyFrom(book.password);
  answers.confirmation.CopyFrom(book.password);
  if (!ActivePrompter().ProtectionDialog(answers)) return false;
  if (CheckProtectionAnswers(answers) != ProtectionCheck::kAccepted) return false;
  ApplyProtection(book, answers);
  return true;
}

}  // namespace

bool ChangeProtection(DocumentSession& session) {
  if (!session.HasDocument()) return false;
  if (!RunProtectionDialog(session.book())) return false;
  session.MarkModified(true);
  return true;
}

bool AskPasswordForOpen(const std::string& path, Password& password, bool& usePassword) {
  usePassword = false;
  password.Wipe();
  NativeFileKind kind = NativeFileKind::kNone;
  ProtectionMode mode = ProtectionMode::kNone;
  ErrorCode error = err::kNone;
  // A file that cannot be sniffed fails in the read, which tells why.
  if (!SniffFile(path, kind, mode, error) || mode == ProtectionMode::kNone) return true;
  switch (ActivePrompter().AskOpenPassword(path, mode == ProtectionMode::kReadOnlyCopy, password)) {
    case PasswordChoice::kPassword:
      usePassword = true;
      return true;
    case PasswordChoice::kReadOnly:
      password.Wipe();
      return true;
    case PasswordChoice::kCancel:
      break;
  }
  password.Wipe();
  return false;
}

bool ConfirmProtectedSave(Workbook& book, NativeFormat defaultFormat, DocumentKind kind) {
  if (book.protectionMode == 0) return true;
  if (kind != DocumentKind::kNative) {
    Ask(str::kProtectionIgnored, mb::kOk | mb::kIconExclamation);
    return true;
  }
  if (IsXmlFormat(EffectiveFormat(book.fileFormat, defaultFormat))) {
    if (Ask(str::kSwitchToBinary, mb::kOkCancel | mb::kIconQuestion) != answer::kOk) return false;
    book.fileFormat = NativeFormat::kBinary;
  }
  // A document opened as its read-only copy never had the password: it is protected anew or not
  // at all.
  if (book.password.empty() && !RunProtectionDialog(book)) return false;
  return true;
}

}  // namespace kelpdex
