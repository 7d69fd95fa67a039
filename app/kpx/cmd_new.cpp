// kpx new: a new database with one table, made through the New Database wizard's answers.
#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"
#include "platform/os.h"

namespace kelpdex::kpx {

int RunNew(CommandContext& context) {
  const CommandInfo& self = *FindCommand("new");
  Args args(context.words, {"table", "field", "format"}, {});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 1) return UsageError(context, self, "one FILE is needed");
  std::optional<std::string> table = args.Value("table");
  if (!table || table->empty()) return UsageError(context, self, "--table NAME is needed");
  NativeFormat format = NativeFormat::kXml;
  if (std::optional<std::string> name = args.Value("format")) {
    std::optional<NativeFormat> parsed = ParseFormatOption(*name);
    if (!parsed) return UsageError(context, self, "unknown format '" + *name + "'");
    format = *parsed;
  }
  NewDatabaseAnswers answers;
  std::string why;
  for (const std::string& option : args.Values("field")) {
    WizardField field;
    if (int status = ParseFieldOption(option, field, why)) {
      return status == kExitUsage ? UsageError(context, self, why) : Fail(context, why);
    }
    answers.fields.push_back(field);
  }
  if (!NameFromTerminal(*table, "table", answers.tableName, why)) return Fail(context, why);
  std::string path = args.positionals()[0];
  // The wizard supplies the extension; the check for an existing file must see the same name.
  if (platform::FileNameOf(path).find('.') == std::string::npos) path += ".kpx";
  if (platform::FileExists(path)) return Fail(context, path + " already exists");
  answers.path = path;

  CommandDocument document(context);
  document.settings.defaultFileFormat = format;
  document.prompter.wizard = answers;
  if (!document.session.NewDatabase()) return kExitFailure;
  // The database stays open without a file when the write failed; that was reported.
  return document.book.fileName.empty() ? kExitFailure : kExitSuccess;
}

}  // namespace kelpdex::kpx
