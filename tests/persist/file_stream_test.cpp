#include "persist/file_stream.h"

#include <gtest/gtest.h>

#include <zlib.h>

#include <cstring>
#include <fstream>
#include <string>

#include "persist/file_kind.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

void WriteRaw(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary);
  out << bytes;
}

void WriteGzip(const std::string& path, const std::string& bytes) {
  gzFile gz = gzopen(path.c_str(), "wb");
  gzwrite(gz, bytes.data(), static_cast<unsigned>(bytes.size()));
  gzclose(gz);
}

struct Kind {
  bool ok;
  NativeFileKind kind;
  ProtectionMode protection;
  ErrorCode error;
};

Kind Sniff(const std::string& path) {
  Kind k{};
  k.ok = SniffFile(path, k.kind, k.protection, k.error);
  return k;
}

class FileStreamTest : public ::testing::Test {
 protected:
  std::string Path(const char* name) { return dir.path() + "/" + name; }
  testing::TempDir dir;
};

TEST_F(FileStreamTest, KindsFromTheFirstElevenBytesThroughGzip) {
  WriteRaw(Path("plain.kpx"), "30000000000rest");
  WriteGzip(Path("packed.kpx"), "30000000000rest");
  WriteGzip(Path("xml.kpx"), "<?xml version=\"1.0\"?><Workbook/>");
  WriteRaw(Path("xmlplain.kpx"), "<?xml version=\"1.0\"?><Workbook/>");
  WriteRaw(Path("abc.kpx"), "abcdefghijklmnop");
  WriteRaw(Path("empty.kpx"), "");
  WriteRaw(Path("short.kpx"), "3000");
  WriteRaw(Path("old.kpx"), "0001KelpdexData");
  WriteRaw(Path("mode1.kpx"), "32100000000");
  WriteRaw(Path("mode2.kpx"), "32000000000");
  WriteRaw(Path("four.kpx"), "40000000000");

  EXPECT_EQ(Sniff(Path("plain.kpx")).kind, NativeFileKind::kBinary);
  EXPECT_EQ(Sniff(Path("packed.kpx")).kind, NativeFileKind::kBinaryCompressed);
  EXPECT_EQ(Sniff(Path("xml.kpx")).kind, NativeFileKind::kXmlCompressed);
  EXPECT_EQ(Sniff(Path("xmlplain.kpx")).kind, NativeFileKind::kXml);
  Kind abc = Sniff(Path("abc.kpx"));
  EXPECT_FALSE(abc.ok);
  EXPECT_EQ(abc.error, err::kInvalidBinaryFormat);
  EXPECT_FALSE(Sniff(Path("four.kpx")).ok);
  EXPECT_EQ(Sniff(Path("empty.kpx")).kind, NativeFileKind::kEmpty);
  EXPECT_EQ(Sniff(Path("short.kpx")).kind, NativeFileKind::kEmpty);
  EXPECT_EQ(Sniff(Path("old.kpx")).kind, NativeFileKind::kOlderDatabase);
  EXPECT_EQ(Sniff(Path("mode1.kpx")).protection, ProtectionMode::kReadOnlyCopy);
  EXPECT_EQ(Sniff(Path("mode2.kpx")).protection, ProtectionMode::kEncrypted);
  EXPECT_EQ(Sniff(Path("plain.kpx")).protection, ProtectionMode::kNone);
  Kind missing = Sniff(Path("missing.kpx"));
  EXPECT_FALSE(missing.ok);
  EXPECT_EQ(missing.error, err::kFileOpenRead);
}

TEST(FileKindTest, OnlyTheFourWrittenFormsAreKeptForTheNextSave) {
  EXPECT_EQ(FormatOfFileKind(NativeFileKind::kXml), NativeFormat::kXml);
  EXPECT_EQ(FormatOfFileKind(NativeFileKind::kXmlCompressed), NativeFormat::kXmlCompressed);
  EXPECT_EQ(FormatOfFileKind(NativeFileKind::kBinary), NativeFormat::kBinary);
  EXPECT_EQ(FormatOfFileKind(NativeFileKind::kBinaryCompressed), NativeFormat::kBinaryCompressed);
  // The older single-table form and an empty file are no form a save writes.
  EXPECT_EQ(FormatOfFileKind(NativeFileKind::kOlderDatabase), NativeFormat::kDefault);
  EXPECT_EQ(FormatOfFileKind(NativeFileKind::kEmpty), NativeFormat::kDefault);
  EXPECT_EQ(FormatOfFileKind(NativeFileKind::kNone), NativeFormat::kDefault);
}

TEST_F(FileStreamTest, WritesAndReadsAcrossBufferRefillsPlainAndGzipped) {
  std::string data;
  for (int i = 0; i < 300000; ++i) data += static_cast<char>('a' + i * 7 % 26);
  for (bool gz : {false, true}) {
    std::string path = Path(gz ? "big.gz" : "big.bin");
    FileStream out;
    ASSERT_TRUE(out.Open(path, StreamMode::kWrite, gz, 4096));
    // Half the pieces go through the buffer in place, as a record writer puts them.
    for (size_t at = 0; at < data.size(); at += 1000) {
      if (at % 2000 == 0) {
        out.Write(data.data() + at, 1000);
      } else {
        uint8_t* room = out.WriteRoom(1000);
        ASSERT_NE(room, nullptr);
        std::memcpy(room, data.data() + at, 1000);
        out.Wrote(1000);
      }
    }
    ASSERT_TRUE(out.Close());
    FileStream in;
    ASSERT_TRUE(in.Open(path, StreamMode::kRead, true, 4096));
    std::string back(data.size(), '\0');
    ASSERT_TRUE(in.Read(back.data(), back.size()));
    EXPECT_EQ(back, data);
    EXPECT_EQ(in.compressed(), gz);
    EXPECT_TRUE(in.AtEnd());
    // Reading past the end is an error that stays.
    char extra;
    EXPECT_FALSE(in.Read(&extra, 1));
    EXPECT_EQ(in.error(), err::kFileRead);
    EXPECT_EQ(in.Next(), -1);
  }
  // Room for more than the buffer holds is refused, not handed out short.
  FileStream out;
  ASSERT_TRUE(out.Open(Path("small.bin"), StreamMode::kWrite, false, 4096));
  EXPECT_EQ(out.WriteRoom(4097), nullptr);
  EXPECT_EQ(out.error(), err::kFileWrite);
}

TEST_F(FileStreamTest, LookAheadAndTheMarkSurviveARefill) {
  // Gzipped in 12-byte members, the mark's bytes lie in a member the gzip layer lent to the
  // stream, and must outlive its return.
  std::string text = std::string(46, 'x') + "<?xml and more";
  for (bool gz : {false, true}) {
    SCOPED_TRACE(gz ? "gzipped" : "plain");
    FileStream out;
    ASSERT_TRUE(out.Open(Path("text.xml"), StreamMode::kWrite, gz, 12));
    ASSERT_TRUE(out.Write(text.data(), text.size()));
    ASSERT_TRUE(out.Close());
    FileStream in;
    ASSERT_TRUE(in.Open(Path("text.xml"), StreamMode::kRead, true, 12));
    ASSERT_TRUE(in.Skip(46));
    EXPECT_TRUE(in.Matches("<?xml", 5));  // crosses the 12-byte buffer's end
    EXPECT_EQ(in.Peek(), '<');
    in.Mark();
    EXPECT_EQ(in.Next(), '<');
    EXPECT_EQ(in.Next(), '?');
    in.ReturnToMark();
    EXPECT_EQ(in.Next(), '<');
    EXPECT_FALSE(in.Matches("?xmlx", 5));
    EXPECT_EQ(in.Next(), '?');
    std::string rest(12, '\0');
    ASSERT_TRUE(in.Read(rest.data(), rest.size()));
    EXPECT_EQ(rest, "xml and more");
    EXPECT_TRUE(in.AtEnd());
    EXPECT_TRUE(in.ok());
  }
}

TEST_F(FileStreamTest, ReopenTruncatesForASaveOntoTheOpenFile) {
  FileStream f;
  ASSERT_TRUE(f.Open(Path("doc.kpx"), StreamMode::kWrite, false));
  f.Write("first version, long", 19);
  ASSERT_TRUE(f.Reopen(StreamMode::kWrite, true));
  f.Write("second", 6);
  ASSERT_TRUE(f.Reopen(StreamMode::kRead, true));
  char buf[16] = {};
  EXPECT_EQ(f.ReadSome(buf, sizeof buf), 6u);
  EXPECT_STREQ(buf, "second");
  EXPECT_TRUE(f.compressed());
  EXPECT_TRUE(f.Close());
}

// Turns every byte around, so that a block that went through it shows.
class Invert : public StreamCipher {
 public:
  bool Transform(uint8_t* data, size_t size) override {
    for (size_t i = 0; i < size; ++i) data[i] = static_cast<uint8_t>(~data[i]);
    calls++;
    return !fail;
  }
  int calls = 0;
  bool fail = false;
};

TEST_F(FileStreamTest, BlocksGoThroughTheCipherInPieces) {
  std::string data(5000, 'k');
  Invert cipher;
  FileStream out;
  ASSERT_TRUE(out.Open(Path("c.bin"), StreamMode::kWrite, false));
  ASSERT_TRUE(out.WriteBlock(reinterpret_cast<const uint8_t*>(data.data()), data.size(), &cipher));
  EXPECT_EQ(cipher.calls, 3);               // 2048 + 2048 + 904
  EXPECT_EQ(data, std::string(5000, 'k'));  // the caller's bytes stay as they were
  ASSERT_TRUE(out.Close());
  FileStream in;
  ASSERT_TRUE(in.Open(Path("c.bin"), StreamMode::kRead, false));
  std::string raw(5000, '\0');
  ASSERT_TRUE(in.Read(raw.data(), raw.size()));
  EXPECT_NE(raw, data);
  ASSERT_TRUE(in.Rewind());
  std::string back(5000, '\0');
  ASSERT_TRUE(in.ReadBlock(reinterpret_cast<uint8_t*>(back.data()), back.size(), &cipher));
  EXPECT_EQ(back, data);
  cipher.fail = true;
  ASSERT_TRUE(in.Rewind());
  EXPECT_FALSE(in.ReadBlock(reinterpret_cast<uint8_t*>(back.data()), 10, &cipher));
  EXPECT_EQ(in.error(), err::kDecrypt);
}

TEST_F(FileStreamTest, OpenFailuresHaveTheirCodes) {
  FileStream f;
  EXPECT_FALSE(f.Open(Path("no/such/dir/x.kpx"), StreamMode::kWrite, false));
  EXPECT_EQ(f.error(), err::kFileOpenWrite);
  EXPECT_FALSE(f.Write("x", 1));
  EXPECT_FALSE(f.Open(Path("nothing.kpx"), StreamMode::kRead, false));
  EXPECT_EQ(f.error(), err::kFileOpenRead);
}

}  // namespace
}  // namespace kelpdex
