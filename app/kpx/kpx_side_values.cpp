#include "kpx/kpx_side_values.h"

#include "persist/document_file.h"
#include "store/field_row.h"

namespace kelpdex::kpx {

int FindFieldIndex(const TableSpec& table, const std::string& typed);

int OpenValueCell(CommandContext& context, const CommandInfo& self, Args& args,
                  CommandDocument& document, FieldType type, bool readOnly, bool newRecord,
                  ValueCell& cell) {
  long record = 0;
  if (!args.ok() || !args.IntValue("record", 1, RecordSet::kEntries, record)) {
    return UsageError(context, self, args.error());
  }
  if (args.positionals().empty()) return UsageError(context, self, "FILE is needed");
  if (record == 0 || !args.Value("field") || !args.Value("table")) {
    return UsageError(context, self, "--table, --record and --field are needed");
  }
  if (!document.Open(args.positionals()[0], readOnly)) return kExitFailure;
  if (!document.SelectTable(*args.Value("table"), cell.table)) return kExitFailure;
  std::string fieldName = *args.Value("field");
  int field = FindFieldIndex(cell.table, fieldName);
  if (field < 0) return Fail(context, "no field named '" + fieldName + "'");
  FieldSpec fieldRow;
  if (!ReadField(cell.table, static_cast<uint16_t>(field), fieldRow) || fieldRow.type != type) {
    return Fail(context,
                "field '" + fieldName + "' is no " + FieldTypeText(type, false) + " field");
  }
  Workbook& book = document.book;
  uint32_t count = book.records.count();
  uint32_t last = newRecord ? count + 1 : count;
  if (static_cast<uint32_t>(record) > last) {
    return Fail(context, "record " + std::to_string(record) + " is out of range (1 to " +
                             std::to_string(last) + ")");
  }
  cell.row = book.records[static_cast<uint32_t>(record - 1)];
  cell.column = static_cast<uint16_t>(field);
  cell.sidePath = SideFilePath(book.fileName);
  return kExitSuccess;
}

}  // namespace kelpdex::kpx
