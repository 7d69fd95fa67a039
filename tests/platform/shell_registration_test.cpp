#include "platform/shell_registration.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#endif

#include <sstream>
#include <string>

#include "platform/os.h"
#include "support/temp_dir.h"

namespace kelpdex::platform {
namespace {

using kelpdex::testing::ScopedEnv;
using kelpdex::testing::TempDir;

#ifdef _WIN32
// The registry script under HKCU\Software\Classes; Wine's registry stands in for the real one.
std::string ClassValue(const std::string& key, const char* name = nullptr) {
  char value[512] = {};
  DWORD size = sizeof value;
  if (RegGetValueA(HKEY_CURRENT_USER, ("Software\\Classes\\" + key).c_str(), name, RRF_RT_REG_SZ,
                   nullptr, value, &size) != ERROR_SUCCESS) {
    return "<missing>";
  }
  return value;
}

TEST(ShellRegistration, WritesAndRemovesTheRegistryScript) {
  TempDir dir;
  std::string exe = dir.Write("Program Files\\kelpdex.exe", "");
  ASSERT_TRUE(RegisterShellIntegration(exe));
  EXPECT_EQ(ClassValue(".kpx"), "kpxfile");
  EXPECT_EQ(ClassValue("kpxfile"), "Kelpdex File");
  EXPECT_EQ(ClassValue("kpxfile\\shell"), "open");
  EXPECT_EQ(ClassValue("kpxfile\\shell\\open"), "Open with Kelpdex");
  EXPECT_EQ(ClassValue("Applications\\kelpdex.exe", "FriendlyAppName"), "Kelpdex");
  EXPECT_EQ(ClassValue(".kpx\\kpxfile\\ShellNew", "NullFile"), "");
  // The command names the program by a path with no space to quote, and the file by %1.
  std::string command = ClassValue("kpxfile\\shell\\open\\command");
  ASSERT_GE(command.size(), 3u);
  EXPECT_EQ(command.substr(command.size() - 3), " %1");
  std::string program = command.substr(0, command.size() - 3);
  EXPECT_EQ(program.find(' '), std::string::npos) << program;
  EXPECT_TRUE(SameFile(program, exe)) << program;
  EXPECT_EQ(ClassValue("kpxfile\\DefaultIcon"), program + ",-129");

  EXPECT_TRUE(UnregisterShellIntegration());
  EXPECT_EQ(ClassValue(".kpx"), "<missing>");
  EXPECT_EQ(ClassValue("kpxfile"), "<missing>");
  EXPECT_TRUE(UnregisterShellIntegration());  // nothing left to remove is no failure
}

TEST(ShellRegistration, AnExtensionTakenOverByAnotherProgramIsLeftAlone) {
  TempDir dir;
  ASSERT_TRUE(RegisterShellIntegration(dir.Write("kelpdex.exe", "")));
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\Classes\\.kpx", 0, nullptr, 0,
                            KEY_SET_VALUE, nullptr, &key, nullptr),
            ERROR_SUCCESS);
  const char other[] = "OtherApp.File";
  RegSetValueExA(key, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(other), sizeof other);
  RegCloseKey(key);
  EXPECT_TRUE(UnregisterShellIntegration());
  EXPECT_EQ(ClassValue(".kpx"), "OtherApp.File");
  EXPECT_EQ(ClassValue("kpxfile"), "<missing>");
  RegDeleteTreeA(HKEY_CURRENT_USER, "Software\\Classes\\.kpx");
}

#else
bool HasLine(const std::string& text, const std::string& line) {
  std::istringstream in(text);
  std::string each;
  while (std::getline(in, each)) {
    if (each == line) return true;
  }
  return false;
}

TEST(ShellRegistration, WritesDesktopEntryAndMimePackage) {
  TempDir dir;
  ScopedEnv data("XDG_DATA_HOME", dir.path().c_str());
  ASSERT_TRUE(RegisterShellIntegration("/opt/My Apps/kelpdex"));

  std::string desktop;
  ASSERT_TRUE(ReadWholeFile(dir.Path("applications/kelpdex.desktop"), desktop));
  EXPECT_EQ(desktop.rfind("[Desktop Entry]\n", 0), 0u);
  EXPECT_TRUE(HasLine(desktop, "Type=Application"));
  EXPECT_TRUE(HasLine(desktop, "Exec=\"/opt/My Apps/kelpdex\" %f"));
  EXPECT_TRUE(HasLine(desktop, "MimeType=application/x-kelpdex;"));
  EXPECT_TRUE(HasLine(desktop, "Categories=Office;Database;"));

  std::string mime;
  ASSERT_TRUE(ReadWholeFile(dir.Path("mime/packages/kelpdex.xml"), mime));
  EXPECT_NE(mime.find("<mime-type type=\"application/x-kelpdex\">"), std::string::npos);
  EXPECT_NE(mime.find("<glob pattern=\"*.kpx\"/>"), std::string::npos);
  EXPECT_NE(mime.find("<comment>Kelpdex File</comment>"), std::string::npos);

  // Registering again, as after the program moved, replaces the entry.
  ASSERT_TRUE(RegisterShellIntegration("/usr/bin/kelpdex"));
  ASSERT_TRUE(ReadWholeFile(dir.Path("applications/kelpdex.desktop"), desktop));
  EXPECT_TRUE(HasLine(desktop, "Exec=\"/usr/bin/kelpdex\" %f"));

  EXPECT_TRUE(UnregisterShellIntegration());
  EXPECT_FALSE(FileExists(dir.Path("applications/kelpdex.desktop")));
  EXPECT_FALSE(FileExists(dir.Path("mime/packages/kelpdex.xml")));
  EXPECT_TRUE(UnregisterShellIntegration());
}

TEST(ShellRegistration, EscapesTheExecutablePath) {
  TempDir dir;
  ScopedEnv data("XDG_DATA_HOME", dir.path().c_str());
  ASSERT_TRUE(RegisterShellIntegration("/home/ann/a$b\\c%d\"e"));
  std::string desktop;
  ASSERT_TRUE(ReadWholeFile(dir.Path("applications/kelpdex.desktop"), desktop));
  EXPECT_TRUE(HasLine(desktop, "Exec=\"/home/ann/a\\\\$b\\\\\\\\c%%d\\\\\"e\" %f")) << desktop;
}

TEST(ShellRegistration, FailureLeavesTheSystemError) {
  TempDir dir;
  std::string blocker = dir.Write("blocker", "");
  ScopedEnv data("XDG_DATA_HOME", blocker.c_str());
  SetLastSystemError(0);
  EXPECT_FALSE(RegisterShellIntegration("/usr/bin/kelpdex"));
  EXPECT_NE(LastSystemError(), 0);
  EXPECT_TRUE(UnregisterShellIntegration());
}

#endif

}  // namespace
}  // namespace kelpdex::platform
