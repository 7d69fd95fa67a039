// What the document subcommands share: a prompter that answers the lifecycle's dialogs from the
// command line, the opening of a document with its table, and the reading of field and format
// options.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "core/document_kind.h"
#include "core/prompter.h"
#include "core/session_settings.h"
#include "document/document_session.h"
#include "kpx/kpx_commands.h"
#include "store/catalogue.h"
#include "store/workbook.h"

namespace kelpdex::kpx {

// The console prompter with the dialogs answered as the command line says: the wizard's pages,
// the Save As file, whether a file in use may be read.
class CommandPrompter : public ConsolePrompter {
 public:
  CommandPrompter(FILE* err, int defaultAnswer);
  bool OfferReadOnly(std::string_view path) override;
  bool ChooseSaveFile(SaveFileChoice& choice) override;
  bool NewDatabaseWizard(NewDatabaseAnswers& answers) override;
  // The password of --password-file; without one a protected file fails with code 37's message.
  PasswordChoice AskOpenPassword(std::string_view path, bool readOnlyOffered,
                                 Password& password) override;
  // The answers `protection` points to, as protect and unprotect give them.
  bool ProtectionDialog(ProtectionAnswers& answers) override;

  bool readOnlyAllowed = false;
  std::optional<SaveFileChoice> saveChoice;
  std::optional<NewDatabaseAnswers> wizard;
  Password password;  // empty: no --password-file
  const ProtectionAnswers* protection = nullptr;

 private:
  FILE* err_;
};

// One document open for a subcommand, with the command's prompter active while it lives.
class CommandDocument {
 public:
  // `defaultAnswer` answers the questions a command implies (Yes to a long recalculation).
  explicit CommandDocument(CommandContext& context, int defaultAnswer = 0);
  ~CommandDocument();
  CommandDocument(const CommandDocument&) = delete;
  CommandDocument& operator=(const CommandDocument&) = delete;

  // Opens a native document, protected ones with the password of --password-file. A command that
  // only reads may take a file another process holds. False after the failure was reported.
  // `kind` other than native reads a foreign file through the session's ExchangeFiles.
  bool Open(const std::string& path, bool readOnlyAllowed,
            DocumentKind kind = DocumentKind::kNative);
  // Makes the named table current and fills `table`; the first table when `name` is empty. False
  // after a message.
  bool SelectTable(const std::string& name, TableSpec& table);
  // Saves over the document's own file; false after the failure was reported.
  bool Save();

  Workbook book;
  SessionSettings settings;
  DocumentSession session;
  CommandPrompter prompter;

 private:
  CommandContext& context_;
  Prompter* previous_;
};

// "NAME:TYPE[=FORMULA_OR_VALUE]", TYPE one of Text, Link, Number, LongText, Files. A text behind
// "=" that begins with "=" or "+" is a formula, any other a default value. Returns kExitSuccess,
// or with `why` kExitUsage for a malformed option and kExitFailure for a name the document
// cannot hold.
int ParseFieldOption(const std::string& option, WizardField& field, std::string& why);

// "xml", "xml.gz", "binary", "binary.gz" as the four native forms; nothing when unknown.
std::optional<NativeFormat> ParseFormatOption(const std::string& text);
// The option's text of a form; empty for kDefault.
const char* FormatOptionName(NativeFormat format);

// Text between the command line (UTF-8) and cells (the document code page).
std::string FromTerminal(const std::string& utf8);
std::string ToTerminal(std::string_view cp1252);
// Keeps a text on one line of tab-separated output: tab, line breaks and the backslash escaped.
std::string TsvEscaped(std::string_view text);
// A table or field name from the command line. A name is never stored with '?' in place of a
// character the code page lacks: false with `why` instead.
bool NameFromTerminal(const std::string& utf8, const char* what, std::string& name,
                      std::string& why);

// The field of that name as typed on the command line, compared as field names are, without
// regard to case; -1 if none.
int FindFieldIndex(const TableSpec& table, const std::string& typed);

// "kpx: <message>" on standard error, for failures the error table has no text for.
int Fail(CommandContext& context, const std::string& message);

}  // namespace kelpdex::kpx
