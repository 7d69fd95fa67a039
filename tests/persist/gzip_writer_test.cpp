#include "persist/gzip_writer.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <zlib.h>

#include <string>

#include "persist/gzip_test_data.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

class GzipWriterTest : public ::testing::Test {
 protected:
  testing::TempDir dir;
};

// zlib's own reader, which knows nothing of the members' extra field.
std::string GzRead(const std::string& path) {
  gzFile gz = gzopen(path.c_str(), "rb");
  std::string back;
  char piece[4096];
  int n;
  while ((n = gzread(gz, piece, sizeof piece)) > 0) back.append(piece, static_cast<size_t>(n));
  EXPECT_EQ(n, 0);
  gzclose(gz);
  return back;
}

TEST_F(GzipWriterTest, ManyMembersOnTwoThreadsComeOutInOrderForAnyReader) {
  std::string data = testing::PatternBytes(600000);
  for (size_t buffer : {size_t{1000}, size_t{65536}, FileStream::kBufferSize}) {
    SCOPED_TRACE(buffer);
    std::string path = dir.Path("out.gz");
    ASSERT_TRUE(testing::WriteOwnGzip(path, data, buffer));
    EXPECT_EQ(GzRead(path), data);
    ErrorCode error;
    EXPECT_EQ(testing::ReadThroughStream(path, error), data);
    EXPECT_EQ(error, err::kNone);
  }
  // The fast level for packed records still compresses.
  FileStream out;
  std::string path = dir.Path("fast.gz");
  ASSERT_TRUE(out.Open(path, StreamMode::kWrite, true));
  out.SetGzipContent(DeflateFor::kRecords);
  ASSERT_TRUE(out.Write(data.data(), data.size()));
  ASSERT_TRUE(out.Close());
  EXPECT_EQ(GzRead(path), data);
  EXPECT_LT(testing::ReadFileBytes(path).size(), data.size() / 2);
}

TEST_F(GzipWriterTest, AFlushClosesTheBytesSoFarAndLaterWritesFollowThem) {
  std::string path = dir.Path("flushed.gz");
  FileStream out;
  ASSERT_TRUE(out.Open(path, StreamMode::kWrite, true, 4096));
  std::string first = testing::PatternBytes(10000), second = "and the rest";
  ASSERT_TRUE(out.Write(first.data(), first.size()));
  ASSERT_TRUE(out.Flush());
  // What a flush leaves on the disk is whole by itself.
  ErrorCode error;
  EXPECT_EQ(testing::ReadThroughStream(path, error), first);
  EXPECT_EQ(error, err::kNone);
  ASSERT_TRUE(out.Write(second.data(), second.size()));
  ASSERT_TRUE(out.Close());
  EXPECT_EQ(testing::ReadThroughStream(path, error), first + second);
  EXPECT_EQ(error, err::kNone);
  EXPECT_EQ(GzRead(path), first + second);
}

TEST_F(GzipWriterTest, AFailedWriteIsTheStreamsStickyError) {
  if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no writable /dev/full";
  FileStream out;
  ASSERT_TRUE(out.Open("/dev/full", StreamMode::kWrite, true, 4096));
  std::string data = testing::PatternBytes(100000);
  // Pieces go on being taken while earlier ones are still in flight; the failure shows by the
  // close at the latest, and every write after it is refused.
  for (size_t at = 0; at < data.size() && out.ok(); at += 1000) out.Write(data.data() + at, 1000);
  EXPECT_FALSE(out.Close());
  EXPECT_EQ(out.error(), err::kFileWrite);
  EXPECT_FALSE(out.Write("x", 1));
}

}  // namespace
}  // namespace kelpdex
