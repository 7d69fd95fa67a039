#include "kpx/kpx_document.h"

#include "kpx/kpx_password.h"
#include "store/field_row.h"
#include "table/table_state.h"
#include "text/code_page.h"
#include "text/utf8.h"

namespace kelpdex::kpx {

CommandPrompter::CommandPrompter(FILE* err, int defaultAnswer)
    : ConsolePrompter(err, stdin, "kpx: ", defaultAnswer), err_(err) {}

bool CommandPrompter::OfferReadOnly(std::string_view path) {
  if (readOnlyAllowed) return true;
  std::fprintf(err_, "kpx: %s: %s\n", std::string(path).c_str(), ErrorText(err::kFileInUse));
  return false;
}

bool CommandPrompter::ChooseSaveFile(SaveFileChoice& choice) {
  if (!saveChoice) return false;
  choice = *saveChoice;
  return true;
}

bool CommandPrompter::NewDatabaseWizard(NewDatabaseAnswers& answers) {
  if (!wizard) return false;
  answers = *wizard;
  return true;
}

PasswordChoice CommandPrompter::AskOpenPassword(std::string_view path, bool /*readOnlyOffered*/,
                                                Password& answer) {
  if (password.empty()) {
    std::fprintf(err_, "kpx: %s: %s\n", std::string(path).c_str(),
                 ErrorText(err::kInvalidPassword));
    return PasswordChoice::kCancel;
  }
  answer.CopyFrom(password);
  return PasswordChoice::kPassword;
}

bool CommandPrompter::ProtectionDialog(ProtectionAnswers& answers) {
  if (protection == nullptr) return false;
  answers.protect = protection->protect;
  answers.allowReadOnly = protection->allowReadOnly;
  answers.password.CopyFrom(protection->password);
  answers.confirmation.CopyFrom(protection->confirmation);
  return true;
}

CommandDocument::CommandDocument(CommandContext& context, int defaultAnswer)
    : session(book, settings), prompter(context.err, defaultAnswer), context_(context) {
  previous_ = SetActivePrompter(&prompter);
}

CommandDocument::~CommandDocument() {
  // The lock and the nodes go before the prompter that would report about them.
  session.ResetDocument();
  SetActivePrompter(previous_);
}

bool CommandDocument::Open(const std::string& path, bool readOnlyAllowed, DocumentKind kind) {
  prompter.readOnlyAllowed = readOnlyAllowed;
  if (!context_.passwordFile.empty()) {
    std::string why;
    if (!ReadPasswordFile(context_.passwordFile, prompter.password, why)) {
      Fail(context_, why);
      return false;
    }
  }
  // A native file is told by its first bytes, whatever the extension says.
  return session.OpenDocument(path, kind);
}

bool CommandDocument::SelectTable(const std::string& name, TableSpec& table) {
  std::string stored, why;
  // A name the code page cannot hold names no table, even one that holds '?' in its place.
  bool held = NameFromTerminal(name, "table", stored, why);
  Worksheet* sheet = name.empty() ? book.TableByIndex(0) : held ? book.FindTable(stored) : nullptr;
  if (sheet == nullptr) {
    Fail(context_, name.empty() ? "the document holds no table"
                                : "no table named '" + name + "' in " + book.fileName);
    return false;
  }
  book.currentSheet = sheet;
  if (!RefreshCurrentTable(book) || !CurrentTable(book, table)) {
    Fail(context_, ErrorText(book.errorCode));
    return false;
  }
  return true;
}

bool CommandDocument::Save() {
  if (book.readOnly) {
    Fail(context_, book.fileName + ": " + ErrorText(err::kFileInUse));
    return false;
  }
  // The desktop asks before it replaces such a file; a command line has nobody to ask.
  if (session.FileHeldNoDocument()) {
    Fail(context_,
         book.fileName + ": the file is not empty but holds no database; it is not saved over");
    return false;
  }
  session.MarkModified(true);
  return session.SaveDocument();
}

int ParseFieldOption(const std::string& option, WizardField& field, std::string& why) {
  size_t colon = option.find(':');
  if (colon == std::string::npos || colon == 0) {
    why = "a field is NAME:TYPE[=FORMULA_OR_VALUE], not '" + option + "'";
    return kExitUsage;
  }
  size_t equals = option.find('=', colon);
  std::string type = option.substr(
      colon + 1, equals == std::string::npos ? std::string::npos : equals - colon - 1);
  field = WizardField();
  if (type == "Text") {
    field.type = FieldType::kText;
  } else if (type == "Link") {
    field.type = FieldType::kText;
    field.link = true;
  } else if (type == "Number") {
    field.type = FieldType::kNumber;
  } else if (type == "LongText") {
    field.type = FieldType::kLongText;
  } else if (type == "Files") {
    field.type = FieldType::kFiles;
  } else {
    why = "unknown field type '" + type + "' (Text, Link, Number, LongText or Files)";
    return kExitUsage;
  }
  if (!NameFromTerminal(option.substr(0, colon), "field", field.name, why)) return kExitFailure;
  if (equals != std::string::npos) {
    field.formulaOrValue = FromTerminal(option.substr(equals + 1));
    char first = field.formulaOrValue.empty() ? '\0' : field.formulaOrValue[0];
    field.isValue = first != '=' && first != '+';
  }
  return kExitSuccess;
}

namespace {

struct FormatOption {
  const char* name;
  NativeFormat format;
};

constexpr FormatOption kFormatOptions[] = {{"xml", NativeFormat::kXml},
                                           {"xml.gz", NativeFormat::kXmlCompressed},
                                           {"binary", NativeFormat::kBinary},
                                           {"binary.gz", NativeFormat::kBinaryCompressed}};

}  // namespace

std::optional<NativeFormat> ParseFormatOption(const std::string& text) {
  for (const FormatOption& option : kFormatOptions) {
    if (text == option.name) return option.format;
  }
  return std::nullopt;
}

const char* FormatOptionName(NativeFormat format) {
  for (const FormatOption& option : kFormatOptions) {
    if (format == option.format) return option.name;
  }
  return "";
}

std::string FromTerminal(const std::string& utf8) {
  return text::Utf8ToCp1252(utf8);
}

std::string ToTerminal(std::string_view cp1252) {
  return text::Cp1252ToUtf8(cp1252);
}

std::string TsvEscaped(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '\t':
        out += "\\t";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\\':
        out += "\\\\";
        break;
      default:
        out += c;
    }
  }
  return out;
}

bool NameFromTerminal(const std::string& utf8, const char* what, std::string& name,
                      std::string& why) {
  size_t replaced = 0;
  name = text::Utf8ToCp1252(utf8, &replaced);
  if (replaced == 0) return true;
  why = std::string("the ") + what + " name '" + utf8 +
        "' holds characters outside the document's code page (Windows-1252)";
  return false;
}

int Fail(CommandContext& context, const std::string& message) {
  std::fprintf(context.err, "kpx: %s\n", message.c_str());
  return kExitFailure;
}

// The field of that name as typed on the command line, compared as field names are, without
// regard to case; -1 if none.
int FindFieldIndex(const TableSpec& table, const std::string& typed) {
  std::string name, why;
  if (!NameFromTerminal(typed, "field", name, why)) return -1;
  uint16_t count = FieldCount(table);
  for (uint16_t i = 0; i < count; ++i) {
    FieldSpec field;
    if (ReadField(table, i, field) && text::EqualNoCase(field.name, name)) return i;
  }
  return -1;
}

}  // namespace kelpdex::kpx
