// Formatting speed: NumberToGeneral and FormatNumber over a spread of values, and the display text
// of every cell of the standard table, column by column as the grid and the exports draw them.
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "bench/bench_util.h"
#include "bench/standard_table.h"
#include "format/cell_text.h"
#include "format/format_number.h"
#include "format/number_text.h"
#include "store/cell_record.h"
#include "store/cell_store.h"

using namespace kelpdex;
using namespace kelpdex::bench;

int main(int argc, char** argv) {
  long records = RecordsArgument(argc, argv);
  std::vector<double> values(static_cast<size_t>(records));
  StandardTableGenerator gen;
  StandardRecord r;
  for (long i = 0; i < records; ++i) {
    gen.Next(static_cast<uint32_t>(i), r);
    // Salaries with cents, quantities, and a few small and negative values.
    values[i] = i % 3 == 0 ? r.salary : i % 3 == 1 ? -r.quantity / 7.0 : r.salary * 1e-4;
  }

  char out[kDisplayTextMax];
  long long bytes = 0;
  Stopwatch general;
  for (double x : values) bytes += static_cast<long long>(NumberToGeneral(x, out));
  Report("number_to_general", records, general.Seconds(), bytes);

  auto format = std::make_unique<CompiledFormat>();
  ParseFormatString("#,##0.00", *format);
  bytes = 0;
  Stopwatch grouped;
  for (double x : values) {
    size_t n = 0;
    FormatNumber(x, *format, out, &n);
    bytes += static_cast<long long>(n);
  }
  Report("format_number_grouped_2dp", records, grouped.Seconds(), bytes);

  // The standard table in a cell store, then every number and text cell through its column's
  // formatter: Salary as currency, the rest in their default kinds.
  CellStore store;
  StandardTableGenerator gen2;
  CellCursor fill;
  for (long i = 0; i < records; ++i) {
    gen2.Next(static_cast<uint32_t>(i), r);
    if (!PutStandardRecord(store, fill, static_cast<uint32_t>(i), r)) {
      std::fprintf(stderr, "out of memory\n");
      return 1;
    }
  }
  NumberStyle styles[8];
  styles[4].kind = format_kind::kDate;  // Birth
  styles[4].index = 9;
  styles[5].kind = format_kind::kCurrency;  // Salary
  std::strcpy(styles[5].symbol, "$");
  styles[5].decimalDigits = 2;
  styles[6].kind = format_kind::kGeneral;  // Quantity
  styles[6].fixedDecimals = true;
  styles[6].groupDigits = true;
  long cells = 0;
  bytes = 0;
  Stopwatch display;
  // One formatter per column, built once, as the grid keeps them while it draws.
  std::vector<std::unique_ptr<CellFormatter>> formatters;
  for (const NumberStyle& style : styles) {
    formatters.push_back(std::make_unique<CellFormatter>(style, genericLocale));
  }
  CellCursor scan;
  while (const CellRecord* cellRecord = store.NextCell(scan)) {
    bytes += static_cast<long long>(formatters[cell::Column(cellRecord)]->Display(cellRecord, out));
    ++cells;
  }
  Report("cell_display_text", records, display.Seconds(), bytes,
         ",\"cells\": " + std::to_string(cells));
  return 0;
}
