// The XML forms keep every character of a text and every bit of a number: a document that goes
// through XML (plain or gzipped) and back into the binary form gives the very bytes the binary
// form gave before.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "persist/xml_document_fixture.h"
#include "persist/xml_writer.h"
#include "store/catalogue.h"
#include "store/row_block.h"
#include "support/file_bytes.h"
#include "table/schema.h"

namespace kelpdex {
namespace {

class XmlFidelityTest : public testing::XmlDocumentTest {
 protected:
  // A table whose name and field names hold blank runs, with `fields` text fields.
  void MakeTable(Workbook& book, const std::string& table, int fields) {
    ASSERT_TRUE(CreateTable(book, table));
    book.currentSheet = book.FindTable(table);
    for (int f = 0; f < fields; ++f) {
      FieldSpec field;
      field.name = f == 0 ? "x  y" : " field " + std::to_string(f) + "  ";
      field.type = FieldType::kText;
      ASSERT_TRUE(InsertField(book, static_cast<uint16_t>(f), field));
    }
    data = book.FindTable(table);
    ASSERT_NE(data, nullptr);
  }

  void PutText(uint32_t row, uint16_t column, const std::string& text) {
    cell::EncodeText(record.data(), row, column, text);
    ASSERT_TRUE(data->cells.PutCell(record.data()));
  }
  void PutNumber(uint32_t row, uint16_t column, double value) {
    cell::EncodeNumber(record.data(), row, column, value);
    ASSERT_TRUE(data->cells.PutCell(record.data()));
  }

  // The binary bytes of `book`, and those of what comes back from its XML form.
  void ExpectXmlKeepsEverything(const Workbook& book, const std::string& name) {
    const std::string before = testing::ReadFileBytes(SaveBinary(book, name + ".before.kpx"));
    for (bool gz : {false, true}) {
      const std::string xml = SaveXml(book, name + (gz ? ".xml.gz" : ".xml"), gz);
      ASSERT_TRUE(ok) << int(error);
      Workbook back;
      ASSERT_TRUE(LoadXml(xml, back)) << int(back.errorCode) << " at line " << line;
      const std::string after =
          testing::ReadFileBytes(SaveBinary(back, name + (gz ? ".gz" : "") + ".after.kpx"));
      ASSERT_EQ(after.size(), before.size()) << (gz ? "gzipped" : "plain");
      EXPECT_TRUE(after == before)
          << (gz ? "gzipped" : "plain") << ": first difference at "
          << std::mismatch(before.begin(), before.end(), after.begin()).first - before.begin();
    }
  }

  Worksheet* data = nullptr;
  std::vector<uint8_t> record = std::vector<uint8_t>(kBlockPayload);
};

TEST_F(XmlFidelityTest, AwkwardTextsFormulasNamesAndNumbersComeBackExactly) {
  Workbook book;
  MakeTable(book, "two  blanks ", 3);
  const std::string texts[] = {
      "  Wien",
      "a    b",
      "   ",
      " ",
      "trailing  ",
      "tab\there",
      "\t\tlead",
      "crlf\r\nline",
      "\r\n",
      "mixed \t \r\n x",
      "a&b <c> \"d\" 'e'",
      "",
      "caf\xE9 \x80 \x81\x8D\x8F\x90\x9D",
      "single blanks stay readable",
  };
  uint32_t row = 0;
  for (const std::string& text : texts) PutText(row++, 0, text);
  // A formula whose string literal holds blank runs, with its cached text and number.
  cell::EncodeFormulaWithString(record.data(), row, 1, "=A&\"   |   \"&A", "x   |   x");
  ASSERT_TRUE(data->cells.PutCell(record.data()));
  cell::EncodeFormula(record.data(), row++, 2, "=(B-0.3)*1e17  ");
  cell::SetCachedNumber(record.data(), (0.1 + 0.2 - 0.3) * 1e17);
  ASSERT_TRUE(data->cells.PutCell(record.data()));
  const double numbers[] = {0.1 + 0.2,
                            9007199254740993.0,  // 2^53 + 1, as the double holds it
                            123456789012345678.0,
                            1e-320,
                            5e-324,
                            -0.0,
                            0.0,
                            1.7976931348623157e308,
                            -1.7976931348623157e308,
                            2.2250738585072014e-308,
                            1e-14,
                            999999999999999.9,
                            1.0 / 3};
  for (double value : numbers) PutNumber(row++, 1, value);
  ExpectXmlKeepsEverything(book, "awkward");

  // The names read back as they were, so commands naming them still find them.
  Workbook back;
  ASSERT_TRUE(LoadXml(SaveXml(book, "names.xml"), back));
  EXPECT_NE(back.FindTable("two  blanks "), nullptr);
  const CellRecord* name = back.FindCatalogue("two  blanks ")->cells.GetCell(1, 0);
  ASSERT_NE(name, nullptr);
  EXPECT_EQ(cell::Text(name), "x  y");
  const CellRecord* zero = back.FindTable("two  blanks ")->cells.GetCell(row - 8, 1);
  ASSERT_NE(zero, nullptr);
  EXPECT_TRUE(std::signbit(cell::Number(zero)));
}

TEST_F(XmlFidelityTest, RandomTextsAndDoublesSurviveBothXmlForms) {
  Workbook book;
  MakeTable(book, "Random", 2);
  std::mt19937_64 random(20261123);
  // Bytes the reader treats specially, weighted so that runs of them are common.
  const std::string special = "    \t\r\n&<>\"'";
  for (uint32_t row = 0; row < 3000; ++row) {
    const size_t length = row % 100 == 0 ? 1024 : random() % 40;
    std::string text;
    for (size_t i = 0; i < length; ++i) {
      const uint64_t pick = random() % 4;
      if (pick == 0) {
        text += special[random() % special.size()];
      } else if (pick == 1) {
        text += static_cast<char>(1 + random() % 255);
      } else {
        text += static_cast<char>('a' + random() % 26);
      }
    }
    PutText(row, 0, text);
    double value;
    do {
      const uint64_t bits = random();
      std::memcpy(&value, &bits, sizeof value);
    } while (!std::isfinite(value));
    // Every third number a decimal of the kind people type, the rest any bit pattern.
    if (row % 3 == 0) value = static_cast<double>(random() % 2000000) / 1000 - 1000;
    PutNumber(row, 1, value);
  }
  ExpectXmlKeepsEverything(book, "random");
}

TEST_F(XmlFidelityTest, ACellOfTheLongestTextEscapedAtEveryByteSavesAndLoads) {
  Workbook book;
  MakeTable(book, "Long", 1);
  PutText(0, 0, std::string(1024, '&'));
  PutText(1, 0, std::string(1024, '"'));
  PutText(2, 0, std::string(1024, ' '));
  PutText(3, 0, std::string(1024, '\x80'));
  ExpectXmlKeepsEverything(book, "long");
  Workbook back;
  ASSERT_TRUE(LoadXml(SaveXml(book, "amp.xml"), back));
  EXPECT_EQ(cell::Text(back.FindTable("Long")->cells.GetCell(0, 0)), std::string(1024, '&'));
}

TEST_F(XmlFidelityTest, WhatTheReaderCouldNotHoldFailsTheSaveAndSaysWhere) {
  Workbook book;
  MakeTable(book, "T", 2);
  auto place = [&](const std::string& name) {
    FileStream out;
    EXPECT_TRUE(out.Open(dir.Path(name), StreamMode::kWrite, false));
    std::string where = "unset";
    EXPECT_FALSE(WriteXmlDocument(out, book, &where));
    EXPECT_EQ(out.error(), err::kXmlInvalidData);
    out.Close();
    return where;
  };
  // A formula longer than the reader takes, in a record's field.
  cell::EncodeFormula(record.data(), 6, 1, "=" + std::string(1024, '1'));
  ASSERT_TRUE(data->cells.PutCell(record.data()));
  EXPECT_EQ(place("formula.xml"), "Table: T\nRecord: 7\nField:  field 1  ");
  cell::EncodeFormula(record.data(), 6, 1, "=" + std::string(1023, '1'));
  ASSERT_TRUE(data->cells.PutCell(record.data()));
  ASSERT_TRUE(LoadXml(SaveXml(book, "formula_fits.xml"), *std::make_unique<Workbook>()));
  // A sheet that is no table's data names its cell.
  data = book.FindCatalogue("T");
  PutText(3, 2, std::string(kXmlEscapeLimit / 5 + 1, '&'));
  EXPECT_EQ(place("catalogue.xml"), "Worksheet: \\system\\T\nCell: r4c3");
}

}  // namespace
}  // namespace kelpdex
