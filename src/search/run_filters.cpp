#include "search/run_filters.h"

#include "format/format_number.h"
#include "formula/formula_engine.h"
#include "functions/function_table.h"
#include "persist/document_file.h"
#include "persist/side_values.h"
#include "search/filter_program.h"
#include "search/filter_text.h"
#include "search/long_text_matcher.h"
#include "search/sort_rows.h"
#include "store/cell_record.h"
#include "store/field_row.h"
#include "table/table_state.h"

namespace kelpdex {

namespace {

std::string FilterOf(const FilterOptions& options, uint16_t field, const FieldSpec& fieldRow) {
  if (options.filters == nullptr) return fieldRow.firstKeyExpression;
  return field < options.filters->size() ? (*options.filters)[field] : std::string();
}

// The rules by which a filter's result keeps a record: a number other than 0, a text other than
// the empty one. Errors, arrays and failures drop it.
bool Keeps(FormulaEngine& engine, uint16_t resultClass) {
  const FormulaValue& result = engine.Result();
  if (resultClass == kind::kString) return !engine.ResultText().empty();
  if (resultClass == kind::kNumber) {
    return result.kind == kind::kNumber && result.errorCode == 0 && result.number != 0;
  }
  return false;
}

// Evaluates one field's filter for every row still in the set and keeps, in order, those that
// pass. A compiled filter answers from the cell; the formula text decides only where it cannot.
uint32_t FilterRows(FormulaEngine& engine, Worksheet& data, const FilterProgram* program,
                    std::string_view formula, uint16_t field, uint32_t* rows, uint32_t count) {
  uint32_t kept = 0;
  engine.StartPass();
  CellCursor cursor;
  for (uint32_t i = 0; i < count; ++i) {
    uint32_t row = rows[i];
    FilterProgram::Verdict verdict = FilterProgram::Verdict::kEvaluate;
    if (program != nullptr) {
      verdict = program->Test(data.cells.GetCell(row, program->column(), &cursor));
    }
    bool keep = verdict == FilterProgram::Verdict::kEvaluate
                    ? Keeps(engine, engine.EvaluateFormula(formula, field, row))
                    : verdict == FilterProgram::Verdict::kKeep;
    if (keep) rows[kept++] = row;
  }
  engine.EndPass();
  return kept;
}

// The side file offset the record's cell holds; 0 where it holds none.
uint32_t ObjectNumber(Worksheet& data, uint32_t row, uint16_t field, CellCursor& cursor) {
  uint32_t offset = 0;
  return StoredOffset(data.cells.GetCell(row, field, &cursor), offset) ? offset : 0;
}

uint32_t MatchRows(const TableSpec& table, const FilterOptions& options, FieldType type,
                   uint16_t field, std::string_view needle, uint32_t* rows, uint32_t count) {
  if (options.matcher == nullptr) return 0;
  uint32_t kept = 0;
  CellCursor cursor;
  for (uint32_t i = 0; i < count; ++i) {
    LongTextRecord record{type, rows[i], field, ObjectNumber(*table.data, rows[i], field, cursor)};
    ErrorCode error = err::kNone;
    // A record the matcher could not read is dropped, as one that does not match.
    if (options.matcher->Matches(record, needle, options.matchWholeWord, options.matchCase,
                                 error)) {
      rows[kept++] = rows[i];
    }
  }
  return kept;
}

}  // namespace

uint32_t TableRowCount(const TableSpec& table) {
  uint32_t rows = table.data->UsedRows();
  return rows > RecordSet::kEntries ? RecordSet::kEntries : rows;
}

bool RunFilters(const TableSpec& table, RecordSet& records, const FilterOptions& options,
                uint32_t& found) {
  if (!records.Allocate()) {
    table.workbook->errorCode = err::kOutOfMemory;
    return false;
  }
  uint32_t rowCount = TableRowCount(table);
  uint32_t* rows = records.rows();
  for (uint32_t i = 0; i < rowCount; ++i) rows[i] = i;
  uint32_t count = rowCount;
  // The rows stay in rising order through every pass, so a compiled filter reads its cells
  // through one forward cursor and needs no row index; the index is built for the run only
  // when a filter goes to the evaluator, whose lookups it serves.
  bool indexBuilt = false;

  uint16_t fieldCount = FieldCount(table);
  std::vector<FieldSpec> fieldRows(fieldCount);
  for (uint16_t f = 0; f < fieldCount; ++f) ReadField(table, f, fieldRows[f]);
  std::vector<FieldDefault> defaults = BuildFieldDefaults(table);
  std::vector<FormulaField> descriptors = FormulaFields(defaults);
  FormulaEngine engine(table.workbook, table.data, &BuiltinFunctions());
  engine.SetFields(descriptors.data(), static_cast<uint16_t>(descriptors.size()));

  char formula[kFilterFormulaRoom];
  for (uint16_t f = 0; f < fieldCount && count > 0; ++f) {
    if (!HoldsCellValues(fieldRows[f].type) && fieldRows[f].type != FieldType::kUnknown) continue;
    std::string filter = FilterOf(options, f, fieldRows[f]);
    if (filter.empty()) continue;
    size_t length = BuildFilterFormula(fieldRows[f].name, fieldRows[f].type, filter, formula);
    if (length == 0) continue;
    int digit;
    std::string_view operand;
    SplitFilterText(filter, digit, operand);
    FilterProgram program;
    bool compiled = options.compile && program.Compile(descriptors, fieldRows[f].name,
                                                       fieldRows[f].type, digit, operand);
    if (!compiled && !indexBuilt && rowCount > 0) {
      // Without memory for the index the lookups only search longer.
      table.data->cells.BuildRowIndex(0, rowCount - 1);
      indexBuilt = true;
    }
    count = FilterRows(engine, *table.data, compiled ? &program : nullptr,
                       std::string_view(formula, length), f, rows, count);
  }
  // The expensive test last, on the fewest records.
  for (uint16_t f = 0; f < fieldCount && count > 0; ++f) {
    if (HoldsCellValues(fieldRows[f].type) || fieldRows[f].type == FieldType::kUnknown) continue;
    std::string filter = FilterOf(options, f, fieldRows[f]);
    int digit;
    std::string_view needle;
    if (!SplitFilterText(filter, digit, needle) || needle.empty()) continue;
    count = MatchRows(table, options, fieldRows[f].type, f, needle, rows, count);
  }

  records.SetCount(count);
  records.RewriteFreeTail(rowCount);
  records.SetOrdered(count == rowCount);
  // Its memory stays for the next run; the marks of what was built go.
  if (indexBuilt) table.data->cells.InvalidateRowIndex();
  found = count;
  return true;
}

bool RunSearch(Workbook& workbook, const FilterOptions& options) {
  TableSpec table;
  if (!CurrentTable(workbook, table)) return false;
  uint32_t found = 0;
  // Long Text and files are looked for in the document's own side file unless told otherwise.
  FilterOptions withMatcher = options;
  SideFileMatcher matcher(
      *table.data, workbook.fileName.empty() ? std::string() : SideFilePath(workbook.fileName));
  if (withMatcher.matcher == nullptr) withMatcher.matcher = &matcher;
  if (!RunFilters(table, workbook.records, withMatcher, found)) return false;
  SortRecordSet(table, workbook.records);
  return true;
}

std::string FoundText(uint32_t count) {
  // Format texts are read in the locale's own notation, so the grouping mark is its own too.
  std::string format = "0";
  if (currentLocale.thousandSeparator != '\0') {
    format = std::string("#") + currentLocale.thousandSeparator + "##0";
  }
  return "Record(s) found: " + FormatNumber(static_cast<double>(count), format, &currentLocale);
}

}  // namespace kelpdex
