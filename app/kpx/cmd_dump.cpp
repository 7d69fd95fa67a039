// kpx dump: the records of a table in record-set order, shown as the grid shows them.
#include <memory>
#include <string>
#include <vector>

#include "document/side_value_text.h"
#include "format/cell_text.h"
#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"
#include "kpx/kpx_json.h"
#include "kpx/kpx_search.h"
#include "kpx/kpx_side_values.h"
#include "store/field_row.h"

namespace kelpdex::kpx {

namespace {

// One formatter per style, compiled when a cell of that style first shows.
class Formatters {
 public:
  Formatters(const Workbook& book, const LocaleSettings& locale)
      : book_(book), locale_(locale), byStyle_(book.styles.styleCount()) {}
  const CellFormatter& For(uint16_t style) {
    if (style >= byStyle_.size()) style = 0;
    std::unique_ptr<CellFormatter>& slot = byStyle_[style];
    if (!slot) {
      slot = std::make_unique<CellFormatter>(ReadNumberStyle(book_.styles.Style(style)), locale_);
    }
    return *slot;
  }

 private:
  const Workbook& book_;
  const LocaleSettings& locale_;
  std::vector<std::unique_ptr<CellFormatter>> byStyle_;
};

}  // namespace

int RunDump(CommandContext& context) {
  const CommandInfo& self = *FindCommand("dump");
  Args args(context.words, {"table", "limit", "filter", "expr", "sort"},
            {"tsv", "json", "header", "count"});
  long limit = -1;
  if (!args.ok() || !args.IntValue("limit", 0, RecordSet::kEntries, limit)) {
    return UsageError(context, self, args.error());
  }
  if (args.positionals().size() != 1) return UsageError(context, self, "one FILE is needed");
  if (args.Flag("tsv") && args.Flag("json")) {
    return UsageError(context, self, "--tsv and --json exclude each other");
  }
  if (args.Flag("header") && args.Flag("json")) {
    return UsageError(context, self, "--header does not apply to --json, which names every value");
  }
  if (args.Flag("count") && (args.Flag("json") || args.Flag("tsv") || args.Flag("header"))) {
    return UsageError(context, self, "--count prints the found count alone");
  }
  bool json = args.Flag("json");
  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], true)) return kExitFailure;
  TableSpec table;
  if (!document.SelectTable(args.Value("table").value_or(""), table)) return kExitFailure;
  std::vector<std::string> transient;
  bool given = false;
  std::string why;
  int status = ReadTransientFilters(args, table, transient, given, why);
  if (status == kExitUsage) return UsageError(context, self, why);
  if (status != kExitSuccess) return Fail(context, why);
  std::vector<std::pair<uint16_t, bool>> sort;
  status = ReadSortOptions(args, table, sort, why, "sort");
  if (status != kExitSuccess) return Fail(context, why);
  uint32_t found = 0;
  if (!ApplyRecordSet(document, table, given ? &transient : nullptr, found,
                      sort.empty() ? nullptr : &sort)) {
    return Fail(context, ErrorText(document.book.errorCode));
  }
  if (args.Flag("count")) {
    std::fprintf(context.out, "%u\n", found);
    return kExitSuccess;
  }

  return PrintRecordSet(context, document, table, json, args.Flag("header"), limit);
}

int PrintRecordSet(CommandContext& context, CommandDocument& document, const TableSpec& table,
                   bool json, bool header, long limit) {
  Workbook& book = document.book;
  uint16_t fieldCount = FieldCount(table);
  std::vector<std::string> names;
  std::vector<FieldType> types;
  for (uint16_t f = 0; f < fieldCount; ++f) {
    FieldSpec field;
    bool read = ReadField(table, f, field);
    names.push_back(read ? ToTerminal(field.name) : std::string());
    types.push_back(read ? field.type : FieldType::kUnknown);
  }
  if (header) {
    for (uint16_t f = 0; f < fieldCount; ++f) {
      std::fprintf(context.out, "%s%s", f ? "\t" : "", TsvEscaped(names[f]).c_str());
    }
    std::fputc('\n', context.out);
  }
  uint32_t count = book.records.count();
  if (limit >= 0 && static_cast<uint32_t>(limit) < count) count = static_cast<uint32_t>(limit);
  Formatters formatters(book, genericLocale);
  Worksheet& data = *table.data;
  char shown[kDisplayTextMax];
  std::string line;
  if (json) std::fputs("[", context.out);
  for (uint32_t record = 0; record < count; ++record) {
    uint32_t row = book.records[record];
    line.clear();
    if (json) line += record ? ",\n{" : "\n{";
    for (uint16_t f = 0; f < fieldCount; ++f) {
      std::string value;
      if (types[f] == FieldType::kLongText || types[f] == FieldType::kFiles) {
        // Their cells hold where the value stands in the side file; the value is what shows.
        ErrorCode error = err::kNone;
        if (!SideValueText(book, data, row, f, types[f], value, error)) {
          return Fail(context, ErrorText(error));
        }
        value = ToTerminal(value);
      } else {
        const CellRecord* r = data.cells.GetCellFast(row, f);
        size_t length = 0;
        if (r != nullptr) length = formatters.For(data.formats.StyleAt(row, f)).Display(r, shown);
        value = ToTerminal(std::string_view(shown, length));
      }
      if (json) {
        line += (f ? ", " : "") + JsonString(names[f]) + ": " + JsonString(value);
      } else {
        if (f) line += '\t';
        line += TsvEscaped(value);
      }
    }
    line += json ? "}" : "\n";
    std::fputs(line.c_str(), context.out);
  }
  if (json) std::fputs("\n]\n", context.out);
  return kExitSuccess;
}

}  // namespace kelpdex::kpx
