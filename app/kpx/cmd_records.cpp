// kpx set and kpx recalc: changes to the records, saved at once.
#include <string>

#include "core/prompter.h"
#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"
#include "store/field_row.h"
#include "table/cell_entry.h"
#include "table/records.h"
#include "text/code_page.h"

namespace kelpdex::kpx {

// The field of that name, compared as field names are, without regard to case; -1 if none.
int FindFieldIndex(const TableSpec& table, const std::string& name) {
  uint16_t count = FieldCount(table);
  for (uint16_t i = 0; i < count; ++i) {
    FieldSpec field;
    if (ReadField(table, i, field) && text::EqualNoCase(field.name, name)) return i;
  }
  return -1;
}

int RunSet(CommandContext& context) {
  const CommandInfo& self = *FindCommand("set");
  Args args(context.words, {"table", "record", "field"}, {});
  long record = 0;
  if (!args.ok() || !args.IntValue("record", 1, RecordSet::kEntries, record)) {
    return UsageError(context, self, args.error());
  }
  if (args.positionals().size() != 2) return UsageError(context, self, "FILE and VALUE are needed");
  if (record == 0 || !args.Value("field") || !args.Value("table")) {
    return UsageError(context, self, "--table, --record and --field are needed");
  }
  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], false)) return kExitFailure;
  TableSpec table;
  if (!document.SelectTable(*args.Value("table"), table)) return kExitFailure;
  int field = FindFieldIndex(table, FromTerminal(*args.Value("field")));
  if (field < 0) return Fail(context, "no field named '" + *args.Value("field") + "'");
  // The record behind the last one is where a new record is typed.
  uint32_t count = document.book.records.count();
  if (static_cast<uint32_t>(record) > count + 1) {
    return Fail(context, "record " + std::to_string(record) + " is out of range (1 to " +
                             std::to_string(count + 1) + ")");
  }
  switch (CommitText(document.book, static_cast<uint32_t>(record - 1), static_cast<uint16_t>(field),
                     FromTerminal(args.positionals()[1]))) {
    case EntryResult::kWritten:
      break;
    case EntryResult::kRefused:
      return Fail(context, "field '" + *args.Value("field") +
                               "' is calculated or holds long text or files; it is not typed into");
    case EntryResult::kFailed:
      return Fail(context, ErrorText(document.book.errorCode));
  }
  return document.Save() ? kExitSuccess : kExitFailure;
}

int RunRecalc(CommandContext& context) {
  const CommandInfo& self = *FindCommand("recalc");
  Args args(context.words, {}, {});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 1) return UsageError(context, self, "one FILE is needed");
  // Asking for a recalculation is the Yes to the question a large table asks.
  CommandDocument document(context, answer::kYes);
  if (!document.Open(args.positionals()[0], false)) return kExitFailure;
  for (uint32_t i = 0; Worksheet* data = document.book.TableByIndex(i); ++i) {
    TableSpec table;
    if (!document.SelectTable(ToTerminal(data->Name()), table)) return kExitFailure;
    if (UpdateFormulas(document.book) != UpdateResult::kUpdated) return kExitFailure;
  }
  return document.Save() ? kExitSuccess : kExitFailure;
}

}  // namespace kelpdex::kpx
