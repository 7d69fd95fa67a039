#include "platform/os.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#undef CopyFile
#undef DeleteFile
#endif

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "support/temp_dir.h"

namespace kelpdex::platform {
namespace {

using kelpdex::testing::ScopedEnv;
using kelpdex::testing::TempDir;

// The system's own codes for the errors the tests provoke.
#ifdef _WIN32
constexpr int kNotFound = ERROR_FILE_NOT_FOUND;
constexpr int kExists = ERROR_FILE_EXISTS;
constexpr const char* kNotFoundText = "not found";  // Wine and Windows word it differently
constexpr const char* kExeSuffix = ".exe";
#else
constexpr int kNotFound = ENOENT;
constexpr int kExists = EEXIST;
constexpr const char* kNotFoundText = "No such file";
constexpr const char* kExeSuffix = "";
#endif

int EntriesIn(const std::string& folder) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    (void)entry;
    ++count;
  }
  return count;
}

TEST(PathText, SplitsAndJoins) {
#ifdef _WIN32
  // Either separator splits; a drive's root keeps its separator.
  EXPECT_EQ(FolderOf("C:\\Users\\ann\\data.kpx"), "C:\\Users\\ann");
  EXPECT_EQ(FolderOf("C:/Users/ann/data.kpx"), "C:/Users/ann");
  EXPECT_EQ(FolderOf("C:\\data.kpx"), "C:\\");
  EXPECT_EQ(FolderOf("\\data.kpx"), "\\");
  EXPECT_EQ(FileNameOf("C:\\Users\\ann/data.kpx"), "data.kpx");
  EXPECT_EQ(JoinPath("C:\\Users\\ann", "a.kpx"), "C:\\Users\\ann\\a.kpx");
  EXPECT_EQ(JoinPath("C:\\Users\\ann/", "a.kpx"), "C:\\Users\\ann/a.kpx");
  EXPECT_EQ(JoinPath("C:", "a.kpx"), "C:a.kpx");  // the current folder of drive C
#else
  EXPECT_EQ(FolderOf("/home/ann/data.kpx"), "/home/ann");
  EXPECT_EQ(FolderOf("/data.kpx"), "/");
  EXPECT_EQ(FileNameOf("/home/ann/data.kpx"), "data.kpx");
  EXPECT_EQ(FileNameOf("/home/ann/"), "");
  EXPECT_EQ(JoinPath("/home/ann", "a.kpx"), "/home/ann/a.kpx");
  EXPECT_EQ(JoinPath("/home/ann/", "a.kpx"), "/home/ann/a.kpx");
#endif
  EXPECT_EQ(FolderOf("data.kpx"), "");
  EXPECT_EQ(FileNameOf("data.kpx"), "data.kpx");
  EXPECT_EQ(JoinPath("", "a.kpx"), "a.kpx");
}

#ifdef _WIN32
TEST(UserFolders, WindowsFolders) {
  // The settings live under the local, not the roaming, application data.
  const char* local = std::getenv("LOCALAPPDATA");
  ASSERT_NE(local, nullptr);
  EXPECT_EQ(UserSettingsFolder(), std::string(local) + "\\Kelpdex");
  // GetTempPathA follows TMP; the trailing separators go, but a drive's root keeps its own.
  {
    ScopedEnv tmp("TMP", "C:\\Temp\\Kelpdex\\");
    EXPECT_EQ(TempFolder(), "C:\\Temp\\Kelpdex");
  }
  ScopedEnv tmp("TMP", "C:\\");
  EXPECT_EQ(TempFolder(), "C:\\");
}
#endif

TEST(UserFolders, FollowXdgVariablesOnlyWhenAbsolute) {
#ifdef _WIN32
  GTEST_SKIP() << "XDG folders are POSIX";
#else
  ScopedEnv home("HOME", "/home/ann");
  {
    ScopedEnv config("XDG_CONFIG_HOME", "/srv/config");
    ScopedEnv data("XDG_DATA_HOME", "/srv/data");
    EXPECT_EQ(UserSettingsFolder(), "/srv/config/Kelpdex");
    EXPECT_EQ(UserDataFolder(), "/srv/data");
  }
  ScopedEnv config("XDG_CONFIG_HOME", "relative/config");
  ScopedEnv data("XDG_DATA_HOME", nullptr);
  EXPECT_EQ(UserSettingsFolder(), "/home/ann/.config/Kelpdex");
  EXPECT_EQ(UserDataFolder(), "/home/ann/.local/share");
#endif
}

TEST(UserFolders, TempFolderHasNoTrailingSeparator) {
#ifdef _WIN32
  GTEST_SKIP() << "TMPDIR is POSIX; see WindowsFolders";
#else
  {
    ScopedEnv tmp("TMPDIR", "/var/tmp//");
    EXPECT_EQ(TempFolder(), "/var/tmp");
  }
  ScopedEnv tmp("TMPDIR", nullptr);
  EXPECT_EQ(TempFolder(), "/tmp");
#endif
}

TEST(ProcessFacts, DescribeThisProcess) {
  std::string exe = ExecutablePath();
  EXPECT_EQ(FileNameOf(exe), std::string("test_platform") + kExeSuffix);
  EXPECT_TRUE(FileExists(exe));
  {
    ScopedEnv user("USER", "ann");
    EXPECT_FALSE(UserName().empty());
  }
  std::time_t before = std::time(nullptr);
  LocalTime now = GetLocalTime();
  std::time_t after = std::time(nullptr);
  std::tm parts{};
#ifdef _WIN32
  auto localtime_r = [](const std::time_t* t, std::tm* out) { localtime_s(out, t); };
#endif
  localtime_r(&before, &parts);
  if (parts.tm_min != now.minute) localtime_r(&after, &parts);  // the minute turned meanwhile
  EXPECT_EQ(now.year, parts.tm_year + 1900);
  EXPECT_EQ(now.month, parts.tm_mon + 1);
  EXPECT_EQ(now.day, parts.tm_mday);
  EXPECT_EQ(now.dayOfWeek, parts.tm_wday);
  EXPECT_EQ(now.hour, parts.tm_hour);
  EXPECT_LT(now.milliseconds, 1000);
}

TEST(SystemErrors, RoundTripAndHaveText) {
  SetLastSystemError(kNotFound);
  EXPECT_EQ(LastSystemError(), kNotFound);
  EXPECT_NE(SystemErrorText(kNotFound).find(kNotFoundText), std::string::npos)
      << SystemErrorText(kNotFound);
  EXPECT_FALSE(SystemErrorText(123456).empty());
}

TEST(Files, ExistenceAndSize) {
  TempDir dir;
  std::string file = dir.Write("a.kpx", std::string(1000, 'x'));
  uint64_t size = 0;
  EXPECT_TRUE(GetFileSize(file, size));
  EXPECT_EQ(size, 1000u);
  EXPECT_TRUE(FileExists(file));
  EXPECT_FALSE(FolderExists(file));
  EXPECT_TRUE(FolderExists(dir.path()));
  EXPECT_FALSE(FileExists(dir.path()));
  EXPECT_FALSE(GetFileSize(dir.Path("missing"), size));
  EXPECT_EQ(LastSystemError(), kNotFound);

  EXPECT_TRUE(DeleteFile(file));
  EXPECT_FALSE(FileExists(file));
  EXPECT_FALSE(DeleteFile(file));
  EXPECT_EQ(LastSystemError(), kNotFound);
}

TEST(Files, CopyHonoursFailIfExists) {
  TempDir dir;
  std::string from = dir.Write("from.kpx", std::string("new\0bytes", 9));
  std::string to = dir.Write("to.kpx", "old");
  std::string bytes;

  EXPECT_FALSE(CopyFile(from, to, true));
  EXPECT_EQ(LastSystemError(), kExists);
  ASSERT_TRUE(ReadWholeFile(to, bytes));
  EXPECT_EQ(bytes, "old");

  EXPECT_TRUE(CopyFile(from, to, false));
  ASSERT_TRUE(ReadWholeFile(to, bytes));
  EXPECT_EQ(bytes, std::string("new\0bytes", 9));

  std::string fresh = dir.Path("fresh.kpx");
  EXPECT_TRUE(CopyFile(from, fresh, true));
  ASSERT_TRUE(ReadWholeFile(fresh, bytes));
  EXPECT_EQ(bytes.size(), 9u);

  EXPECT_FALSE(CopyFile(dir.Path("missing"), dir.Path("other"), false));
  EXPECT_EQ(LastSystemError(), kNotFound);
  EXPECT_FALSE(CopyFile(dir.path(), dir.Path("other"), false));
  EXPECT_EQ(EntriesIn(dir.path()), 3);  // no temporary file left behind
}

TEST(Files, CreateFolderMakesParents) {
  TempDir dir;
  std::string deep = dir.Path("a/b/c");
  EXPECT_TRUE(CreateFolder(deep));
  EXPECT_TRUE(FolderExists(deep));
  EXPECT_TRUE(CreateFolder(deep));
  EXPECT_TRUE(CreateFolder(dir.Path("a/b/d/")));
  EXPECT_TRUE(FolderExists(dir.Path("a/b/d")));

  std::string blocker = dir.Write("blocker", "");
  EXPECT_FALSE(CreateFolder(JoinPath(blocker, "sub")));
  EXPECT_NE(LastSystemError(), 0);
}

TEST(Files, WriteWholeFileReplacesAndKeepsPermissions) {
  TempDir dir;
  std::string path = dir.Path("settings.xml");
  ASSERT_TRUE(WriteWholeFile(path, "a long first version"));
  std::filesystem::permissions(
      path, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  ASSERT_TRUE(WriteWholeFile(path, "short"));
  std::string bytes;
  ASSERT_TRUE(ReadWholeFile(path, bytes));
  EXPECT_EQ(bytes, "short");
#ifndef _WIN32  // Windows files have no mode bits to keep
  EXPECT_EQ(std::filesystem::status(path).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
#endif
  EXPECT_EQ(EntriesIn(dir.path()), 1);

  EXPECT_FALSE(WriteWholeFile(dir.Path("no/such/folder/x"), "x"));
#ifdef _WIN32
  EXPECT_EQ(LastSystemError(), ERROR_PATH_NOT_FOUND);
#else
  EXPECT_EQ(LastSystemError(), ENOENT);
#endif
  EXPECT_FALSE(ReadWholeFile(dir.Path("missing"), bytes));
  EXPECT_TRUE(bytes.empty());
}

#ifndef _WIN32
// How many of this process's descriptors still name a file that was deleted or replaced.
int DeletedFilesHeld() {
  int held = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code error;
    std::string target = std::filesystem::read_symlink(entry.path(), error).string();
    if (!error && target.ends_with(" (deleted)")) ++held;
  }
  return held;
}

// A large replaced file is let go of by a helper thread, so the count settles a little later.
bool HeldWithin(int count, int seconds) {
  for (int tries = 0; tries < seconds * 100; ++tries) {
    if (DeletedFilesHeld() == count) return true;
    struct timespec pause = {0, 10'000'000};
    nanosleep(&pause, nullptr);
  }
  return false;
}

TEST(Files, ReplacingALargeFileLetsGoOfTheOldOne) {
  TempDir dir;
  int baseline = DeletedFilesHeld();
  std::string big(9 << 20, 'o');
  std::string target = dir.Write("table.dbf", big);
  std::string replacement = dir.Write(".table.dbf.saving", "new");
  ASSERT_TRUE(ReplaceFile(replacement, target));
  std::string bytes;
  ASSERT_TRUE(ReadWholeFile(target, bytes));
  EXPECT_EQ(bytes, "new");
  EXPECT_FALSE(FileExists(replacement));
  EXPECT_TRUE(HeldWithin(baseline, 5));

  // A save under the in-use lock: the lock holds the old document until it is taken anew.
  ASSERT_TRUE(WriteWholeFile(target, big));
  FileLock lock;
  ASSERT_EQ(lock.Acquire(target), LockResult::kLocked);
  dir.Write(".table.dbf.saving", "newer");
  ASSERT_TRUE(ReplaceFile(replacement, target));
  EXPECT_TRUE(HeldWithin(baseline + 1, 5));
  ASSERT_EQ(lock.Acquire(target), LockResult::kLocked);
  EXPECT_TRUE(HeldWithin(baseline, 5));

  // A failed rename leaves the target as it was and says why.
  EXPECT_FALSE(ReplaceFile(dir.Path("missing"), target));
  EXPECT_EQ(LastSystemError(), kNotFound);
  ASSERT_TRUE(ReadWholeFile(target, bytes));
  EXPECT_EQ(bytes, "newer");
}
#endif

}  // namespace
}  // namespace kelpdex::platform
