// Times the formula engine on the standard table: a filter-style formula evaluated for every
// record, and one calculated Number field recalculated over all records.
#include <cstdio>
#include <string>
#include <vector>

#include "bench/bench_util.h"
#include "bench/standard_table.h"
#include "formula/formula_engine.h"
#include "store/workbook.h"

using namespace kelpdex;
using namespace kelpdex::bench;

int main(int argc, char** argv) {
  long records = RecordsArgument(argc, argv);
  Workbook book;
  auto* sheet = new Worksheet("people");
  book.AttachNode(sheet, nullptr);

  StandardTableGenerator generator;
  StandardRecord r;
  CellCursor cursor;
  uint8_t buf[128];
  for (long i = 0; i < records; ++i) {
    generator.Next(static_cast<uint32_t>(i), r);
    uint32_t row = static_cast<uint32_t>(i);
    const std::string* texts[] = {nullptr,  &r.lastName, &r.firstName, &r.city,
                                  &r.birth, nullptr,     nullptr,      &r.note};
    double numbers[] = {r.id, 0, 0, 0, 0, r.salary, r.quantity, 0};
    for (uint16_t c = 0; c < kStandardFieldCount; ++c) {
      if (texts[c] != nullptr) {
        cell::EncodeText(buf, row, c, *texts[c]);
      } else {
        cell::EncodeNumber(buf, row, c, numbers[c]);
      }
      sheet->cells.PutCell(buf, &cursor);
    }
  }

  std::vector<FormulaField> fields(kStandardFieldCount + 1);
  for (int c = 0; c < kStandardFieldCount; ++c) {
    fields[c].name = kStandardFieldNames[c];
    fields[c].type = kStandardFieldIsNumber[c] ? kFieldNumber : kFieldText;
  }
  fields[kStandardFieldCount].name = "Total";
  fields[kStandardFieldCount].type = kFieldNumber;
  FormulaEngine engine(&book, sheet, nullptr);
  engine.SetFields(fields.data(), static_cast<uint16_t>(fields.size()));

  const std::string filter = "=(Salary >= 30000)*(Salary <= 60000)";
  long matched = 0;
  Stopwatch evaluate;
  engine.StartPass();
  for (long i = 0; i < records; ++i) {
    engine.EvaluateFormula(filter, 0, static_cast<uint32_t>(i));
    matched += engine.Result().number != 0;
  }
  engine.EndPass();
  double evaluateSeconds = evaluate.Seconds();
  char extra[160];
  std::snprintf(extra, sizeof extra, ", \"evaluations_per_second\": %.0f, \"matched\": %ld",
                records / evaluateSeconds, matched);
  Report("formula_filter", records, evaluateSeconds, 0, extra);

  fields[kStandardFieldCount].formula = "=Salary*Quantity";
  std::vector<uint32_t> rows(static_cast<size_t>(records));
  for (long i = 0; i < records; ++i) rows[i] = static_cast<uint32_t>(records - 1 - i);
  Stopwatch recalc;
  bool ok = engine.RecalculateRows(rows.data(), rows.size());
  double recalcSeconds = recalc.Seconds();
  CellRecord* last = sheet->cells.GetCell(static_cast<uint32_t>(records - 1), kStandardFieldCount);
  if (!ok || last == nullptr) std::fprintf(stderr, "recalculation failed\n");
  Report("formula_recalculate_new_cells", records, recalcSeconds, 0);
  // Again, now that every record has its cell: the steady state of a recalculation.
  Stopwatch again;
  ok = ok && engine.RecalculateRows(rows.data(), rows.size());
  Report("formula_recalculate", records, again.Seconds(), 0);
  return ok ? 0 : 1;
}
