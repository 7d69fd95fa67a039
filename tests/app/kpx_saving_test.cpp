// What kpx's changing commands do to the file they save over, and the limits and unbuilt
// functions as a user meets them on the command line.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "run_kpx.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace kelpdex::kpx {
namespace {

class KpxSaving : public ::testing::Test {
 protected:
  Result Kpx(const std::vector<std::string>& words) { return RunKpxStrings(words); }
  std::string Stock() {
    std::string path = dir.Path("stock.kpx");
    EXPECT_EQ(Kpx({"new", path, "--table", "Stock", "--field", "Name:Text"}).status, 0);
    return path;
  }
  Result Set(const std::string& path, const std::string& value) {
    return Kpx({"set", path, "--table", "Stock", "--record", "1", "--field", "Name", value});
  }
  testing::TempDir dir;
};

mode_t ModeOf(const std::string& path) {
  struct stat st {};
  return ::stat(path.c_str(), &st) == 0 ? st.st_mode & 07777 : 0;
}

TEST_F(KpxSaving, ASaveThroughALinkKeepsTheLinkAndTheDocumentsMode) {
  std::string real = Stock();
  ASSERT_EQ(::chmod(real.c_str(), 0640), 0);
  std::string link = dir.Path("link.kpx");
  ASSERT_EQ(::symlink("stock.kpx", link.c_str()), 0);
  Result set = Set(link, "anchor");
  ASSERT_EQ(set.status, 0) << set.err;
  struct stat st {};
  ASSERT_EQ(::lstat(link.c_str(), &st), 0);
  EXPECT_TRUE(S_ISLNK(st.st_mode));
  EXPECT_EQ(ModeOf(real), mode_t{0640});
  EXPECT_EQ(Kpx({"dump", real}).out, "anchor\n");
}

TEST_F(KpxSaving, AReadOnlyDocumentIsRefusedAndStaysAsItWas) {
  if (::geteuid() == 0) GTEST_SKIP() << "root may write to any file; run as a plain user";
  std::string path = Stock();
  ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
  std::string before = testing::ReadFileBytes(path);
  Result set = Set(path, "anchor");
  EXPECT_EQ(set.status, 1);
  EXPECT_EQ(set.err, "kpx: Can't create or open the specified file for writing\n");
  EXPECT_EQ(testing::ReadFileBytes(path), before);
  EXPECT_EQ(ModeOf(path), mode_t{0444});
}

TEST_F(KpxSaving, LimitsAndReservedNamesAreRefusedWithAReason) {
  std::string path = Stock();
  std::string before = testing::ReadFileBytes(path);
  Result system = Kpx({"add-table", path, "SYSTEM"});
  EXPECT_EQ(system.status, 1);
  EXPECT_EQ(system.err,
            "kpx: \"system\" is the name of the folder that holds the definitions of all tables. "
            "Please choose another name.\n");
  EXPECT_EQ(Kpx({"rename-table", path, "--table", "Stock", "system"}).status, 1);
  Result name =
      Kpx({"add-field", path, "--table", "Stock", "--field", std::string(1025, 'N') + ":Text"});
  EXPECT_EQ(name.status, 1);
  EXPECT_EQ(name.err, "kpx: Please enter no more than 1024 characters.\n");
  // A formula longer than a catalogue cell can hold is refused the same way, not out of memory.
  Result formula = Kpx(
      {"add-field", path, "--table", "Stock", "--field", "Sum:Number==1" + std::string(9000, '1')});
  EXPECT_EQ(formula.status, 1);
  EXPECT_EQ(formula.err, "kpx: Please enter no more than 1022 characters.\n");
  EXPECT_EQ(testing::ReadFileBytes(path), before);
}

TEST_F(KpxSaving, FunctionsOfFamiliesNotBuiltYetAnswerNotImplemented) {
  std::string path = Stock();
  ASSERT_EQ(Set(path, "anchor").status, 0);
  EXPECT_EQ(Kpx({"eval", "=yield(0.1, 1)"}).out, "#IMPL!\n");
  EXPECT_EQ(Kpx({"eval", "=vdb(0.1, 2, 3)"}).out, "#IMPL!\n");
  EXPECT_EQ(Kpx({"eval", "--doc", path, "--record", "1", "=besselI(Name)"}).out, "#IMPL!\n");
  // A calculated field that calls one stores the error, not a broken formula.
  ASSERT_EQ(
      Kpx({"add-field", path, "--table", "Stock", "--field", "Size:Number==accrInt(Name)"}).status,
      0);
  ASSERT_EQ(Kpx({"recalc", path}).status, 0);
  EXPECT_EQ(Kpx({"dump", path}).out, "anchor\t#IMPL!\n");
}

}  // namespace
}  // namespace kelpdex::kpx
