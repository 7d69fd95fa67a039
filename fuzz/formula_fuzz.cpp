// Any bytes as formula text, against a small table: evaluated ad hoc as a search expression is,
// then as a calculated field through its kept token list, for one record and over all of them.
// Whatever the text, a result or "#SYNTAX!", never a crash, an overflow of the fixed stacks or
// the string pool, or a leak.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "formula/formula_engine.h"
#include "functions/function_table.h"
#include "store/catalogue.h"
#include "store/cell_record.h"
#include "store/workbook.h"

namespace {

using namespace kelpdex;

struct Table {
  Workbook book;
  Worksheet* sheet = nullptr;
  FormulaField fields[4];
  std::unique_ptr<FormulaEngine> engine;

  Table() {
    CreateTable(book, "T");
    sheet = book.FindTable("T");
    const char* names[] = {"Name", "Qty", "Born", "Out"};
    const uint8_t types[] = {kFieldText, kFieldNumber, kFieldText, kFieldText};
    for (int i = 0; i < 4; ++i) {
      fields[i].name = names[i];
      fields[i].type = types[i];
    }
    // A few records, so that references and ranges meet texts, numbers, dates and gaps.
    const char* texts[] = {"Smith", "", "garcia lopez", "~*?", "12.5"};
    const char* dates[] = {"2005-01-31", "13:10:55", "", "2006-01-31T13:10:55.123+02:00", "x"};
    for (uint32_t row = 0; row < 5; ++row) {
      PutText(row, 0, texts[row]);
      if (row != 2) PutNumber(row, 1, row * 7.5 - 10);
      PutText(row, 2, dates[row]);
    }
    engine = std::make_unique<FormulaEngine>(&book, sheet, &BuiltinFunctions());
    engine->SetFields(fields, 4);
  }
  void PutText(uint32_t row, uint16_t column, std::string_view text) {
    std::string record(cell::TextSize(text.size()), '\0');
    cell::EncodeText(reinterpret_cast<uint8_t*>(record.data()), row, column, text);
    sheet->cells.PutCell(reinterpret_cast<uint8_t*>(record.data()));
  }
  void PutNumber(uint32_t row, uint16_t column, double x) {
    uint8_t record[cell::kNumberSize];
    cell::EncodeNumber(record, row, column, x);
    sheet->cells.PutCell(record);
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Table table;
  // Stored formulas are at most 1024 characters; longer texts only repeat what shorter ones do.
  if (size > 2048) return 0;
  std::string text(reinterpret_cast<const char*>(data), size);
  uint32_t row = size % 6;  // row 5 has no cells at all
  table.engine->EvaluateFormula(text, 3, row);
  table.engine->ResultDisplay();
  table.fields[3].formula = text;
  table.engine->SetFields(table.fields, 4);
  table.engine->RecalculateRow(row);
  // Over every record in one pass, where the records after the first replay its steps; the
  // results are cleared after, so that each input meets the same table.
  const uint32_t rows[] = {0, 1, 2, 3, 4, 5};
  table.engine->RecalculateRows(rows, 6);
  table.sheet->cells.DeleteRange(3, 3, 0, 5);
  table.fields[3].formula.clear();
  table.engine->SetFields(table.fields, 4);
  return 0;
}
