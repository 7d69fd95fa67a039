// A table with typed fields and an engine over it, for tests that evaluate formulas.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "formula/formula_engine.h"
#include "store/catalogue.h"
#include "store/workbook.h"

namespace kelpdex::testing {

class FormulaSheet {
 public:
  // A table "T" (with its catalogue) whose fields are given as name and type.
  FormulaSheet(const std::vector<std::pair<std::string, uint8_t>>& fieldList,
               const FunctionTable* functions) {
    CreateTable(book, "T");
    sheet = book.FindTable("T");
    for (const auto& [name, type] : fieldList) {
      FormulaField field;
      field.name = name;
      field.type = type;
      fields.push_back(field);
    }
    engine = std::make_unique<FormulaEngine>(&book, sheet, functions);
    engine->SetFields(fields.data(), static_cast<uint16_t>(fields.size()));
  }

  void PutNumber(uint32_t row, uint16_t column, double x) {
    uint8_t rec[cell::kNumberSize];
    cell::EncodeNumber(rec, row, column, x);
    sheet->cells.PutCell(rec);
  }
  void PutText(uint32_t row, uint16_t column, const std::string& text) {
    std::vector<uint8_t> rec(cell::TextSize(text.size()));
    cell::EncodeText(rec.data(), row, column, text);
    sheet->cells.PutCell(rec.data());
  }
  // What the grid would show for the formula evaluated on `row`.
  std::string Eval(const std::string& formula, uint32_t row = 0) {
    engine->EvaluateFormula(formula, 0, row);
    return engine->ResultDisplay();
  }

  Workbook book;
  Worksheet* sheet = nullptr;
  std::vector<FormulaField> fields;
  std::unique_ptr<FormulaEngine> engine;
};

}  // namespace kelpdex::testing
