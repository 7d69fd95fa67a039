#include <gtest/gtest.h>

#include "core/command_line.h"

namespace kelpdex {
namespace {

constexpr bool kWindowsRules = false;
constexpr bool kPosixRules = true;

TEST(ScanCommandLine, SwitchesInAnyCaseBehindEitherMark) {
  for (bool posix : {kWindowsRules, kPosixRules}) {
    EXPECT_EQ(ScanCommandLine("/unregserver", posix), CommandSwitch::kUnregServer);
    EXPECT_EQ(ScanCommandLine("-REGSERVER", posix), CommandSwitch::kRegServer);
    EXPECT_EQ(ScanCommandLine("-Uninstall", posix), CommandSwitch::kUninstall);
    EXPECT_EQ(ScanCommandLine("-Embedding", posix), CommandSwitch::kEmbedding);
    EXPECT_EQ(ScanCommandLine("-Automation", posix), CommandSwitch::kAutomation);
  }
}

TEST(ScanCommandLine, WordMustBeTheWholeRestOfTheLine) {
  EXPECT_EQ(ScanCommandLine("my-file.kpx"), CommandSwitch::kNone);
  EXPECT_EQ(ScanCommandLine("-Automation file.kpx"), CommandSwitch::kNone);
  EXPECT_EQ(ScanCommandLine("-Automation "), CommandSwitch::kNone);
  EXPECT_EQ(ScanCommandLine("-Auto"), CommandSwitch::kNone);
  EXPECT_EQ(ScanCommandLine(""), CommandSwitch::kNone);
  EXPECT_EQ(ScanCommandLine("-"), CommandSwitch::kNone);
}

TEST(ScanCommandLine, RetriesAtEachLaterMark) {
  // The first hyphen leads to no switch; the scan goes on to the next mark.
  EXPECT_EQ(ScanCommandLine("my-docs -Embedding"), CommandSwitch::kEmbedding);
  EXPECT_EQ(ScanCommandLine("x-y-z--RegServer"), CommandSwitch::kRegServer);
  EXPECT_EQ(ScanCommandLine("C:\\my-apps\\kelpdex.exe /Automation", kWindowsRules),
            CommandSwitch::kAutomation);
}

TEST(ScanCommandLine, SlashInsideAPosixPathIsNoSwitch) {
  EXPECT_EQ(ScanCommandLine("/home/me/Automation", kPosixRules), CommandSwitch::kNone);
  EXPECT_EQ(ScanCommandLine("/home/me/Automation", kWindowsRules), CommandSwitch::kAutomation);
  EXPECT_EQ(ScanCommandLine("/tmp/a.kpx /Embedding", kPosixRules), CommandSwitch::kEmbedding);
  // A hyphen keeps its meaning anywhere.
  EXPECT_EQ(ScanCommandLine("/home/me/x-RegServer", kPosixRules), CommandSwitch::kRegServer);
}

TEST(CommandLine, ArgumentsJoinIntoOnePath) {
  const char* argv[] = {"kelpdex", "my", "file.kpx"};
  EXPECT_EQ(JoinArguments(3, argv), "my file.kpx");
  EXPECT_EQ(JoinArguments(1, argv), "");
  EXPECT_EQ(PathFromCommandLine("   \"C:\\a b.kpx\""), "\"C:\\a b.kpx\"");
  EXPECT_EQ(PathFromCommandLine("  "), "");
}

}  // namespace
}  // namespace kelpdex
