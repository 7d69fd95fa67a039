#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/os.h"
#include "run_kpx.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace kelpdex::kpx {
namespace {

class KpxSideValues : public ::testing::Test {
 protected:
  Result Kpx(const std::vector<std::string>& words) { return RunKpxStrings(words); }
  std::vector<std::string> Cell(const char* command, const char* record, const char* field) {
    return {command, path, "--table", "T", "--record", record, "--field", field};
  }
  void SetUp() override {
    ASSERT_EQ(Kpx({"new", path, "--table", "T", "--field", "Name:Text", "--field", "Notes:LongText",
                   "--field", "Files:Files"})
                  .status,
              0);
    ASSERT_EQ(Kpx({"set", path, "--table", "T", "--record", "1", "--field", "Name", "a"}).status,
              0);
  }
  testing::TempDir dir;
  std::string path = dir.Path("d.kpx");
};

TEST_F(KpxSideValues, TextsAndFilesGoThroughTheSideFileAndShowInDump) {
  auto put = Cell("put-text", "1", "Notes");
  put.insert(put.end(), {"--text", "caf\xC3\xA9 au lait\nsecond line"});
  ASSERT_EQ(Kpx(put).status, 0);
  std::string rtf =
      dir.Write("n.rtf", "{\\rtf1\\ansi{\\fonttbl\\f0 Arial;}\\b Bold\\b0  text\\par more}");
  auto put2 = Cell("put-text", "2", "Notes");
  put2.insert(put2.end(), {"--from", rtf});
  ASSERT_EQ(Kpx(put2).status, 0);
  auto attach = Cell("attach", "1", "Files");
  attach.push_back(dir.Write("x.bin", std::string("\0\1\2", 3)));
  attach.push_back(dir.Write("y.txt", "why"));
  ASSERT_EQ(Kpx(attach).status, 0);

  Result got = Kpx(Cell("get-text", "1", "Notes"));
  EXPECT_EQ(got.out, "caf\xC3\xA9 au lait\nsecond line");
  // The grid's view: the first line of the plain text, and the file names.
  Result dump = Kpx({"dump", path});
  EXPECT_EQ(dump.out, "a\tcaf\xC3\xA9 au lait\tx.bin; y.txt\n\tBold text\t\n") << dump.err;
  EXPECT_NE(Kpx({"dump", path, "--json"}).out.find("\"Notes\": \"Bold text\""), std::string::npos);

  auto list = Cell("objects", "1", "Files");
  list.insert(list.end(), {"--extract", dir.Path("out")});
  Result objects = Kpx(list);
  ASSERT_EQ(objects.status, 0) << objects.err;
  EXPECT_EQ(objects.out.substr(0, 8), "x.bin\t3\t");
  EXPECT_NE(objects.out.find("\ny.txt\t3\t"), std::string::npos);
  EXPECT_EQ(testing::ReadFileBytes(dir.Path("out/x.bin")), std::string("\0\1\2", 3));

  // A replaced text leaves a dead record, which compaction removes.
  auto again = Cell("put-text", "1", "Notes");
  again.insert(again.end(), {"--text", "short"});
  ASSERT_EQ(Kpx(again).status, 0);
  uint64_t before = 0, after = 0;
  ASSERT_TRUE(platform::GetFileSize(dir.Path("d.tx2"), before));
  Result compact = Kpx({"compact", path});
  EXPECT_EQ(compact.status, 0);
  EXPECT_NE(compact.err.find("The database was successfully compacted."), std::string::npos);
  ASSERT_TRUE(platform::GetFileSize(dir.Path("d.tx2"), after));
  EXPECT_LT(after, before);
  EXPECT_EQ(Kpx(Cell("get-text", "1", "Notes")).out, "short");
  EXPECT_NE(Kpx({"compact", path}).err.find("doesn't require compacting"), std::string::npos);
}

TEST_F(KpxSideValues, BrokenOrMissingSideFilesFailWithTheirMessage) {
  auto put = Cell("put-text", "1", "Notes");
  put.insert(put.end(), {"--text", "value"});
  ASSERT_EQ(Kpx(put).status, 0);
  const std::string document = testing::ReadFileBytes(path);
  std::string side = testing::ReadFileBytes(dir.Path("d.tx2"));
  side[20] = '!';
  testing::WriteFileBytes(dir.Path("d.tx2"), side);
  Result bad = Kpx(Cell("get-text", "1", "Notes"));
  EXPECT_EQ(bad.status, 1);
  EXPECT_EQ(bad.err, "kpx: Error while reading binary fields: the file might be corrupted.\n");
  EXPECT_EQ(Kpx({"dump", path}).status, 1);

  platform::DeleteFile(dir.Path("d.tx2"));
  Result missing = Kpx(Cell("get-text", "1", "Notes"));
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "kpx: Can't open the specified file for reading\n");
  EXPECT_EQ(testing::ReadFileBytes(path), document);
  EXPECT_FALSE(platform::FileExists(dir.Path("d.tx2")));
  // A field of the other kind is refused before anything is read.
  EXPECT_EQ(Kpx(Cell("get-text", "1", "Files")).status, 1);
}

}  // namespace
}  // namespace kelpdex::kpx
