#include "persist/binary_format.h"

#include <gtest/gtest.h>

#include <string>

#include "persist/file_kind.h"
#include "persist/old_drop_downs.h"
#include "store/bytes.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"
#include "support/workbook_compare.h"
#include "table/table_state.h"

namespace kelpdex {
namespace {

std::string ReadAll(const std::string& path) {
  return testing::ReadFileBytes(path);
}

void WriteAll(const std::string& path, const std::string& bytes) {
  testing::WriteFileBytes(path, bytes);
}

class BinaryTest : public ::testing::Test {
 protected:
  std::string Save(const Workbook& book, const char* name, bool gz) {
    std::string path = dir.Path(name);
    FileStream out;
    EXPECT_TRUE(out.Open(path, StreamMode::kWrite, gz));
    EXPECT_TRUE(WriteBinaryDocument(out, book));
    EXPECT_TRUE(out.Close());
    return path;
  }
  bool Load(const std::string& path, Workbook& book) {
    FileStream in;
    if (!in.Open(path, StreamMode::kRead, true)) {
      book.errorCode = in.error();
      return false;
    }
    return ReadBinaryDocument(in, book, nullptr, path);
  }
  testing::TempDir dir;
};

TEST_F(BinaryTest, EveryPartOfADocumentRoundTripsPlainAndGzipped) {
  Workbook book;
  testing::BuildSampleWorkbook(book);
  for (bool gz : {false, true}) {
    std::string path = Save(book, gz ? "sample.kpz" : "sample.kpx", gz);
    NativeFileKind kind;
    ProtectionMode protection;
    ErrorCode error;
    ASSERT_TRUE(SniffFile(path, kind, protection, error));
    EXPECT_EQ(kind, gz ? NativeFileKind::kBinaryCompressed : NativeFileKind::kBinary);
    if (!gz) {
      EXPECT_EQ(ReadAll(path).substr(0, 11), "30000000000");
    }
    Workbook back;
    ASSERT_TRUE(Load(path, back)) << back.errorCode;
    testing::ExpectSameWorkbook(book, back);
    EXPECT_FALSE(back.readOnly);
    // Saved again, the same bytes.
    if (!gz) {
      EXPECT_EQ(ReadAll(Save(back, "again.kpx", false)), ReadAll(path));
    }
  }
}

TEST_F(BinaryTest, AnEmptyDropDownSlotTakesNoBytes) {
  Workbook one, two;
  testing::BuildSampleWorkbook(one);
  testing::BuildSampleWorkbook(two);
  uint32_t slot = 0;
  ASSERT_TRUE(two.AddDropDownList(slot));
  two.RemoveDropDownList(slot);
  EXPECT_EQ(ReadAll(Save(one, "a.kpx", false)).size(), ReadAll(Save(two, "b.kpx", false)).size());
}

TEST_F(BinaryTest, TheReadOnlyCopyShowsValuesAndOpensReadOnly) {
  Workbook book;
  testing::BuildSampleWorkbook(book);
  std::string path = dir.Path("copy.kpx");
  {
    FileStream out;
    ASSERT_TRUE(out.Open(path, StreamMode::kWrite, false));
    out.Write("32100000000", 11);
    ASSERT_TRUE(WriteBinaryStream(out, book, nullptr, true));
    ASSERT_TRUE(out.Close());
  }
  Workbook back;
  ASSERT_TRUE(Load(path, back)) << back.errorCode;
  EXPECT_TRUE(back.readOnly);
  Worksheet& data = *back.FindTable("People");
  CellRecord* r = data.cells.GetCell(301, 0);
  ASSERT_NE(r, nullptr);
  ASSERT_TRUE(cell::IsText(r));
  EXPECT_EQ(cell::Text(r), "ab");
  EXPECT_FALSE(cell::IsAuto(r));
  r = data.cells.GetCell(302, 0);
  ASSERT_TRUE(r != nullptr && cell::IsNumber(r));
  EXPECT_EQ(cell::Number(r), 1);
  EXPECT_FALSE(cell::IsAuto(data.cells.GetCell(0, 1)));
  CellCursor cursor;
  while (CellRecord* c = data.cells.NextCell(cursor)) {
    EXPECT_FALSE(cell::IsFormula(c));
    EXPECT_FALSE(cell::IsAuto(c));
  }
  // An enciphered file without a password is refused.
  std::string bytes = ReadAll(path);
  bytes[2] = '0';
  WriteAll(dir.Path("enc.kpx"), bytes);
  Workbook none;
  EXPECT_FALSE(Load(dir.Path("enc.kpx"), none));
  EXPECT_EQ(none.errorCode, err::kInvalidPassword);
}

TEST_F(BinaryTest, DamagedFilesFailCleanlyAndLeaveTheDocumentAlone) {
  Workbook book;
  testing::BuildSampleWorkbook(book);
  std::string good = ReadAll(Save(book, "good.kpx", false));
  Workbook target;
  testing::BuildSampleWorkbook(target);
  target.lastSavedBy = "untouched";
  // Cut at many places: each is an error, never a crash or a half-built document.
  for (size_t cut : {12u, 100u, 200u, 1000u, 5000u, 20000u, 40000u}) {
    if (cut >= good.size()) continue;
    WriteAll(dir.Path("cut.kpx"), good.substr(0, cut));
    EXPECT_FALSE(Load(dir.Path("cut.kpx"), target)) << cut;
    EXPECT_NE(target.errorCode, err::kNone);
    EXPECT_EQ(target.lastSavedBy, "untouched");
  }
  WriteAll(dir.Path("cut.kpx"), good.substr(0, good.size() - 1));
  EXPECT_FALSE(Load(dir.Path("cut.kpx"), target));
  EXPECT_EQ(target.errorCode, err::kFileRead);
  // Bytes flipped all over the stream: some loads fail, none crash (the sanitizer run watches).
  for (size_t at = 11; at < good.size(); at += 331) {
    std::string bad = good;
    bad[at] = static_cast<char>(bad[at] ^ 0xFF);
    WriteAll(dir.Path("flip.kpx"), bad);
    Workbook w;
    Load(dir.Path("flip.kpx"), w);
  }
  WriteAll(dir.Path("abc.kpx"), "abcdefghijklmnop");
  EXPECT_FALSE(Load(dir.Path("abc.kpx"), target));
  EXPECT_EQ(target.errorCode, err::kInvalidBinaryFormat);
}

TEST_F(BinaryTest, AMissingCatalogueIsCode44) {
  Workbook book;
  testing::BuildSampleWorkbook(book);
  Worksheet* catalogue = book.FindCatalogue("People");
  ASSERT_TRUE(book.DetachNode(catalogue));
  delete catalogue;
  Workbook back;
  EXPECT_FALSE(Load(Save(book, "nocat.kpx", false), back));
  EXPECT_EQ(back.errorCode, err::kInvalidDatabase);
}

// A small stream in the layout of the first two versions, written by hand.
class OldStream {
 public:
  void Bytes(const std::string& b) { s += b; }
  void Zeros(size_t n) { s.append(n, '\0'); }
  void U8(uint8_t v) { s += static_cast<char>(v); }
  void U16(uint16_t v) {
    uint8_t b[2];
    StoreU16(b, v);
    s.append(reinterpret_cast<char*>(b), 2);
  }
  void U32(uint32_t v) {
    uint8_t b[4];
    StoreU32(b, v);
    s.append(reinterpret_cast<char*>(b), 4);
  }
  std::string s;
};

std::string OldFile(int version, bool withOldLists, float rotationZ = -1) {
  OldStream o;
  o.Bytes(std::to_string(version) + "0000000000");
  o.Zeros(128 + 50);
  o.U16(1);
  o.U16(150);
  o.U16(0);
  o.U16(0);
  // The old drop-down block: two items of list 3 and one skipped record.
  o.U32(withOldLists ? 3 : 0);
  if (withOldLists) {
    for (const char* item : {"alpha", "beta", "gone"}) {
      o.U16(3);
      o.U16(std::string(item) == "gone" ? 2 : 0);
      o.U16(static_cast<uint16_t>(std::strlen(item)));
      std::string text(item);
      text.resize(28, '\0');
      o.Bytes(text);
    }
  }
  o.U16(0);  // no lists in the new form
  o.U8(1);
  o.Zeros(kFontRecordSize);
  o.U16(1);
  o.Zeros(kStyleRecordSize);
  o.U32(0);  // inspected cells
  auto sheet = [&](const std::string& name, uint16_t level, bool current, bool withCell) {
    o.U8(static_cast<uint8_t>(name.size()));
    o.Bytes(name);
    o.U16(level);
    o.U8(kWorksheetNode);
    o.U8(current ? 1 : 0);
    if (rotationZ >= 0 && current) {
      // One container with one chart of no series, turned about Z.
      o.U32(1);
      std::string box(kContainerSize, '\0');
      box[container::kChartCountAt] = 1;
      o.Bytes(box);
      std::string chartBytes(kChartSize, '\0');
      std::memcpy(chartBytes.data() + chart::kRotationAt + 8, &rotationZ, 4);
      o.Bytes(chartBytes);
    } else {
      o.U32(0);  // containers
    }
    o.U16(kColumnLimit);  // one column run
    o.U16(0);
    o.U16(0);
    if (version >= 2) o.U16(0);
    o.U32(0);  // rows
    o.U32(0);  // style-span blocks
    if (withCell) {
      o.U32(1);
      uint8_t rec[cell::kNumberSize];
      cell::EncodeNumber(rec, 0, 0, 42);
      o.U16(cell::kNumberSize);
      o.Bytes(std::string(reinterpret_cast<char*>(rec), sizeof rec));
    } else {
      o.U32(0);
    }
    o.Zeros(kPageSettingsSize + kSheetSettingsSize);
  };
  if (version >= 2) o.U32(3);
  o.U8(6);
  o.Bytes("system");
  o.U16(1);
  o.U8(kFolderNode);
  o.U8(1);
  sheet("T", 2, false, false);
  sheet("T", 1, true, true);
  return o.s;
}

TEST_F(BinaryTest, OlderVersionsReadTheirOwnLayout) {
  for (int version : {1, 2}) {
    SCOPED_TRACE(version);
    std::string path = dir.Path("old" + std::to_string(version) + ".kpx");
    WriteAll(path, OldFile(version, true));
    Workbook book;
    ASSERT_TRUE(Load(path, book)) << int(book.errorCode);
    const DropDownList& list = book.dropDownLists[2];
    EXPECT_TRUE(list.used);
    EXPECT_EQ(list.name, "List 3.");
    EXPECT_EQ(list.items, (std::vector<std::string>{"alpha", "beta"}));
    CellRecord* r = book.FindTable("T")->cells.GetCell(0, 0);
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(cell::Number(r), 42);
    EXPECT_EQ(book.currentSheet, book.FindTable("T"));
  }
}

TEST_F(BinaryTest, OlderChartsTurnTheirAnglesIntoAMatrixAndNumberTheirContainers) {
  std::string path = dir.Path("chart.kpx");
  WriteAll(path, OldFile(2, false, 90.0f));
  Workbook book;
  ASSERT_TRUE(Load(path, book)) << int(book.errorCode);
  const Worksheet& data = *book.FindTable("T");
  ASSERT_EQ(data.containers.size(), 1u);
  EXPECT_EQ(LoadU32(data.containers[0].bytes.data() + container::kIdAt), 1u);
  ASSERT_EQ(data.containers[0].charts.size(), 1u);
  float m[16];
  for (int k = 0; k < 16; ++k) {
    uint32_t bits = LoadU32(data.containers[0].charts[0].matrix.data() + 4 * k);
    std::memcpy(&m[k], &bits, 4);
  }
  // A quarter turn about Z: x goes to y, y to -x, z stays.
  EXPECT_NEAR(m[0], 0, 1e-6);
  EXPECT_NEAR(m[1], -1, 1e-6);
  EXPECT_NEAR(m[4], 1, 1e-6);
  EXPECT_NEAR(m[5], 0, 1e-6);
  EXPECT_NEAR(m[10], 1, 1e-6);
  EXPECT_NEAR(m[15], 1, 1e-6);
}

TEST_F(BinaryTest, TheOldDropDownFileFillsTheLists) {
  OldStream dat;
  dat.Bytes("Kelpdex5400");
  dat.U8(0);
  dat.U32(0);
  dat.U32(40);  // the lists begin at 40
  dat.U32(0);
  dat.Zeros(40 - 24);
  dat.U32(2);
  std::string record(60, '\0');
  StoreU32(reinterpret_cast<uint8_t*>(record.data()) + 56, 5);
  dat.Bytes(record);
  std::string lines = "one\r\ntwo\n\nthree";
  dat.U32(static_cast<uint32_t>(lines.size()));
  dat.Bytes(lines);
  std::string named(60, '\0');
  std::memcpy(named.data(), "Colours", 7);
  StoreU32(reinterpret_cast<uint8_t*>(named.data()) + 56, 101);  // out of range: dropped
  dat.Bytes(named);
  dat.U32(4);
  dat.Bytes("red\n");
  std::string path = dir.Path("legacy.kpx");
  WriteAll(OldDropDownPath(path), dat.s);
  EXPECT_EQ(OldDropDownPath("/a.b/c"), "/a.b/c.dat");
  WriteAll(path, OldFile(2, false));
  Workbook book;
  ASSERT_TRUE(Load(path, book)) << int(book.errorCode);
  EXPECT_EQ(book.dropDownLists[4].name, "List 5.");
  EXPECT_EQ(book.dropDownLists[4].items, (std::vector<std::string>{"one", "two", "three"}));
  WriteAll(OldDropDownPath(path), "NotOurs5400xxxxxxxxxxxxxxxxxx");
  Workbook other;
  EXPECT_FALSE(ReadOldDropDownFile(path, other));
}

}  // namespace
}  // namespace kelpdex
