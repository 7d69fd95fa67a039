#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "run_kpx.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace kelpdex::kpx {
namespace {

class KpxProtect : public ::testing::Test {
 protected:
  Result Kpx(const std::vector<std::string>& words) { return RunKpxStrings(words); }
  std::string PasswordFile(const std::string& name, const std::string& content) {
    std::string path = dir.Path(name);
    testing::WriteFileBytes(path, content);
    return path;
  }
  // One record whose Double field is a formula over Qty.
  std::string Sample(const char* format) {
    std::string path = dir.Path("sample.kpx");
    EXPECT_EQ(Kpx({"new", path, "--table", "T", "--field", "Qty:Number", "--field",
                   "Double:Number==Qty*2", "--format", format})
                  .status,
              0);
    EXPECT_EQ(Kpx({"set", path, "--table", "T", "--record", "1", "--field", "Qty", "21"}).status,
              0);
    return path;
  }
  testing::TempDir dir;
};

TEST_F(KpxProtect, EveryCommandOpensAProtectedFileOnlyWithItsPasswordFile) {
  std::string path = Sample("xml.gz");
  std::string right = PasswordFile("right", "kelp \xC3\xA9t\xC3\xA9\r\nsecond line\n");
  std::string wrong = PasswordFile("wrong", "kelp ete\n");
  ASSERT_EQ(Kpx({"protect", path, "--password-file", right}).status, 0);
  // An XML document becomes binary to hold the password, and stays compressed.
  EXPECT_EQ(testing::ReadFileBytes(path).substr(0, 2), "\x1f\x8b");
  EXPECT_NE(Kpx({"info", path, "--password-file=" + right}).out.find("binary.gz"),
            std::string::npos);

  Result missing = Kpx({"dump", path});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "kpx: " + path + ": Invalid password\n");
  Result bad = Kpx({"dump", path, "--password-file", wrong});
  EXPECT_EQ(bad.status, 1);
  EXPECT_EQ(bad.err, "kpx: Invalid password\n");
  EXPECT_EQ(Kpx({"dump", path, "--password-file", dir.Path("nowhere")}).status, 1);

  // A change saves the document protected again, with the same password.
  ASSERT_EQ(Kpx({"set", path, "--table", "T", "--record", "1", "--field", "Qty", "5",
                 "--password-file", right})
                .status,
            0);
  EXPECT_EQ(Kpx({"dump", path, "--password-file", right}).out, "5\t10\n");
  EXPECT_EQ(Kpx({"dump", path}).status, 1);
  // The XML forms hold no password: a conversion to one is refused.
  Result xml =
      Kpx({"convert", path, dir.Path("open.kpx"), "--format", "xml", "--password-file", right});
  EXPECT_EQ(xml.status, 1);
  EXPECT_FALSE(xml.err.empty());

  ASSERT_EQ(Kpx({"unprotect", path, "--password-file", right}).status, 0);
  EXPECT_EQ(Kpx({"dump", path}).out, "5\t10\n");
}

TEST_F(KpxProtect, TheReadOnlyCopyAndThePasswordRulesComeFromTheDialog) {
  std::string path = Sample("binary");
  std::string before = testing::ReadFileBytes(path);
  Result shortOne = Kpx({"protect", path, "--password-file", PasswordFile("short", "five5")});
  EXPECT_EQ(shortOne.status, 1);
  EXPECT_EQ(shortOne.err, "kpx: Please enter at least 6 characters as a password.\n");
  EXPECT_EQ(testing::ReadFileBytes(path), before);
  EXPECT_EQ(Kpx({"protect", path}).status, 2);

  std::string pw = PasswordFile("pw", "sixsix");
  ASSERT_EQ(Kpx({"protect", path, "--password-file", pw, "--read-only-copy"}).status, 0);
  EXPECT_EQ(testing::ReadFileBytes(path).substr(0, 11), "32100000000");
  EXPECT_EQ(Kpx({"dump", path, "--password-file", pw}).out, "21\t42\n");
}

}  // namespace
}  // namespace kelpdex::kpx
