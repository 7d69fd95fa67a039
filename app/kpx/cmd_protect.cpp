// kpx protect and unprotect: a document's password protection set or removed through the checks of
// the Database Protection dialog, then saved.
#include <string>

#include "document/document_status.h"
#include "document/protection_rules.h"
#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"

namespace kelpdex::kpx {

namespace {

// The words both commands share: one FILE and the password file. Zero when they are right.
int CheckWords(CommandContext& context, const CommandInfo& self, const Args& args) {
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 1) return UsageError(context, self, "one FILE is needed");
  if (context.passwordFile.empty()) return UsageError(context, self, "--password-file is needed");
  return kExitSuccess;
}

// Sets the answers as the dialog would take them, and saves.
int ApplyAndSave(CommandDocument& document, ProtectionAnswers& answers) {
  document.prompter.protection = &answers;
  if (!ChangeProtection(document.session)) return kExitFailure;
  return document.Save() ? kExitSuccess : kExitFailure;
}

}  // namespace

int RunProtect(CommandContext& context) {
  const CommandInfo& self = *FindCommand("protect");
  Args args(context.words, {}, {"read-only-copy"});
  if (int status = CheckWords(context, self, args)) return status;
  bool copy = args.Flag("read-only-copy");
  // The read-only copy brings a question whose answer the command line already gave.
  CommandDocument document(context, copy ? answer::kYes : 0);
  if (!document.Open(args.positionals()[0], false)) return kExitFailure;
  ProtectionAnswers answers;
  answers.protect = true;
  answers.allowReadOnly = copy;
  answers.password.CopyFrom(document.prompter.password);
  answers.confirmation.CopyFrom(document.prompter.password);
  // Only the binary forms hold a password: an XML document becomes binary, compressed if it was.
  NativeFormat form =
      EffectiveFormat(document.book.fileFormat, document.settings.defaultFileFormat);
  if (IsXmlFormat(form)) {
    document.book.fileFormat =
        IsCompressedFormat(form) ? NativeFormat::kBinaryCompressed : NativeFormat::kBinary;
  }
  return ApplyAndSave(document, answers);
}

int RunUnprotect(CommandContext& context) {
  const CommandInfo& self = *FindCommand("unprotect");
  Args args(context.words, {}, {});
  if (int status = CheckWords(context, self, args)) return status;
  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], false)) return kExitFailure;
  // A document without protection is left as it is.
  if (document.book.protectionMode == 0) return kExitSuccess;
  ProtectionAnswers answers;
  return ApplyAndSave(document, answers);
}

}  // namespace kelpdex::kpx
