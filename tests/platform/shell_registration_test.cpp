#include "platform/shell_registration.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "platform/os.h"
#include "support/temp_dir.h"

namespace kelpdex::platform {
namespace {

using kelpdex::testing::ScopedEnv;
using kelpdex::testing::TempDir;

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

}  // namespace
}  // namespace kelpdex::platform
