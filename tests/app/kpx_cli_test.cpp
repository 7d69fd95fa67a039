#include <sys/wait.h>

#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kpx/kpx_args.h"
#include "kpx/kpx_cli.h"
#include "run_kpx.h"

namespace kelpdex::kpx {
namespace {

TEST(Kpx, HelpAndVersionSucceedOnStandardOutput) {
  Result help = RunKpx({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.out.find("locale"), std::string::npos);
  EXPECT_TRUE(help.err.empty());
  Result version = RunKpx({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.out, std::string("kpx (Kelpdex) ") + KELPDEX_VERSION_STRING + "\n");
  EXPECT_EQ(RunKpx({"help", "locale"}).status, 0);
  Result helpHelp = RunKpx({"help", "--help"});
  EXPECT_EQ(helpHelp.status, 0);
  EXPECT_EQ(helpHelp.out, help.out);
  EXPECT_EQ(RunKpx({"locale", "--help"}).status, 0);
}

TEST(Kpx, UsageErrorsExitWithTwoAndOneLineOfReason) {
  for (auto words : std::vector<std::vector<const char*>>{{},
                                                          {"frobnicate"},
                                                          {"help", "frobnicate"},
                                                          {"locale", "--bogus"},
                                                          {"locale", "--choice"},
                                                          {"locale", "--choice", "134"},
                                                          {"locale", "--choice", "x"},
                                                          {"locale", "stray"}}) {
    Result r = RunKpx(words);
    EXPECT_EQ(r.status, 2) << (words.empty() ? "" : words.back());
    EXPECT_EQ(r.err.rfind("kpx: ", 0) == 0 || r.err.rfind("usage: ", 0) == 0, true) << r.err;
    EXPECT_NE(r.err.find("usage: kpx "), std::string::npos) << r.err;
    EXPECT_TRUE(r.out.empty());
  }
}

TEST(Kpx, LocaleShowsTheGenericSettings) {
  Result r = RunKpx({"locale", "--choice", "0"});
  EXPECT_EQ(r.status, 0);
  EXPECT_NE(r.out.find("decimal\t.\n"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("list\t,\nrow\t;\n"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("currency\t$\n"), std::string::npos) << r.out;
  Result list = RunKpx({"locale", "--list"});
  EXPECT_EQ(list.status, 0);
  EXPECT_NE(list.out.find("0\t0x0000\tGeneric (Fixed)\n"), std::string::npos);
}

TEST(KpxArgs, ReadsValuesFlagsAndPositionals) {
  Args args({"in.kpx", "--table", "orders", "--field=Name:Text", "--field", "Age:Number", "--json",
             "--", "--literal"},
            {"table", "field"}, {"json"});
  ASSERT_TRUE(args.ok()) << args.error();
  EXPECT_EQ(args.Value("table"), "orders");
  EXPECT_EQ(args.Values("field"), (std::vector<std::string>{"Name:Text", "Age:Number"}));
  EXPECT_TRUE(args.Flag("json"));
  EXPECT_FALSE(args.Flag("tsv"));
  EXPECT_EQ(args.positionals(), (std::vector<std::string>{"in.kpx", "--literal"}));
  EXPECT_FALSE(Args({"--json=1"}, {}, {"json"}).ok());
}

// The installed program, not just its library: exit statuses reach the shell.
TEST(KpxProgram, ExitStatusReachesTheShell) {
  auto status = [](const std::string& words) {
    std::string command = std::string(KPX_PATH) + " " + words + " >/dev/null 2>&1";
    int raw = std::system(command.c_str());
    return WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  };
  EXPECT_EQ(status("--version"), 0);
  EXPECT_EQ(status("no-such-command"), 2);
  EXPECT_EQ(status(""), 2);
}

}  // namespace
}  // namespace kelpdex::kpx
