// kpx add-table, add-field, delete-field and rename-table, with the table and field dialogs'
// checks and messages.
#include <string>

#include "core/strings.h"
#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"
#include "store/field_row.h"
#include "table/schema.h"
#include "table/table_state.h"

namespace kelpdex::kpx {

namespace {

// The table dialog's verdict on a name, as its message.
bool TableNameAccepted(CommandContext& context, const Workbook& book, const std::string& name,
                       const Worksheet* current) {
  switch (CheckTableName(book, name, current)) {
    case TableNameCheck::kOk:
      return true;
    case TableNameCheck::kDuplicate:
      Fail(context, LoadStringText(str::kTableExists));
      return false;
    case TableNameCheck::kInvalid:
      Fail(context, "'" + ToTerminal(name) + "' is no table name: it must not be empty, pass " +
                        std::to_string(kTableNameMax) + " characters or hold '\\'");
      return false;
    case TableNameCheck::kReserved:
      Fail(context, kReservedTableNameText);
      return false;
  }
  return false;
}

}  // namespace

int RunAddTable(CommandContext& context) {
  const CommandInfo& self = *FindCommand("add-table");
  Args args(context.words, {"field"}, {});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 2) return UsageError(context, self, "FILE and NAME are needed");
  std::vector<WizardField> fields;
  std::string why;
  for (const std::string& option : args.Values("field")) {
    WizardField field;
    if (int status = ParseFieldOption(option, field, why)) {
      return status == kExitUsage ? UsageError(context, self, why) : Fail(context, why);
    }
    fields.push_back(field);
  }
  std::string name;
  if (!NameFromTerminal(args.positionals()[1], "table", name, why)) return Fail(context, why);
  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], false)) return kExitFailure;
  if (!TableNameAccepted(context, document.book, name, nullptr)) return kExitFailure;
  if (!AddTable(document.book, name)) return Fail(context, ErrorText(document.book.errorCode));
  TableSpec table;
  if (!document.SelectTable(args.positionals()[1], table)) return kExitFailure;
  if (!InsertCheckedFields(document.book, fields, FieldCount(table))) return kExitFailure;
  return document.Save() ? kExitSuccess : kExitFailure;
}

int RunAddField(CommandContext& context) {
  const CommandInfo& self = *FindCommand("add-field");
  Args args(context.words, {"table", "field", "position"}, {});
  long position = 0;
  if (!args.ok() || !args.IntValue("position", 1, 2047, position)) {
    return UsageError(context, self, args.error());
  }
  if (args.positionals().size() != 1) return UsageError(context, self, "one FILE is needed");
  if (!args.Value("table") || !args.Value("field")) {
    return UsageError(context, self, "--table and --field are needed");
  }
  WizardField field;
  std::string why;
  if (int status = ParseFieldOption(*args.Value("field"), field, why)) {
    return status == kExitUsage ? UsageError(context, self, why) : Fail(context, why);
  }
  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], false)) return kExitFailure;
  TableSpec table;
  if (!document.SelectTable(*args.Value("table"), table)) return kExitFailure;
  uint16_t count = FieldCount(table);
  // Positions count from 1 as the grid's columns do; none or one past the end appends.
  uint16_t at = position == 0 ? count : static_cast<uint16_t>(position - 1);
  if (at > count) {
    return Fail(context, "position " + std::to_string(position) + " is out of range (1 to " +
                             std::to_string(count + 1) + ")");
  }
  if (!InsertCheckedField(document.book, field, at)) return kExitFailure;
  if (!document.Save()) return kExitFailure;
  // A new field is not computed for the records already there; only a recalculation fills it.
  uint32_t records = document.book.records.count();
  if (!field.isValue && !field.formulaOrValue.empty() && HoldsCellValues(field.type) &&
      records > 0) {
    std::fprintf(context.err,
                 "kpx: the calculated field '%s' is empty in the %u record%s already there; "
                 "'kpx recalc %s' fills it\n",
                 ToTerminal(field.name).c_str(), records, records == 1 ? "" : "s",
                 args.positionals()[0].c_str());
  }
  return kExitSuccess;
}

int RunDeleteField(CommandContext& context) {
  const CommandInfo& self = *FindCommand("delete-field");
  Args args(context.words, {"table", "field"}, {});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 1) return UsageError(context, self, "one FILE is needed");
  if (!args.Value("table") || !args.Value("field")) {
    return UsageError(context, self, "--table and --field are needed");
  }
  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], false)) return kExitFailure;
  TableSpec table;
  if (!document.SelectTable(*args.Value("table"), table)) return kExitFailure;
  int field = FindFieldIndex(table, *args.Value("field"));
  if (field < 0) return Fail(context, "no field named '" + *args.Value("field") + "'");
  if (!DeleteField(document.book, static_cast<uint16_t>(field))) {
    return Fail(context, ErrorText(document.book.errorCode));
  }
  return document.Save() ? kExitSuccess : kExitFailure;
}

int RunRenameTable(CommandContext& context) {
  const CommandInfo& self = *FindCommand("rename-table");
  Args args(context.words, {"table"}, {});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 2 || !args.Value("table")) {
    return UsageError(context, self, "FILE, --table OLD and NEW are needed");
  }
  std::string name, why;
  if (!NameFromTerminal(args.positionals()[1], "table", name, why)) return Fail(context, why);
  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], false)) return kExitFailure;
  TableSpec table;
  if (!document.SelectTable(*args.Value("table"), table)) return kExitFailure;
  if (!TableNameAccepted(context, document.book, name, table.data)) return kExitFailure;
  if (!RenameTable(document.book, name)) return Fail(context, ErrorText(document.book.errorCode));
  return document.Save() ? kExitSuccess : kExitFailure;
}

}  // namespace kelpdex::kpx
