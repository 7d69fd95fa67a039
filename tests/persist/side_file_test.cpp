#include "persist/side_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "platform/os.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

using testing::ReadFileBytes;

std::string Bytes(size_t n, unsigned seed) {
  std::string s(n, '\0');
  for (size_t i = 0; i < n; ++i) s[i] = static_cast<char>((i * 131 + seed * 7 + (i >> 3)) & 0xFF);
  return s;
}

std::string AppendText(const std::string& path, std::string_view text) {
  uint32_t offset = 0;
  ErrorCode error = err::kNone;
  EXPECT_TRUE(SideFile::AppendLongText(path, text, offset, error)) << int(error);
  std::string back;
  EXPECT_TRUE(SideFile::ReadLongText(path, offset, back, error)) << int(error);
  return back;
}

class SideFileTest : public ::testing::Test {
 protected:
  testing::TempDir dir;
  std::string path = dir.Path("data.tx2");
};

TEST_F(SideFileTest, RecordsAreTextWithTheirOwnOffsetAndFullBase64Lines) {
  uint32_t first = 99, second = 99;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(SideFile::AppendLongText(path, "", first, error));
  // 58 bytes: one full line of 57 and one byte, which pads with "==".
  ASSERT_TRUE(SideFile::AppendLongText(path, std::string(58, 'a'), second, error));
  EXPECT_EQ(first, 0u);
  EXPECT_EQ(second, 20u);  // the empty value: header, empty line, closing empty line
  // 57 'a' bytes give "YWFh" nineteen times, 76 characters.
  std::string expected = "--0000000000 1\r\n\r\n\r\n--0000000020 1\r\n\r\n";
  for (int i = 0; i < 19; ++i) expected += "YWFh";
  expected += "\r\nYQ==\r\n\r\n";
  EXPECT_EQ(ReadFileBytes(path), expected);
  std::vector<uint32_t> records;
  ASSERT_TRUE(SideFile::ListRecords(path, records, error));
  EXPECT_EQ(records, (std::vector<uint32_t>{0, 20}));
}

TEST_F(SideFileTest, LongTextRoundTripsAtEveryLineAndPaddingBoundary) {
  // 54 bytes end in a line of exactly 72 characters, the reader's piece; 57 fills a line; the
  // others end in one or two padding characters.
  for (size_t n : {0, 1, 2, 3, 54, 55, 56, 57, 58, 114, 1000, 70000}) {
    std::string value = Bytes(n, static_cast<unsigned>(n));
    EXPECT_EQ(AppendText(path, value), value) << n;
  }
  // Line ends inside the value are bytes like any other.
  EXPECT_EQ(AppendText(path, "a\r\nb\n\r--0000000000 1\r\n"), "a\r\nb\n\r--0000000000 1\r\n");
}

TEST_F(SideFileTest, ObjectsKeepOrderNamesTypesAndBytes) {
  BinaryObjectList list;
  ASSERT_NE(list.Append("photo.png", "2006-01-31T13:10:55", Bytes(5000, 1)), nullptr);
  ASSERT_NE(list.Append("empty.txt", "file", ""), nullptr);
  // A name is cut at its ';', a type at its blank, and neither may break the header line.
  ASSERT_NE(list.Append("a;b.txt", "two words", "x"), nullptr);
  ASSERT_NE(list.Append("line\r\nbreak", "t", "y"), nullptr);
  // Names beginning with two hyphens, even one shaped like a record's header, stay in the list.
  ASSERT_NE(list.Append("--draft.txt", "t", "z"), nullptr);
  ASSERT_NE(list.Append("--0000000000 2", "t", "w"), nullptr);
  uint32_t offset = 0;
  ErrorCode error = err::kNone;
  AppendText(path, "before");
  ASSERT_TRUE(SideFile::AppendObjects(path, list.first(), offset, error));
  AppendText(path, "after");
  BinaryObjectList back;
  ASSERT_TRUE(SideFile::ReadObjects(path, offset, back, error)) << int(error);
  ASSERT_EQ(back.count(), 6u);
  const BinaryObjectItem* item = back.first();
  EXPECT_STREQ(item->name, "photo.png");
  EXPECT_STREQ(item->type, "2006-01-31T13:10:55");
  EXPECT_EQ(item->Bytes(), Bytes(5000, 1));
  item = item->next;
  EXPECT_STREQ(item->name, "empty.txt");
  EXPECT_EQ(item->size, 0u);
  item = item->next;
  EXPECT_STREQ(item->name, "a");
  EXPECT_STREQ(item->type, "two_words");
  EXPECT_EQ(item->Bytes(), "x");
  EXPECT_STREQ(item->next->name, "line__break");
  EXPECT_STREQ(item->next->next->name, "--draft.txt");
  EXPECT_EQ(item->next->next->Bytes(), "z");
  EXPECT_STREQ(item->next->next->next->name, "_-0000000000 2");

  // The pending form carries the same list.
  BinaryObjectList unpacked;
  ASSERT_TRUE(UnpackObjects(PackObjects(back), unpacked));
  EXPECT_EQ(PackObjects(unpacked), PackObjects(back));
  EXPECT_FALSE(UnpackObjects(PackObjects(back).substr(0, 20), unpacked));
}

TEST_F(SideFileTest, BadOffsetsAndBrokenRecordsGiveCodesAndWriteNothing) {
  ErrorCode error = err::kNone;
  std::string text;
  EXPECT_FALSE(SideFile::ReadLongText(path, 0, text, error));
  EXPECT_EQ(error, err::kFileOpenRead);  // no side file at all

  std::string value = Bytes(300, 3);
  AppendText(path, value);
  BinaryObjectList list;
  list.Append("f.bin", "file", "abc");
  uint32_t objects = 0;
  ASSERT_TRUE(SideFile::AppendObjects(path, list.first(), objects, error));
  const std::string before = ReadFileBytes(path);
  BinaryObjectList back;
  for (uint32_t offset : {uint32_t(before.size()), uint32_t(before.size() + 100), 1u, 20u}) {
    error = err::kNone;
    EXPECT_FALSE(SideFile::ReadLongText(path, offset, text, error)) << offset;
    EXPECT_EQ(error, err::kBinaryFields) << offset;
    EXPECT_FALSE(SideFile::ReadObjects(path, offset, back, error)) << offset;
    EXPECT_EQ(back.count(), 0u);
  }
  // A record of the other kind is not read as this one.
  EXPECT_FALSE(SideFile::ReadLongText(path, objects, text, error));
  EXPECT_FALSE(SideFile::ReadObjects(path, 0, back, error));
  EXPECT_EQ(ReadFileBytes(path), before);

  // A character outside Base64, and padding in the middle.
  std::string broken = before;
  broken[20] = '*';
  testing::WriteFileBytes(path, broken);
  EXPECT_FALSE(SideFile::ReadLongText(path, 0, text, error));
  EXPECT_EQ(error, err::kBinaryFields);
  broken = before;
  broken[22] = '=';
  testing::WriteFileBytes(path, broken);
  EXPECT_FALSE(SideFile::ReadLongText(path, 0, text, error));
  EXPECT_EQ(ReadFileBytes(path), broken);
}

TEST_F(SideFileTest, ACutFileNeverYieldsAShorterValue) {
  std::string value = Bytes(200, 9);
  AppendText(path, value);
  BinaryObjectList list;
  list.Append("a", "t", Bytes(100, 2));
  list.Append("b", "t", Bytes(10, 4));
  uint32_t objects = 0;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(SideFile::AppendObjects(path, list.first(), objects, error));
  const std::string whole = ReadFileBytes(path);
  for (size_t cut = 0; cut < whole.size(); ++cut) {
    testing::WriteFileBytes(path, whole.substr(0, cut));
    std::string text;
    error = err::kNone;
    if (SideFile::ReadLongText(path, 0, text, error)) {
      EXPECT_EQ(text, value) << cut;
    } else {
      EXPECT_EQ(error, err::kBinaryFields) << cut;
    }
    BinaryObjectList back;
    if (SideFile::ReadObjects(path, objects, back, error)) {
      ASSERT_EQ(back.count(), 2u) << cut;
      EXPECT_EQ(back.first()->Bytes(), Bytes(100, 2)) << cut;
      EXPECT_EQ(back.first()->next->Bytes(), Bytes(10, 4)) << cut;
    } else {
      EXPECT_EQ(error, err::kBinaryFields) << cut;
    }
  }
}

TEST_F(SideFileTest, AppendsStopAtTheSizeLimitAndOnAReadOnlyFile) {
  ErrorCode error = err::kNone;
  uint32_t offset = 0;
  // A sparse file just below the limit still takes a record, which carries it past.
  ASSERT_EQ(truncate(dir.Write("data.tx2", "").c_str(), SideFile::kSizeLimit - 1), 0);
  ASSERT_TRUE(SideFile::AppendLongText(path, "last", offset, error)) << int(error);
  EXPECT_EQ(offset, SideFile::kSizeLimit - 1);
  uint64_t size = 0;
  ASSERT_TRUE(platform::GetFileSize(path, size));
  EXPECT_GT(size, SideFile::kSizeLimit);
  EXPECT_FALSE(SideFile::AppendLongText(path, "more", offset, error));
  EXPECT_EQ(error, err::kSideFileTooLarge);
  uint64_t after = 0;
  ASSERT_TRUE(platform::GetFileSize(path, after));
  EXPECT_EQ(after, size);
  unlink(path.c_str());

  AppendText(path, "kept");
  const std::string before = ReadFileBytes(path);
  ASSERT_EQ(chmod(path.c_str(), 0444), 0);
  EXPECT_FALSE(SideFile::AppendLongText(path, "refused", offset, error));
  EXPECT_EQ(error, err::kFileOpenWrite);
  EXPECT_EQ(ReadFileBytes(path), before);
}

}  // namespace
}  // namespace kelpdex
