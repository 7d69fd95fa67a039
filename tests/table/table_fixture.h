// A workbook with one table and typed fields, for the table and record tests.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "store/catalogue.h"
#include "store/field_row.h"
#include "table/schema.h"
#include "table/table_state.h"

namespace kelpdex::testing {

inline FieldSpec Field(const std::string& name, FieldType type,
                       const std::string& formulaOrValue = "") {
  FieldSpec fieldRow;
  fieldRow.name = name;
  fieldRow.type = type;
  fieldRow.formulaOrValue = formulaOrValue;
  return fieldRow;
}

class TableTest : public ::testing::Test {
 protected:
  // Table "T" with the fields given, made current.
  void MakeTable(const std::vector<FieldSpec>& fields) {
    ASSERT_TRUE(CreateTable(book, "T"));
    book.currentSheet = book.FindTable("T");
    for (const FieldSpec& f : fields) {
      ASSERT_TRUE(InsertField(book, static_cast<uint16_t>(FieldCountNow()), f));
    }
  }
  int FieldCountNow() {
    TableSpec t;
    return CurrentTable(book, t) ? FieldCount(t) : -1;
  }
  TableSpec Table() {
    TableSpec t;
    EXPECT_TRUE(CurrentTable(book, t));
    return t;
  }
  Worksheet& Data() { return *Table().data; }
  void PutNumber(uint32_t row, uint16_t column, double x, uint8_t extra = 0) {
    uint8_t rec[cell::kNumberSize];
    cell::EncodeNumber(rec, row, column, x, extra);
    ASSERT_TRUE(Data().cells.PutCell(rec));
  }
  void PutText(uint32_t row, uint16_t column, const std::string& text, uint8_t extra = 0) {
    std::vector<uint8_t> rec(cell::TextSize(text.size()));
    cell::EncodeText(rec.data(), row, column, text, extra);
    ASSERT_TRUE(Data().cells.PutCell(rec.data()));
  }
  // The cell as a short text: a number in general form, a text in quotes, "-" for none.
  std::string At(uint32_t row, uint16_t column) {
    CellRecord* r = Data().cells.GetCell(row, column);
    if (r == nullptr) return "-";
    if (cell::ErrorNibble(r) != 0) return "#" + std::to_string(cell::ErrorNibble(r));
    if (cell::IsText(r)) return "'" + std::string(cell::Text(r)) + "'";
    if (cell::IsNumber(r)) {
      std::string s = std::to_string(cell::Number(r));
      s.erase(s.find_last_not_of('0') + 1);
      if (s.back() == '.') s.pop_back();
      return s;
    }
    return "formula";
  }
  std::vector<std::string> Names() {
    std::vector<std::string> names;
    TableSpec t = Table();
    FieldSpec fieldRow;
    for (uint16_t i = 0; i < FieldCount(t); ++i) {
      names.push_back(ReadField(t, i, fieldRow) ? fieldRow.name : "?");
    }
    return names;
  }

  Workbook book;
};

}  // namespace kelpdex::testing
