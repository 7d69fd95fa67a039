#include <gtest/gtest.h>

#include <string>

#include "exchange/text_exchange.h"
#include "exchange/xbase.h"
#include "exchange_test_util.h"
#include "persist/document_file.h"
#include "persist/side_values.h"
#include "store/bytes.h"
#include "store/style_table.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

using testing::CellAt;
using testing::FieldAt;
using testing::ReadFileBytes;

// A .dbf made byte by byte: fields as (name, type, length, decimals), records as their bytes
// behind the delete flag.
struct DbfField {
  std::string name;
  char type;
  uint8_t length;
  uint8_t decimals;
};

std::string MakeDbf(uint8_t version, const std::vector<DbfField>& fields,
                    const std::vector<std::string>& records, int recordCountDelta = 0) {
  uint16_t recordSize = 1;
  for (const DbfField& f : fields)
    recordSize += f.type == 'C' ? f.length + 256 * f.decimals : f.length;
  std::string out(32, '\0');
  uint8_t* h = reinterpret_cast<uint8_t*>(out.data());
  h[0] = version;
  h[1] = 106;
  h[2] = 1;
  h[3] = 31;
  StoreU32(h + 4, static_cast<uint32_t>(records.size() + recordCountDelta));
  StoreU16(h + 8, static_cast<uint16_t>(32 * fields.size() + 33));
  StoreU16(h + 10, recordSize);
  for (const DbfField& f : fields) {
    std::string d(32, '\0');
    d.replace(0, f.name.size(), f.name);
    d[11] = f.type;
    d[16] = static_cast<char>(f.length);
    d[17] = static_cast<char>(f.decimals);
    out += d;
  }
  out += '\r';
  for (const std::string& r : records) out += r;
  out += '\x1a';
  return out;
}

class XbaseTest : public ::testing::Test {
 protected:
  testing::TempDir dir;
  Workbook book;
  XbaseImportOptions options;
};

TEST_F(XbaseTest, ImportsTypesDatesLogicalsAndDeletedRecords) {
  std::vector<DbfField> fields = {{"NAME", 'C', 6, 0}, {"AMOUNT", 'N', 8, 2}, {"BORN", 'D', 8, 0},
                                  {"OK", 'L', 1, 0},   {"PIC", 'G', 4, 0},    {"ODD", 'X', 2, 0}};
  std::vector<std::string> records = {
      std::string(" Ann   ") + "   12.75" + "20060131" + "T" + "    " + "ab",
      std::string("*Bob   ") + "   -3.00" + "        " + "N" + "    " + "cd",
      std::string(" \x82t    ") + "********" + "20061331" + "?" + "    " + "ef",
  };
  options.oem = true;
  ASSERT_TRUE(ImportXbase(book, dir.Write("people.dbf", MakeDbf(3, fields, records)), options));
  EXPECT_EQ(book.currentSheet->Name(), "people");
  EXPECT_EQ(FieldAt(book, 0).name, "NAME");
  EXPECT_EQ(FieldAt(book, 1).type, FieldType::kNumber);
  EXPECT_EQ(FieldAt(book, 2).type, FieldType::kText);
  EXPECT_EQ(CellAt(book, 0, 0), "Ann");
  EXPECT_EQ(CellAt(book, 0, 1), "#12.75");
  EXPECT_EQ(CellAt(book, 0, 2), "2006-01-31");
  EXPECT_EQ(CellAt(book, 0, 3), "#1");
  EXPECT_EQ(CellAt(book, 0, 4), "");
  EXPECT_EQ(CellAt(book, 0, 5), "Binary data");
  EXPECT_EQ(CellAt(book, 1, 1), "#-3");
  EXPECT_EQ(CellAt(book, 1, 2), "");
  EXPECT_EQ(CellAt(book, 1, 3), "#0");
  EXPECT_EQ(CellAt(book, 2, 0), "\xE9t");
  EXPECT_EQ(CellAt(book, 2, 1), "********");
  EXPECT_EQ(CellAt(book, 2, 3), "");
  // Month 13: an empty text carrying "#VALUE!".
  const CellRecord* bad = book.currentSheet->cells.GetCell(2, 2);
  ASSERT_NE(bad, nullptr);
  EXPECT_EQ(cell::ErrorNibble(bad), 0x70);
  // The deleted record is kept, in red.
  auto red = [&](uint32_t row) {
    const StyleRecord& style = book.styles.Style(book.currentSheet->formats.StyleAt(row, 0));
    return style.bytes[style::kFontColourSetAt] != 0 &&
           LoadU32(style.bytes + style::kFontColourAt) == 255;
  };
  EXPECT_TRUE(red(1));
  EXPECT_FALSE(red(0));

  // The red record goes out deleted again, and the header says what the table holds.
  std::string out = dir.Path("again.dbf");
  ErrorCode error = err::kNone;
  XbaseExportOptions exportOptions;
  exportOptions.dialect = XbaseDialect::kDbase3;
  ASSERT_TRUE(ExportXbase(book, out, exportOptions, error)) << int(error);
  std::string bytes = ReadFileBytes(out);
  ASSERT_GE(bytes.size(), 32u + 6 * 32 + 1);
  EXPECT_EQ(uint8_t(bytes[0]), 3);  // no memo field
  EXPECT_EQ(LoadU32(reinterpret_cast<const uint8_t*>(bytes.data()) + 4), 3u);
  uint16_t headerSize = LoadU16(reinterpret_cast<const uint8_t*>(bytes.data()) + 8);
  uint16_t recordSize = LoadU16(reinterpret_cast<const uint8_t*>(bytes.data()) + 10);
  EXPECT_EQ(headerSize, 6 * 32 + 33);
  EXPECT_EQ(recordSize, 1 + 128 + 18 + 128 * 4);
  EXPECT_EQ(bytes.substr(32, 5), std::string("NAME\0", 5));
  EXPECT_EQ(bytes[32 + 11], 'C');
  EXPECT_EQ(bytes[64 + 11], 'N');
  EXPECT_EQ(uint8_t(bytes[64 + 16]), 18);
  EXPECT_EQ(bytes[headerSize - 1], '\r');
  EXPECT_EQ(bytes.size(), headerSize + 3u * recordSize + 1);
  EXPECT_EQ(bytes.back(), '\x1a');
  EXPECT_EQ(bytes[headerSize], ' ');
  EXPECT_EQ(bytes[headerSize + recordSize], '*');
  // Numbers right-aligned without decimals in an N field of dBase III.
  EXPECT_EQ(bytes.substr(headerSize + 1 + 128, 18), std::string(16, ' ') + "13");
  EXPECT_FALSE(platform::FileExists(dir.Path("again.dbt")));

  Workbook back;
  ASSERT_TRUE(ImportXbase(back, out, options));
  EXPECT_EQ(CellAt(back, 1, 0), "Bob");
  EXPECT_EQ(
      book.styles.Style(back.currentSheet->formats.StyleAt(1, 0)).bytes[style::kFontColourSetAt],
      1);
}

TEST_F(XbaseTest, MemosRoundTripThroughTheSideFile) {
  TextFileOptions text;
  text.headerLine = true;
  ASSERT_TRUE(ImportText(book, dir.Write("notes.csv", "Title,Amount\nfirst,1\nsecond,2\n"), text));
  // The second field becomes a Long Text field holding a long value for the first record.
  TableSpec table;
  ASSERT_TRUE(CurrentTable(book, table));
  std::string memo(700, 'm');
  memo += "\x1a end";
  for (XbaseDialect dialect : {XbaseDialect::kDbase3, XbaseDialect::kDbase4, XbaseDialect::kClipper,
                               XbaseDialect::kFoxPro}) {
    SCOPED_TRACE(static_cast<int>(dialect));
    XbaseExportOptions exportOptions;
    exportOptions.dialect = dialect;
    ErrorCode error = err::kNone;
    XbaseHeader header;
    ASSERT_TRUE(BuildXbaseHeader(book, header, dialect, &exportOptions.fields, error));
    exportOptions.fields[1].field = XbaseField{"AMOUNT", 'M', 10, 0};
    book.currentSheet->cells.DeleteRange(1, 1, 0, 1);
    uint8_t record[1024];
    cell::EncodeText(record, 0, 1, memo);
    ASSERT_TRUE(book.currentSheet->cells.PutCell(record));
    std::string out = dir.Path("memo.dbf");
    ASSERT_TRUE(ExportXbase(book, out, exportOptions, error)) << int(error);
    std::string dbf = ReadFileBytes(out);
    std::string memoFile = ReadFileBytes(XbaseMemoPath(out, dialect));
    ASSERT_GE(memoFile.size(), 512u);
    const uint8_t* m = reinterpret_cast<const uint8_t*>(memoFile.data());
    switch (dialect) {
      case XbaseDialect::kDbase4:
        EXPECT_EQ(uint8_t(dbf[0]), 0x8B);
        EXPECT_EQ(LoadU16(m + 20), 512);
        EXPECT_EQ(memoFile.substr(512, 4), std::string("\xFF\xFF\x08\x00", 4));
        // The length counts the entry's own eight bytes.
        EXPECT_EQ(LoadU32(m + 516), memo.size() + 8);
        break;
      case XbaseDialect::kFoxPro:
        EXPECT_EQ(uint8_t(dbf[0]), 0xF5);
        EXPECT_EQ(m[7], 64);
        EXPECT_EQ(XbaseMemoPath(out, dialect), dir.Path("memo.ftp"));
        break;
      default:
        EXPECT_EQ(uint8_t(dbf[0]), 0x83);
        EXPECT_EQ(m[16], 3);
        EXPECT_EQ(memoFile.substr(512 + memo.size(), 2), "\x1a\x1a");
        EXPECT_EQ(memoFile.size() % 512, 0u);
        break;
    }
    Workbook back;
    options.dialect = dialect;
    ASSERT_TRUE(ImportXbase(back, out, options));
    EXPECT_EQ(FieldAt(back, 1).type, FieldType::kLongText);
    std::string text2;
    bool present = false;
    ASSERT_TRUE(
        ReadLongTextValue(*back.currentSheet, SideFilePath(out), 0, 1, text2, present, error));
    // FoxPro memos are never read back; dBase III stops at the first pair of 0x1A.
    if (dialect == XbaseDialect::kFoxPro) {
      EXPECT_FALSE(present);
    } else {
      EXPECT_EQ(text2, memo);
    }
    EXPECT_EQ(CellAt(back, 1, 0), "second");
  }
}

TEST_F(XbaseTest, LongCharacterFieldOfClipperIsLongText) {
  std::string value(1500, 'w');
  std::vector<DbfField> fields = {{"BODY", 'C', 1500 & 0xFF, 1500 >> 8}, {"N", 'N', 3, 0}};
  std::string path = dir.Write("long.dbf", MakeDbf(3, fields, {" " + value + "  7"}));
  options.dialect = XbaseDialect::kClipper;
  ASSERT_TRUE(ImportXbase(book, path, options));
  EXPECT_EQ(FieldAt(book, 0).type, FieldType::kLongText);
  EXPECT_EQ(CellAt(book, 0, 1), "#7");
  std::string text;
  bool present = false;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(
      ReadLongTextValue(*book.currentSheet, SideFilePath(path), 0, 0, text, present, error));
  EXPECT_EQ(text, value);
}

TEST_F(XbaseTest, MemoFlagWithoutMemoFileOpens) {
  std::vector<DbfField> fields = {{"T", 'C', 2, 0}, {"M", 'M', 10, 0}};
  std::string path = dir.Write("lost.dbf", MakeDbf(0x83, fields, {" ab         1"}));
  ASSERT_TRUE(ImportXbase(book, path, options));
  EXPECT_EQ(CellAt(book, 0, 0), "ab");
  EXPECT_EQ(CellAt(book, 0, 1), "");
}

TEST_F(XbaseTest, BadFilesFailCleanly) {
  std::vector<DbfField> fields = {{"T", 'C', 2, 0}, {"M", 'M', 10, 0}};
  std::string good = MakeDbf(0x83, fields, {" ab         1", " cd          "});
  struct Case {
    const char* what;
    std::string bytes;
    ErrorCode error;
  };
  std::string wrongSize = good;
  StoreU16(reinterpret_cast<uint8_t*>(wrongSize.data()) + 10, 5);  // records shorter than fields
  std::string tinyHeader = good;
  StoreU16(reinterpret_cast<uint8_t*>(tinyHeader.data()) + 8, 40);  // room for no descriptor
  std::string noFields = good;
  noFields[32 + 11] = '1';
  std::vector<Case> cases = {
      {"cut header", good.substr(0, 20), err::kInvalidBinaryFormat},
      {"cut descriptors", good.substr(0, 50), err::kInvalidBinaryFormat},
      {"record size", wrongSize, err::kInvalidBinaryFormat},
      {"header too small", tinyHeader, err::kInvalidBinaryFormat},
      {"no field", noFields, err::kInvalidBinaryFormat},
      {"memo past the end", good, err::kFileRead},
  };
  dir.Write("bad.dbt", std::string(512, '\0'));
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Workbook target;
    target.errorCode = err::kNone;
    options.dialect = XbaseDialect::kDbase3;
    EXPECT_FALSE(ImportXbase(target, dir.Write("bad.dbf", c.bytes), options));
    EXPECT_EQ(target.errorCode, c.error);
    EXPECT_EQ(target.firstNode, nullptr);
  }
  // A side file made by the failed import does not stay.
  EXPECT_FALSE(platform::FileExists(dir.Path("bad.tx2")));

  // A count past the end of the file and a last record cut short: the records there are read.
  std::string longCount = MakeDbf(3, {{"T", 'C', 2, 0}}, {" ab", " cd"}, 1000);
  longCount.resize(longCount.size() - 2);
  ASSERT_TRUE(ImportXbase(book, dir.Write("count.dbf", longCount), options));
  EXPECT_EQ(CellAt(book, 0, 0), "ab");
  EXPECT_EQ(book.currentSheet->UsedRows(), 1u);
}

TEST_F(XbaseTest, ExportRefusesRecordsTooLarge) {
  ASSERT_TRUE(ImportText(book, dir.Write("t.csv", "a\n"), TextFileOptions()));
  XbaseExportOptions exportOptions;
  exportOptions.dialect = XbaseDialect::kFoxPro;
  for (int i = 0; i < 2; ++i) exportOptions.fields.push_back({XbaseField{"C", 'C', 40000, 0}, 0});
  ErrorCode error = err::kNone;
  EXPECT_FALSE(ExportXbase(book, dir.Path("big.dbf"), exportOptions, error));
  EXPECT_EQ(error, err::kTooManyFields);
  EXPECT_FALSE(platform::FileExists(dir.Path("big.dbf")));
  Workbook empty;
  EXPECT_FALSE(ExportXbase(empty, dir.Path("none.dbf"), XbaseExportOptions(), error));
  EXPECT_EQ(error, err::kInvalidDatabase);
}

TEST_F(XbaseTest, PaddingIsTrimmedWordByWord) {
  // Lengths around the eight bytes the trim steps by, blanks inside a value, zero padding.
  std::vector<DbfField> fields = {
      {"A", 'C', 7, 0}, {"B", 'C', 8, 0}, {"C", 'C', 17, 0}, {"D", 'N', 16, 0}};
  std::string zeros("abc\0\0\0\0\0", 8);
  std::vector<std::string> records = {
      std::string(" abcdefg") + "abcdefgh" + "a        b       " + "           -12.5",
      std::string("        ") + zeros + "                 " + "                ",
      std::string(" x      ") + "       y" + "        z        " + "42              ",
  };
  ASSERT_TRUE(ImportXbase(book, dir.Write("pad.dbf", MakeDbf(3, fields, records)), options));
  EXPECT_EQ(CellAt(book, 0, 0), "abcdefg");
  EXPECT_EQ(CellAt(book, 0, 1), "abcdefgh");
  EXPECT_EQ(CellAt(book, 0, 2), "a        b");
  EXPECT_EQ(CellAt(book, 0, 3), "#-12.5");
  EXPECT_EQ(CellAt(book, 1, 0), "");
  EXPECT_EQ(CellAt(book, 1, 1), "abc");
  EXPECT_EQ(CellAt(book, 1, 2), "");
  EXPECT_EQ(CellAt(book, 1, 3), "");
  EXPECT_EQ(CellAt(book, 2, 1), "       y");
  EXPECT_EQ(CellAt(book, 2, 2), "        z");
  EXPECT_EQ(CellAt(book, 2, 3), "#42");
}

// A table large enough to be read and written in two halves at once: its records land in their
// rows with their delete flags, and an export writes the same records back byte for byte.
class XbaseHalvesTest : public XbaseTest {
 protected:
  static constexpr uint32_t kCount = 120000;  // 17.6 MB of 147-byte records
  static constexpr uint32_t kHalf = kCount / 2;

  static bool Deleted(uint32_t r) { return r % 1001 == 0 || r == kHalf - 1 || r == kHalf; }
  static std::string Name(uint32_t r) {
    if (r % 7 == 0) return "";
    if (r % 5 == 1) return "a       b" + std::to_string(r);
    return "n" + std::to_string(r);
  }
  static std::string Record(uint32_t r) {
    std::string name = Name(r);
    std::string qty = r % 3 == 0 ? "" : std::to_string(r);
    return (Deleted(r) ? "*" : " ") + name + std::string(128 - name.size(), ' ') +
           std::string(18 - qty.size(), ' ') + qty;
  }
  std::string Big() {
    std::vector<std::string> records;
    records.reserve(kCount);
    for (uint32_t r = 0; r < kCount; ++r) records.push_back(Record(r));
    return MakeDbf(3, {{"NAME", 'C', 128, 0}, {"QTY", 'N', 18, 0}}, records);
  }
  bool Red(Workbook& target, uint32_t row) {
    const StyleRecord& style = target.styles.Style(target.currentSheet->formats.StyleAt(row, 0));
    return style.bytes[style::kFontColourSetAt] != 0 &&
           LoadU32(style.bytes + style::kFontColourAt) == 255;
  }
  static constexpr size_t kHeader = 32 + 2 * 32 + 1;
  static constexpr size_t kRecord = 1 + 128 + 18;
};

TEST_F(XbaseHalvesTest, LargeTableComesInWholeAndGoesOutTheSame) {
  std::string bytes = Big();
  ASSERT_GE(bytes.size(), 16u << 20);
  std::string path = dir.Write("big.dbf", bytes);
  ASSERT_TRUE(ImportXbase(book, path, options));
  ASSERT_EQ(book.currentSheet->UsedRows(), kCount);
  for (uint32_t r : {0u, 1u, 6u, kHalf - 1, kHalf, kHalf + 1, kCount - 2, kCount - 1}) {
    SCOPED_TRACE(r);
    EXPECT_EQ(CellAt(book, r, 0), Name(r));
    EXPECT_EQ(CellAt(book, r, 1), r % 3 == 0 ? "" : "#" + std::to_string(r));
  }
  uint32_t wrong = 0;
  for (uint32_t r = 0; r < kCount; ++r) wrong += Red(book, r) != Deleted(r);
  EXPECT_EQ(wrong, 0u);

  std::string out = dir.Path("again.dbf");
  ErrorCode error = err::kNone;
  XbaseExportOptions exportOptions;
  exportOptions.dialect = XbaseDialect::kDbase3;
  ASSERT_TRUE(ExportXbase(book, out, exportOptions, error)) << int(error);
  std::string written = ReadFileBytes(out);
  ASSERT_EQ(written.size(), bytes.size());
  EXPECT_EQ(written.substr(0, 1), bytes.substr(0, 1));
  EXPECT_EQ(written.substr(4, kHeader - 4), bytes.substr(4, kHeader - 4));  // not the date
  // Compared record by record so that a failure names the first record that differs.
  size_t first = kCount;
  for (size_t r = 0; r < kCount && first == kCount; ++r) {
    if (written.compare(kHeader + r * kRecord, kRecord, bytes, kHeader + r * kRecord, kRecord))
      first = r;
  }
  EXPECT_EQ(first, kCount);
  EXPECT_EQ(written.back(), '\x1a');
}

TEST_F(XbaseHalvesTest, EndMarkOrCutRecordEndsTheTableInEitherHalf) {
  std::string bytes = Big();
  for (uint32_t mark : {1000u, kHalf, kHalf + 7000}) {
    SCOPED_TRACE(mark);
    std::string marked = bytes;
    marked[kHeader + mark * kRecord] = '\x1a';
    Workbook target;
    ASSERT_TRUE(ImportXbase(target, dir.Write("marked.dbf", marked), options));
    EXPECT_EQ(target.currentSheet->UsedRows(), mark);
    EXPECT_EQ(CellAt(target, mark - 1, 0), Name(mark - 1));
  }
  // No end mark, and the last record cut in the middle: the records before it are all read.
  std::string cut = bytes.substr(0, kHeader + (kCount - 1) * kRecord + kRecord / 2);
  Workbook target;
  ASSERT_TRUE(ImportXbase(target, dir.Write("cut.dbf", cut), options));
  EXPECT_EQ(target.currentSheet->UsedRows(), kCount - 1);
  EXPECT_EQ(CellAt(target, kCount - 2, 1), "#" + std::to_string(kCount - 2));
}

}  // namespace
}  // namespace kelpdex
