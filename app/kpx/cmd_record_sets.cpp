// kpx duplicates, complement, find and replace: record sets and texts across a table.
#include <string>
#include <vector>

#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"
#include "kpx/kpx_search.h"
#include "search/find_replace.h"
#include "search/record_sets.h"
#include "store/field_row.h"

namespace kelpdex::kpx {

namespace {

// The record set shown: the count alone, or the records as dump prints them.
int Show(CommandContext& context, CommandDocument& document, const TableSpec& table, bool count) {
  if (count) {
    std::fprintf(context.out, "%u\n", document.book.records.count());
    return kExitSuccess;
  }
  return PrintRecordSet(context, document, table, false, false, -1);
}

FindOptions ReadFindOptions(const Args& args, const std::string& text) {
  FindOptions options;
  options.text = FromTerminal(text);
  options.matchCase = args.Flag("match-case");
  options.wholeCell = args.Flag("whole-cell");
  return options;
}

}  // namespace

int RunDuplicates(CommandContext& context) {
  const CommandInfo& self = *FindCommand("duplicates");
  Args args(context.words, {"table", "fields"}, {"count"});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 1 || !args.Value("fields")) {
    return UsageError(context, self, "one FILE and --fields F1[,F2...] are needed");
  }
  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], true)) return kExitFailure;
  TableSpec table;
  if (!document.SelectTable(args.Value("table").value_or(""), table)) return kExitFailure;
  std::vector<uint16_t> fields;
  std::string list = *args.Value("fields");
  for (size_t at = 0; at <= list.size();) {
    size_t comma = list.find(',', at);
    std::string name = list.substr(at, comma == std::string::npos ? std::string::npos : comma - at);
    int field = FindFieldIndex(table, name);
    if (field < 0) return Fail(context, "no field named '" + name + "'");
    fields.push_back(static_cast<uint16_t>(field));
    if (comma == std::string::npos) break;
    at = comma + 1;
  }
  // The narrowed set is shown, never saved: the document stays as it is on disk.
  if (!FindDuplicates(table, document.book.records, fields)) {
    return Fail(context, ErrorText(document.book.errorCode));
  }
  return Show(context, document, table, args.Flag("count"));
}

int RunComplement(CommandContext& context) {
  const CommandInfo& self = *FindCommand("complement");
  Args args(context.words, {"table"}, {"count"});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 1) return UsageError(context, self, "one FILE is needed");
  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], true)) return kExitFailure;
  TableSpec table;
  if (!document.SelectTable(args.Value("table").value_or(""), table)) return kExitFailure;
  uint32_t found = 0;
  if (!ApplyRecordSet(document, table, nullptr, found) ||
      !FindComplement(table, document.book.records)) {
    return Fail(context, ErrorText(document.book.errorCode));
  }
  return Show(context, document, table, args.Flag("count"));
}

int RunFind(CommandContext& context) {
  const CommandInfo& self = *FindCommand("find");
  Args args(context.words, {"table"}, {"match-case", "whole-cell"});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 2) return UsageError(context, self, "FILE and TEXT are needed");
  FindOptions options = ReadFindOptions(args, args.positionals()[1]);
  if (options.text.empty()) return Fail(context, "the text to find is empty");
  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], true)) return kExitFailure;
  TableSpec table;
  if (!document.SelectTable(args.Value("table").value_or(""), table)) return kExitFailure;
  uint32_t found = 0;
  if (!ApplyRecordSet(document, table, nullptr, found)) {
    return Fail(context, ErrorText(document.book.errorCode));
  }
  std::vector<std::string> names;
  for (uint16_t f = 0; f < FieldCount(table); ++f) {
    FieldSpec fieldRow;
    names.push_back(ReadField(table, f, fieldRow) ? ToTerminal(fieldRow.name) : std::string());
  }
  // Find Next again and again from the first cell, as a user pressing F3 would.
  GridSelection whole = WholeTable(table, document.book.records), hit;
  uint16_t field = 0;
  uint32_t position = 0;
  bool first = true;
  while (FindNext(table, document.book.records, whole, field, position, options, hit, first)) {
    first = false;
    field = hit.firstField;
    position = hit.firstPosition;
    std::fprintf(context.out, "%u\t%s\n", position + 1, TsvEscaped(names[field]).c_str());
  }
  return kExitSuccess;
}

int RunReplace(CommandContext& context) {
  const CommandInfo& self = *FindCommand("replace");
  Args args(context.words, {"table", "find", "with"}, {"match-case", "whole-cell"});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 1 || !args.Value("find") || !args.Value("with")) {
    return UsageError(context, self, "one FILE, --find X and --with Y are needed");
  }
  FindOptions options = ReadFindOptions(args, *args.Value("find"));
  options.replacement = FromTerminal(*args.Value("with"));
  if (options.text.empty()) return Fail(context, "the text to find is empty");
  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], false)) return kExitFailure;
  TableSpec table;
  if (!document.SelectTable(args.Value("table").value_or(""), table)) return kExitFailure;
  uint32_t found = 0, changed = 0;
  if (!ApplyRecordSet(document, table, nullptr, found) ||
      !ReplaceInRange(table, document.book.records, WholeTable(table, document.book.records),
                      options, changed)) {
    return Fail(context, ErrorText(document.book.errorCode));
  }
  std::fprintf(context.out, "%u\n", changed);
  if (changed == 0) return kExitSuccess;
  return document.Save() ? kExitSuccess : kExitFailure;
}

}  // namespace kelpdex::kpx
