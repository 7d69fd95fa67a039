#include <gtest/gtest.h>

#include <string>

#include "core/locale_settings.h"
#include "core/progress.h"
#include "exchange/text_exchange.h"
#include "exchange_test_util.h"
#include "persist/file_stream.h"
#include "store/field_row.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"
#include "text/code_page.h"

namespace kelpdex {
namespace {

using testing::CellAt;
using testing::FieldAt;
using testing::FieldCountOf;

class TextImportTest : public ::testing::Test {
 protected:
  bool Import(const std::string& bytes, const TextFileOptions& options,
              TextImportReport* report = nullptr) {
    book.Clear();
    return ImportText(book, dir.Write("data.csv", bytes), options, report);
  }
  testing::TempDir dir;
  Workbook book;
  TextFileOptions options;
};

TEST_F(TextImportTest, QuotesLineEndsAndControlBytes) {
  // Doubled quotes, a separator inside quotes, a tab and a NUL turned to blanks, the three line
  // ends, an empty line that stays an empty record, and a last line without its end.
  ASSERT_TRUE(Import("a,\"b,\"\"c\"\"\",d\r\n\"x\ty\"\rn\x01ul\n\nlast,,z", options));
  EXPECT_EQ(book.currentSheet->Name(), "data");
  EXPECT_EQ(CellAt(book, 0, 0), "a");
  EXPECT_EQ(CellAt(book, 0, 1), "b,\"c\"");
  EXPECT_EQ(CellAt(book, 0, 2), "d");
  EXPECT_EQ(CellAt(book, 1, 0), "x y");
  EXPECT_EQ(CellAt(book, 2, 0), "n ul");
  EXPECT_EQ(CellAt(book, 3, 0), "");
  EXPECT_EQ(CellAt(book, 4, 0), "last");
  EXPECT_EQ(CellAt(book, 4, 1), "");
  EXPECT_EQ(CellAt(book, 4, 2), "z");
  EXPECT_EQ(book.currentSheet->UsedRows(), 5u);
  ASSERT_EQ(FieldCountOf(book), 3);
  EXPECT_EQ(FieldAt(book, 2).name, "field3");
  EXPECT_TRUE(FieldAt(book, 0).link);
}

TEST_F(TextImportTest, LongCellKeepsItsFirst1024Bytes) {
  std::string big(1500, 'q');
  big[1023] = 'E';
  ASSERT_TRUE(Import("\"" + big + "\",next\n" + big + ",after", options));
  for (uint32_t row = 0; row < 2; ++row) {
    std::string cell = CellAt(book, row, 0);
    ASSERT_EQ(cell.size(), kTextCellMax) << row;
    EXPECT_EQ(cell.back(), 'E');
  }
  // The tail is dropped, not taken for the next cell.
  EXPECT_EQ(CellAt(book, 0, 1), "next");
  EXPECT_EQ(CellAt(book, 1, 1), "after");
}

TEST_F(TextImportTest, NumbersRuleDecidesCellsAndFieldTypes) {
  options.numbers = true;
  ASSERT_TRUE(Import("1,- 2.5,x,3e2\n4,1e,5,7\n", options));
  EXPECT_EQ(CellAt(book, 0, 0), "#1");
  EXPECT_EQ(CellAt(book, 0, 1), "#-2.5");
  // Not a number: the exponent has no digit.
  EXPECT_EQ(CellAt(book, 1, 1), "1e");
  // After a text the column takes numbers as text; the numbers before it stay numbers.
  EXPECT_EQ(CellAt(book, 1, 2), "5");
  EXPECT_EQ(CellAt(book, 0, 3), "#300");
  EXPECT_EQ(FieldAt(book, 0).type, FieldType::kNumber);
  EXPECT_EQ(FieldAt(book, 1).type, FieldType::kText);
  EXPECT_TRUE(FieldAt(book, 1).link);
  EXPECT_EQ(FieldAt(book, 3).type, FieldType::kNumber);

  // The locale's decimal comma, with a semicolon between cells.
  LocaleSettings saved = currentLocale;
  currentLocale.decimalSeparator = ',';
  options.separator = ';';
  bool ok = Import("1,5;2.5\n", options);
  currentLocale = saved;
  ASSERT_TRUE(ok);
  EXPECT_EQ(CellAt(book, 0, 0), "#1.5");
  EXPECT_EQ(CellAt(book, 0, 1), "2.5");

  options.numbers = false;
  options.separator = ',';
  ASSERT_TRUE(Import("1,2\n", options));
  EXPECT_EQ(CellAt(book, 0, 0), "1");
  EXPECT_EQ(FieldAt(book, 0).type, FieldType::kText);
}

TEST_F(TextImportTest, FixedWidths) {
  ASSERT_TRUE(ParseTextWidths("3,2", options));
  EXPECT_FALSE(ParseTextWidths("3,,2", options));
  EXPECT_FALSE(ParseTextWidths("0", options));
  ASSERT_TRUE(ParseTextWidths("3,2", options));
  options.fixedWidths = true;
  options.numbers = true;
  // Past the listed widths the rest of the line is one cell; quotes mean nothing here.
  ASSERT_TRUE(Import("ab 12\"rest, of\r\nxyz\r\n", options));
  EXPECT_EQ(CellAt(book, 0, 0), "ab ");
  EXPECT_EQ(CellAt(book, 0, 1), "#12");
  EXPECT_EQ(CellAt(book, 0, 2), "\"rest, of");
  EXPECT_EQ(CellAt(book, 1, 0), "xyz");
  EXPECT_EQ(CellAt(book, 1, 1), "");
  EXPECT_EQ(FieldCountOf(book), 3);
}

TEST_F(TextImportTest, Encodings) {
  // "é" and "€" in UTF-8, a bad sequence, and a byte-order mark at the start.
  ASSERT_TRUE(Import("\xEF\xBB\xBF\xC3\xA9,\xE2\x82\xAC,a\xC3(\n", options));
  EXPECT_EQ(CellAt(book, 0, 0), "\xE9");
  EXPECT_EQ(CellAt(book, 0, 1), "\x80");
  EXPECT_EQ(CellAt(book, 0, 2), "a?(");
  options.encoding = TextEncoding::kOem;
  ASSERT_TRUE(Import("\x82\x81\n", options));  // é ü in code page 850
  EXPECT_EQ(CellAt(book, 0, 0), "\xE9\xFC");
  options.encoding = TextEncoding::kAnsi;
  ASSERT_TRUE(Import("\x82\xE9\n", options));
  EXPECT_EQ(CellAt(book, 0, 0), "\x82\xE9");
}

TEST_F(TextImportTest, HeaderLineNamesTheFields) {
  options.headerLine = true;
  options.numbers = true;
  ASSERT_TRUE(Import("Name,name,9lives,,Amount  \nann,x,y,z,12\n", options));
  ASSERT_EQ(FieldCountOf(book), 5);
  EXPECT_EQ(FieldAt(book, 0).name, "Name");
  EXPECT_NE(text::Upper(FieldAt(book, 1).name), "NAME");
  EXPECT_EQ(FieldAt(book, 2).name, "field3");  // a name must start with a letter
  EXPECT_EQ(FieldAt(book, 3).name, "field4");
  EXPECT_EQ(FieldAt(book, 4).name, "Amount");
  EXPECT_EQ(FieldAt(book, 4).type, FieldType::kNumber);
  // The first line holds no record.
  EXPECT_EQ(CellAt(book, 0, 0), "ann");
  EXPECT_EQ(book.currentSheet->UsedRows(), 1u);
}

TEST_F(TextImportTest, CellsPastTheSheetAreDroppedAndReported) {
  std::string wide;
  for (int i = 0; i < 2050; ++i) wide += "v,";
  TextImportReport report;
  ASSERT_TRUE(Import(wide + "\nshort\n", options, &report));
  EXPECT_EQ(report.highestDroppedColumn, 2049);
  EXPECT_EQ(report.highestDroppedRow, -1);
  EXPECT_EQ(FieldCountOf(book), kColumnLimit);
  EXPECT_EQ(CellAt(book, 0, kLastColumn), "v");
  EXPECT_EQ(CellAt(book, 1, 0), "short");
}

class CancellingSink : public ProgressSink {
 public:
  void Progress(uint64_t, uint64_t) override {}
  bool CancelRequested() override { return true; }
};

TEST_F(TextImportTest, CancelAndMissingFileLeaveNoDocument) {
  CancellingSink sink;
  ProgressSink* previous = SetProgressSink(&sink);
  bool ok = Import("a,b\n", options);
  SetProgressSink(previous);
  EXPECT_FALSE(ok);
  EXPECT_EQ(book.errorCode, err::kNone);
  EXPECT_EQ(book.firstNode, nullptr);

  EXPECT_FALSE(ImportText(book, dir.Path("missing.csv"), options));
  EXPECT_EQ(book.errorCode, err::kFileOpenRead);
  EXPECT_EQ(book.firstNode, nullptr);
}

// A large plain file is read in two halves at once; the same bytes gzipped are read by one
// reader, so the two imports must leave the same cells and fields whatever the file holds.
class SplitImportTest : public TextImportTest {
 protected:
  // Every record of the data sheet and the fields, as bytes.
  std::string Contents() {
    std::string all;
    for (const RowBlock* b = book.currentSheet->cells.head(); b != nullptr; b = b->next) {
      all.append(reinterpret_cast<const char*>(b->data), b->used);
    }
    for (int f = 0; f < FieldCountOf(book); ++f) {
      all += "|" + FieldAt(book, f).name + ":" + std::to_string(int(FieldAt(book, f).type));
    }
    return all;
  }
  void ExpectSameAsOneReader(const std::string& bytes) {
    ASSERT_GT(bytes.size(), 17u << 20);
    ASSERT_TRUE(Import(bytes, options)) << int(book.errorCode);
    std::string split = Contents();
    uint32_t rows = book.currentSheet->UsedRows();
    FileStream gz;
    std::string packed = dir.Path("data.csv.gz");
    ASSERT_TRUE(gz.Open(packed, StreamMode::kWrite, true));
    ASSERT_TRUE(gz.Write(bytes.data(), bytes.size()));
    ASSERT_TRUE(gz.Close());
    book.Clear();
    ASSERT_TRUE(ImportText(book, packed, options, nullptr)) << int(book.errorCode);
    EXPECT_EQ(book.currentSheet->UsedRows(), rows);
    EXPECT_TRUE(Contents() == split);
  }
  // Records of a name, a number and a quoted note, up to `size` bytes.
  static std::string Lines(size_t size, const char* end, size_t first = 0) {
    std::string text;
    for (size_t i = first; text.size() < size; ++i) {
      text += "name" + std::to_string(i % 977) + "," + std::to_string(i * 7 % 1000) + ".5,\"n, " +
              std::to_string(i) + "\"" + end;
    }
    return text;
  }
};

TEST_F(SplitImportTest, TheHalvesJoinAsOneReaderReadsThem) {
  options.headerLine = true;
  options.numbers = true;
  ExpectSameAsOneReader("Name,Amount,Note\r\n" + Lines(18u << 20, "\r\n"));
  EXPECT_EQ(FieldAt(book, 1).type, FieldType::kNumber);
}

TEST_F(SplitImportTest, TextBeforeNumbersInOneColumnKeepsTheLaterNumbersAsTexts) {
  options.numbers = true;
  ExpectSameAsOneReader("x,text,y\n" + Lines(18u << 20, "\n"));
  EXPECT_EQ(FieldAt(book, 1).type, FieldType::kText);
}

TEST_F(SplitImportTest, AQuotedCellAcrossTheMiddleIsReadWhole) {
  // One quoted cell of many short lines around the middle: the line feeds there end no record.
  std::string half = Lines(9u << 20, "\n");
  std::string quoted = "\"";
  for (int i = 0; i < 20000; ++i) quoted += "inside " + std::to_string(i) + "\n";
  quoted += "\",tail\n";
  ExpectSameAsOneReader(half + quoted + Lines(9u << 20, "\n", 5));
}

}  // namespace
}  // namespace kelpdex
