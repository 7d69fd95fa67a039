// kpx info: what a document holds, without its records.
#include <string>
#include <vector>

#include "document/document_status.h"
#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"
#include "kpx/kpx_json.h"
#include "kpx/kpx_search.h"
#include "search/search_keys.h"
#include "store/field_row.h"

namespace kelpdex::kpx {

namespace {

struct KeyFilter {
  std::string key;
  std::string expression;
};

struct FieldInfo {
  FieldSpec row;
  std::vector<KeyFilter> filters;
};

struct TableInfo {
  std::string name;
  uint32_t records = 0;
  uint32_t found = 0;
  std::vector<std::string> keys;
  std::vector<FieldInfo> fields;
};

// Each field's filter in every key, and the keys' names.
void ReadTable(CommandDocument& document, Worksheet* data, TableInfo& info) {
  info.name = data->Name();
  TableSpec table;
  if (!document.SelectTable(ToTerminal(info.name), table)) return;
  info.records = document.book.records.count();
  info.found = info.records;
  ApplyRecordSet(document, table, nullptr, info.found);
  info.keys = SearchKeyNames(table);
  uint16_t keyCount = static_cast<uint16_t>(info.keys.size());
  uint16_t count = FieldCount(table);
  for (uint16_t i = 0; i < count; ++i) {
    FieldInfo field;
    if (!ReadField(table, i, field.row)) continue;
    for (uint16_t k = 0; k < keyCount; ++k) {
      std::string expression = GetKeyFilterText(table, k, i);
      if (!expression.empty()) field.filters.push_back({info.keys[k], expression});
    }
    info.fields.push_back(field);
  }
}

// A name or formula on a line of tab-separated text, escaped as dump escapes values.
std::string Shown(std::string_view cp1252) {
  return TsvEscaped(ToTerminal(cp1252));
}

void PrintText(FILE* out, const CommandDocument& document, const std::string& format,
               const std::vector<TableInfo>& tables) {
  const Workbook& book = document.book;
  std::fprintf(out, "file: %s\nformat: %s\n", book.fileName.c_str(), format.c_str());
  if (!book.lastSavedAt.empty()) {
    std::fprintf(out, "last saved: %s by %s\n", ToTerminal(book.lastSavedAt).c_str(),
                 ToTerminal(book.lastSavedBy).c_str());
  }
  if (book.readOnly) std::fputs("read-only: yes\n", out);
  for (const TableInfo& table : tables) {
    std::fprintf(out, "table %s: %u records, %u found, %zu fields\n", Shown(table.name).c_str(),
                 table.records, table.found, table.fields.size());
    for (const FieldInfo& field : table.fields) {
      std::fprintf(out, "  %s\t%s", Shown(field.row.name).c_str(),
                   FieldTypeText(field.row.type, field.row.link));
      if (!field.row.formulaOrValue.empty()) {
        std::fprintf(out, "\t%s", Shown(field.row.formulaOrValue).c_str());
      }
      if (field.row.sortIndex != 0) std::fprintf(out, "\tsort %u", field.row.sortIndex);
      for (const KeyFilter& filter : field.filters) {
        std::fprintf(out, "\tkey %s: %s", Shown(filter.key).c_str(),
                     Shown(filter.expression).c_str());
      }
      std::fputc('\n', out);
    }
  }
}

void PrintJson(FILE* out, const CommandDocument& document, const std::string& format,
               const std::vector<TableInfo>& tables) {
  const Workbook& book = document.book;
  std::fprintf(out,
               "{\"file\": %s, \"format\": %s, \"lastSavedBy\": %s, \"lastSavedAt\": %s, "
               "\"readOnly\": %s, \"tables\": [",
               JsonString(book.fileName).c_str(), JsonString(format).c_str(),
               JsonString(ToTerminal(book.lastSavedBy)).c_str(),
               JsonString(ToTerminal(book.lastSavedAt)).c_str(), book.readOnly ? "true" : "false");
  for (size_t t = 0; t < tables.size(); ++t) {
    const TableInfo& table = tables[t];
    std::fprintf(out, "%s\n  {\"name\": %s, \"records\": %u, \"found\": %u, \"keys\": [",
                 t ? "," : "", JsonString(ToTerminal(table.name)).c_str(), table.records,
                 table.found);
    for (size_t k = 0; k < table.keys.size(); ++k) {
      std::fprintf(out, "%s%s", k ? ", " : "", JsonString(ToTerminal(table.keys[k])).c_str());
    }
    std::fputs("], \"fields\": [", out);
    for (size_t f = 0; f < table.fields.size(); ++f) {
      const FieldInfo& field = table.fields[f];
      std::fprintf(out,
                   "%s\n    {\"name\": %s, \"type\": %s, \"formulaOrValue\": %s, "
                   "\"sortIndex\": %u, \"keyFilters\": {",
                   f ? "," : "", JsonString(ToTerminal(field.row.name)).c_str(),
                   JsonString(FieldTypeText(field.row.type, field.row.link)).c_str(),
                   JsonString(ToTerminal(field.row.formulaOrValue)).c_str(), field.row.sortIndex);
      for (size_t k = 0; k < field.filters.size(); ++k) {
        std::fprintf(out, "%s%s: %s", k ? ", " : "",
                     JsonString(ToTerminal(field.filters[k].key)).c_str(),
                     JsonString(ToTerminal(field.filters[k].expression)).c_str());
      }
      std::fputs("}}", out);
    }
    std::fputs("]}", out);
  }
  std::fputs("\n]}\n", out);
}

}  // namespace

int RunInfo(CommandContext& context) {
  const CommandInfo& self = *FindCommand("info");
  Args args(context.words, {}, {"json"});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 1) return UsageError(context, self, "one FILE is needed");
  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], true)) return kExitFailure;
  // A file that held no document has no form yet: the save chooses one.
  std::string format = document.book.fileFormat == NativeFormat::kDefault
                           ? "none"
                           : FormatOptionName(document.book.fileFormat);
  std::vector<TableInfo> tables;
  for (uint32_t i = 0; Worksheet* data = document.book.TableByIndex(i); ++i) {
    tables.emplace_back();
    ReadTable(document, data, tables.back());
  }
  if (args.Flag("json")) {
    PrintJson(context.out, document, format, tables);
  } else {
    PrintText(context.out, document, format, tables);
  }
  return kExitSuccess;
}

}  // namespace kelpdex::kpx
