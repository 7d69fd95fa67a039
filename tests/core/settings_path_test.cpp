#include <set>
#include <string>

#include <gtest/gtest.h>

#include "core/settings_path.h"
#include "platform/os.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

[[maybe_unused]] SettingsPathFacts Facts(const std::string& exe, std::set<std::string> existing) {
  SettingsPathFacts facts;
  facts.userSettingsFolder = "/home/ann/.config/Kelpdex";
  facts.executablePath = exe;
  facts.systemPrefixes = {"/usr/", "/opt/"};
  facts.fileExists = [existing](const std::string& p) { return existing.count(p) != 0; };
  return facts;
}

const std::string kPerUser = "/home/ann/.config/Kelpdex/settings.xml";

TEST(DecideSettingsPath, InstalledProgramWithoutAnyFileUsesThePerUserFile) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX path text";
#else
  EXPECT_EQ(DecideSettingsPath(Facts("/usr/bin/kelpdex", {})), kPerUser);
  EXPECT_EQ(DecideSettingsPath(Facts("/opt/kelpdex/bin/kelpdex", {})), kPerUser);
#endif
}

TEST(DecideSettingsPath, PortableProgramKeepsItsSettingsBesideItself) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX path text";
#else
  EXPECT_EQ(DecideSettingsPath(Facts("/media/usb/Kelpdex/kelpdex", {})),
            "/media/usb/Kelpdex/settings.xml");
  // A folder that merely begins like a system prefix is not under it.
  EXPECT_EQ(DecideSettingsPath(Facts("/usrlocal/kelpdex", {})), "/usrlocal/settings.xml");
#endif
}

TEST(DecideSettingsPath, AnExistingFileWinsInOrder) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX path text";
#else
  EXPECT_EQ(DecideSettingsPath(Facts("/usr/bin/kelpdex", {"/usr/bin/settings.xml"})),
            "/usr/bin/settings.xml");
  EXPECT_EQ(DecideSettingsPath(Facts("/media/usb/kelpdex", {kPerUser, "/media/usb/settings.xml"})),
            kPerUser);
#endif
}

TEST(DecideSettingsPath, PrefixComparisonIgnoresCase) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX path text";
#else
  EXPECT_EQ(DecideSettingsPath(Facts("/USR/bin/kelpdex", {})), kPerUser);
  EXPECT_EQ(DecideSettingsPath(Facts("/Opt/Kelpdex/kelpdex", {})), kPerUser);
#endif
}

TEST(DecideSettingsPath, UnknownExecutableFallsBackToThePerUserFile) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX path text";
#else
  EXPECT_EQ(DecideSettingsPath(Facts("", {})), kPerUser);
#endif
}

TEST(WriteSettingsAtExit, CreatesTheMissingFolderFirst) {
  testing::TempDir dir;
  std::string path = dir.Path("config/Kelpdex/settings.xml");
  bool wrote = WriteSettingsAtExit(
      path, [](const std::string& p) { return platform::WriteWholeFile(p, "<Settings/>"); });
  EXPECT_TRUE(wrote);
  EXPECT_TRUE(platform::FileExists(path));
}

TEST(WriteSettingsAtExit, AFolderThatCannotBeMadeIsSilentlySkipped) {
  testing::TempDir dir;
  dir.Write("blocker", "a file where a folder should be");
  bool called = false;
  bool wrote = WriteSettingsAtExit(dir.Path("blocker/Kelpdex/settings.xml"),
                                   [&](const std::string&) { return called = true; });
  EXPECT_FALSE(wrote);
  EXPECT_FALSE(called);
}

}  // namespace
}  // namespace kelpdex
