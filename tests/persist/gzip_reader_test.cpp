#include "persist/gzip_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "persist/document_file.h"
#include "persist/gzip_member.h"
#include "persist/gzip_test_data.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"
#include "support/workbook_compare.h"

namespace kelpdex {
namespace {

using testing::ReadThroughStream;

class GzipReaderTest : public ::testing::Test {
 protected:
  testing::TempDir dir;
};

TEST_F(GzipReaderTest, OtherWritersStreamsReadWhole) {
  std::string data = "30000000000" + testing::PatternBytes(200000);
  std::string half1 = data.substr(0, 70000), half2 = data.substr(70000);
  const struct {
    const char* name;
    std::string bytes;
  } files[] = {
      {"plain", testing::ZlibMember(data)},
      {"named", testing::ZlibMember(data, "table.kpx")},
      // Members one after the other, an empty one among them, as `cat a.gz b.gz` makes.
      {"members",
       testing::ZlibMember(half1, "a") + testing::ZlibMember("") + testing::ZlibMember(half2)},
  };
  for (const auto& file : files) {
    SCOPED_TRACE(file.name);
    std::string path = dir.Write(file.name, file.bytes);
    ErrorCode error;
    EXPECT_EQ(ReadThroughStream(path, error), data);
    EXPECT_EQ(error, err::kNone);
    NativeFileKind kind;
    ProtectionMode protection;
    ASSERT_TRUE(SniffFile(path, kind, protection, error));
    EXPECT_EQ(kind, NativeFileKind::kBinaryCompressed);
  }
  // Kelpdex's members and another writer's in one file.
  std::string own = dir.Path("own");
  ASSERT_TRUE(testing::WriteOwnGzip(own, half1));
  std::string mixed = dir.Write("mixed", testing::ReadFileBytes(own) + testing::ZlibMember(half2));
  ErrorCode error;
  EXPECT_EQ(ReadThroughStream(mixed, error), data);
  EXPECT_EQ(error, err::kNone);
}

// The offsets at which each member of Kelpdex's starts, from the sizes in their headers.
std::vector<size_t> MemberStarts(const std::string& file) {
  std::vector<size_t> starts;
  for (size_t at = 0; at + gzip::kHeaderSize <= file.size();) {
    starts.push_back(at);
    at += gzip::GetU32(reinterpret_cast<const uint8_t*>(file.data()) + at + gzip::kSizeAt);
  }
  return starts;
}

TEST_F(GzipReaderTest, ACutOrDamagedStreamIsAReadErrorNeverAShortRead) {
  std::string data = testing::PatternBytes(20000);
  std::string path = dir.Path("own.gz");
  ASSERT_TRUE(testing::WriteOwnGzip(path, data));
  const std::string own = testing::ReadFileBytes(path);
  const std::string foreign = testing::ZlibMember(data, "x");
  std::vector<size_t> starts = MemberStarts(own);
  ASSERT_GT(starts.size(), 3u);

  struct Case {
    const char* what;
    std::string bytes;
    // Every member is sound and only what follows them is not: their bytes may be handed out
    // before the error. Otherwise no damaged member's bytes may be.
    bool soundMembers = false;
  };
  auto flip = [](std::string s, size_t at) {
    s[at] = static_cast<char>(s[at] ^ 0x5a);
    return s;
  };
  std::vector<Case> cases = {
      {"own, inside the header", own.substr(0, 15)},
      {"own, inside the first member", own.substr(0, 100)},
      {"own, between two members", own.substr(0, starts[2])},
      {"own, inside a later header", own.substr(0, starts[2] + 1)},
      {"own, inside the last trailer", own.substr(0, own.size() - 3)},
      {"own, a byte short", own.substr(0, own.size() - 1)},
      {"own, data damaged", flip(own, starts[1] + 40)},
      {"own, CRC damaged", flip(own, starts[2] - 8)},
      {"own, length damaged", flip(own, starts[2] - 2)},
      {"own, a member's size damaged", flip(own, starts[1] + gzip::kSizeAt)},
      {"own, bytes after the end", own + "junk", true},
      {"foreign, inside the name", foreign.substr(0, 12)},
      {"foreign, inside the data", foreign.substr(0, foreign.size() / 2)},
      {"foreign, inside the trailer", foreign.substr(0, foreign.size() - 5)},
      {"foreign, data damaged", flip(foreign, foreign.size() / 2)},
      {"foreign, CRC damaged", flip(foreign, foreign.size() - 7)},
      {"foreign, length damaged", flip(foreign, foreign.size() - 1)},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    std::string cut = dir.Write("cut.gz", c.bytes);
    for (size_t buffer : {size_t{64}, FileStream::kBufferSize}) {
      ErrorCode error;
      std::string back = ReadThroughStream(cut, error, buffer);
      EXPECT_EQ(error, err::kFileRead);
      if (c.soundMembers) {
        EXPECT_EQ(back, data.substr(0, back.size()));
      } else {
        EXPECT_LT(back.size(), data.size());
      }
    }
  }
  // Uncut, both read whole.
  ErrorCode error;
  EXPECT_EQ(ReadThroughStream(dir.Write("whole.gz", own), error), data);
  EXPECT_EQ(error, err::kNone);
  EXPECT_EQ(ReadThroughStream(dir.Write("whole.gz", foreign), error), data);
  EXPECT_EQ(error, err::kNone);
}

TEST_F(GzipReaderTest, ACutCompressedDocumentFailsToOpenWithTheReadError) {
  Workbook book;
  testing::BuildSampleWorkbook(book);
  for (NativeFormat format : {NativeFormat::kBinaryCompressed, NativeFormat::kXmlCompressed}) {
    std::string path = dir.Path("doc.kpx");
    ErrorCode error = err::kNone;
    ASSERT_TRUE(WriteDocumentFile(path, book, format, error));
    const std::string whole = testing::ReadFileBytes(path);
    for (size_t size : {size_t{5}, size_t{100}, whole.size() / 2, whole.size() - 4}) {
      SCOPED_TRACE(std::to_string(int(format)) + " cut to " + std::to_string(size));
      testing::WriteFileBytes(path, whole.substr(0, size));
      // Detection already fails: no empty new database in place of the document.
      NativeFileKind kind = NativeFileKind::kNone;
      ProtectionMode protection;
      EXPECT_FALSE(SniffFile(path, kind, protection, error));
      EXPECT_EQ(error, err::kFileRead);
      Workbook back;
      EXPECT_FALSE(ReadDocumentFile(path, back, kind, error));
      EXPECT_EQ(error, err::kFileRead);
    }
  }
}

TEST_F(GzipReaderTest, APlainFilePassesThroughAndRewindsAfterAGzipRead) {
  std::string data = testing::PatternBytes(70000);
  std::string plain = dir.Write("plain", data);
  ErrorCode error;
  EXPECT_EQ(ReadThroughStream(plain, error, 256), data);
  EXPECT_EQ(error, err::kNone);
  // Far into a gzip file, with the helper reading ahead, and back to its start.
  std::string packed = dir.Path("packed");
  ASSERT_TRUE(testing::WriteOwnGzip(packed, data));
  FileStream in;
  ASSERT_TRUE(in.Open(packed, StreamMode::kRead, true, 1024));
  std::string first(50000, '\0');
  ASSERT_TRUE(in.Read(first.data(), first.size()));
  ASSERT_TRUE(in.Rewind());
  std::string again(data.size(), '\0');
  ASSERT_TRUE(in.Read(again.data(), again.size()));
  EXPECT_EQ(again, data);
  EXPECT_TRUE(in.AtEnd());
  EXPECT_TRUE(in.ok());
}

}  // namespace
}  // namespace kelpdex
