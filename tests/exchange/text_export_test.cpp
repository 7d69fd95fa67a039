#include <gtest/gtest.h>

#include <string>

#include "core/progress.h"
#include "exchange/text_exchange.h"
#include "exchange_test_util.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

using testing::ReadFileBytes;

class TextExportTest : public ::testing::Test {
 protected:
  void SetUp() override {
    TextFileOptions in;
    in.numbers = true;
    in.headerLine = true;
    // A gap of two rows, a column gap, a separator and quotes to quote, a character beyond ASCII.
    ASSERT_TRUE(ImportText(book,
                           dir.Write("source.csv",
                                     "Name,Qty,Note\n"
                                     "ann,1.5,\"say \"\"hi\"\"\"\n\n\n"
                                     "bob,,\"a,b\"\n"
                                     "\xC3\xA9,2,\n"),
                           in));
  }
  std::string Export(const TextFileOptions& options) {
    ErrorCode error = err::kNone;
    std::string path = dir.Path("out.txt");
    EXPECT_TRUE(ExportText(book, path, options, error));
    return ReadFileBytes(path);
  }
  testing::TempDir dir;
  Workbook book;
  TextFileOptions options;
};

TEST_F(TextExportTest, DelimitedWithGapsQuotesAndHeader) {
  EXPECT_EQ(Export(options),
            "ann,1.5,\"say \"\"hi\"\"\"\r\n\r\n\r\nbob,,\"a,b\"\r\n\xC3\xA9,2\r\n");
  options.headerLine = true;
  options.separator = ';';
  options.quote = '\'';
  options.encoding = TextEncoding::kAnsi;
  EXPECT_EQ(Export(options),
            "Name;Qty;Note\r\nann;1.5;say \"hi\"\r\n\r\n\r\nbob;;a,b\r\n\xE9;2\r\n");
  options.encoding = TextEncoding::kOem;
  std::string oem = Export(options);
  EXPECT_EQ(oem.substr(oem.size() - 5), "\x82;2\r\n");
}

TEST_F(TextExportTest, FixedWidthsCutAndPad) {
  options.fixedWidths = true;
  ASSERT_TRUE(ParseTextWidths("2,4", options));
  options.encoding = TextEncoding::kAnsi;
  // Past the listed widths a cell goes out whole.
  EXPECT_EQ(Export(options), "an1.5 say \"hi\"\r\n\r\n\r\nbo    a,b\r\n\xE9 2   \r\n");
}

TEST_F(TextExportTest, ReadsBackAsItWasWritten) {
  options.headerLine = true;
  options.numbers = true;
  ErrorCode error = err::kNone;
  std::string path = dir.Path("again.csv");
  ASSERT_TRUE(ExportText(book, path, options, error));
  Workbook again;
  ASSERT_TRUE(ImportText(again, path, options));
  for (uint32_t row = 0; row < 6; ++row) {
    for (uint16_t column = 0; column < 3; ++column) {
      EXPECT_EQ(testing::CellAt(again, row, column), testing::CellAt(book, row, column))
          << row << "," << column;
    }
  }
  EXPECT_EQ(testing::FieldAt(again, 2).name, "Note");
  EXPECT_EQ(testing::FieldAt(again, 1).type, FieldType::kNumber);
}

class CancellingSink : public ProgressSink {
 public:
  void Progress(uint64_t, uint64_t) override {}
  bool CancelRequested() override { return true; }
};

TEST(TextExportCancel, LeavesThePreviousFile) {
  testing::TempDir dir;
  Workbook book;
  std::string csv;
  for (int i = 0; i < 70000; ++i) csv += std::to_string(i) + "\n";
  ASSERT_TRUE(ImportText(book, dir.Write("big.csv", csv), TextFileOptions()));
  std::string target = dir.Write("out.csv", "old");
  CancellingSink sink;
  ProgressSink* previous = SetProgressSink(&sink);
  ErrorCode error = err::kFileWrite;
  bool ok = ExportText(book, target, TextFileOptions(), error);
  SetProgressSink(previous);
  EXPECT_FALSE(ok);
  EXPECT_EQ(error, err::kNone);
  EXPECT_EQ(ReadFileBytes(target), "old");
  EXPECT_EQ(ReadFileBytes(dir.Path(".out.csv.saving")), "");
}

}  // namespace
}  // namespace kelpdex
