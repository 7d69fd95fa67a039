// kpx set and kpx recalc: changes to the records, saved at once.
#include <string>
#include <vector>

#include "core/prompter.h"
#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"
#include "store/field_row.h"
#include "table/cell_entry.h"
#include "table/records.h"
#include "text/code_page.h"
#include "text/utf8.h"

namespace kelpdex::kpx {

namespace {

// A typed text as a short quote for a message.
std::string Quoted(const std::string& utf8) {
  constexpr size_t kShown = 40;
  if (utf8.size() <= kShown) return "'" + utf8 + "'";
  size_t cut = kShown;
  while (cut > 0 && (static_cast<uint8_t>(utf8[cut]) & 0xC0) == 0x80) --cut;
  return "'" + utf8.substr(0, cut) + "...'";
}

// One line for each way the stored value differs from the typed one: as a warning when it was
// stored, as the reason of the refusal under --strict.
std::vector<std::string> Conversions(const std::string& typed, size_t replaced,
                                     const EntryNotes& notes, bool strict) {
  std::vector<std::string> lines;
  if (replaced != 0) {
    std::string count = std::to_string(replaced) + (replaced == 1 ? " character" : " characters");
    lines.push_back(strict ? count + " outside the document's code page would be stored as '?'"
                           : "stored '?' for " + count + " outside the document's code page");
  }
  if (notes.cut) {
    std::string limit = std::to_string(kEditTextMax);
    lines.push_back(strict ? "the text of " + std::to_string(notes.typedLength) +
                                 " characters would be cut to " + limit
                           : "stored the first " + limit + " of " +
                                 std::to_string(notes.typedLength) + " characters");
  }
  if (notes.numberAsZero) {
    lines.push_back(strict ? Quoted(typed) + " is no number and would be stored as 0"
                           : "stored 0, since " + Quoted(typed) + " is no number");
  }
  return lines;
}

}  // namespace

int RunSet(CommandContext& context) {
  const CommandInfo& self = *FindCommand("set");
  Args args(context.words, {"table", "record", "field"}, {"strict"});
  long record = 0;
  if (!args.ok() || !args.IntValue("record", 1, RecordSet::kEntries, record)) {
    return UsageError(context, self, args.error());
  }
  if (args.positionals().size() != 2) return UsageError(context, self, "FILE and VALUE are needed");
  if (record == 0 || !args.Value("field") || !args.Value("table")) {
    return UsageError(context, self, "--table, --record and --field are needed");
  }
  bool strict = args.Flag("strict");
  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], false)) return kExitFailure;
  TableSpec table;
  if (!document.SelectTable(*args.Value("table"), table)) return kExitFailure;
  std::string fieldName = *args.Value("field");
  int field = FindFieldIndex(table, fieldName);
  if (field < 0) return Fail(context, "no field named '" + fieldName + "'");
  // The record behind the last one is where a new record is typed.
  Workbook& book = document.book;
  uint32_t count = book.records.count();
  if (static_cast<uint32_t>(record) > count + 1) {
    return Fail(context, "record " + std::to_string(record) + " is out of range (1 to " +
                             std::to_string(count + 1) + ")");
  }
  const std::string& typed = args.positionals()[1];
  size_t replaced = 0;
  std::string value = text::Utf8ToCp1252(typed, &replaced);
  EntryNotes notes;
  const uint32_t at = static_cast<uint32_t>(record - 1);
  switch (CommitText(book, at, static_cast<uint16_t>(field), value, {}, &notes)) {
    case EntryResult::kWritten:
      break;
    case EntryResult::kRefused:
      return Fail(context, "field '" + fieldName +
                               "' is calculated or holds long text or files; it is not typed into");
    case EntryResult::kFailed:
      return Fail(context, ErrorText(book.errorCode));
  }
  std::string where = "record " + std::to_string(record) + ", field '" + fieldName + "': ";
  std::vector<std::string> conversions = Conversions(typed, replaced, notes, strict);
  for (const std::string& line : conversions) {
    std::fprintf(context.err, "kpx: %s%s%s\n", strict ? "" : "warning: ", where.c_str(),
                 line.c_str());
  }
  // Nothing is saved, so the file stays as it was.
  if (strict && !conversions.empty()) return kExitFailure;
  // A record typed behind the last one starts with the fields' default values.
  if (at >= count && book.records.count() > count) {
    UndoContext selection;
    selection.firstRecord = selection.lastRecord = at;
    selection.lastColumn = kLastColumn;
    if (!FillDefaults(book, selection)) return Fail(context, ErrorText(book.errorCode));
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
