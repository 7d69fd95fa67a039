#include "platform/locale_provider.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "platform/locale_table.h"
#include "support/temp_dir.h"

namespace kelpdex::platform {
namespace {

using kelpdex::testing::ScopedEnv;
using kelpdex::testing::TempDir;

constexpr uint32_t kGerman = 0x0407;
constexpr uint32_t kFrench = 0x040C;
constexpr uint32_t kAmerican = 0x0409;

// A fresh machine has only C and C.UTF-8, so the locales the tests read are compiled once into
// a folder that LOCPATH then names; the C library looks nowhere else while LOCPATH is set.
class SystemLocales : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
#ifdef _WIN32
    return;  // Windows answers from its own national language tables
#endif
    if (std::system("command -v localedef >/dev/null 2>&1") != 0) {
      skipReason_ = "localedef is not installed";
      return;
    }
    folder_ = new TempDir;
    std::string command;
    for (const char* name : {"de_DE", "fr_FR", "en_US"}) {
      command += std::string("localedef -i ") + name + " -f UTF-8 '" +
                 folder_->Path(std::string(name) + ".UTF-8") + "' >/dev/null 2>&1 & ";
    }
    command += "wait";
    (void)std::system(command.c_str());
  }

  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }

  void SetUp() override {
#ifdef _WIN32
    return;
#endif
    if (!skipReason_.empty()) GTEST_SKIP() << skipReason_;
    for (const char* name : {"de_DE", "fr_FR", "en_US"}) {
      ASSERT_TRUE(std::filesystem::exists(folder_->Path(std::string(name) + ".UTF-8/LC_TIME")))
          << "localedef could not compile " << name;
    }
    locpath_ = std::make_unique<ScopedEnv>("LOCPATH", folder_->path().c_str());
  }

  static std::string Info(uint32_t lcid, uint32_t type) {
    char buf[128];
    int written = SystemLocaleProvider().GetLocaleInfo(lcid, type, buf, sizeof buf);
    if (written <= 0) return "<failed>";
    EXPECT_EQ(static_cast<size_t>(written), std::string(buf).size() + 1);
    return buf;
  }

  static TempDir* folder_;
  static std::string skipReason_;
  std::unique_ptr<ScopedEnv> locpath_;
};

TempDir* SystemLocales::folder_ = nullptr;
std::string SystemLocales::skipReason_;

TEST_F(SystemLocales, GermanNumbersAndDates) {
  EXPECT_TRUE(SystemLocaleProvider().IsValidLocale(kGerman));
  EXPECT_EQ(Info(kGerman, kLocaleSDecimal), ",");
  EXPECT_EQ(Info(kGerman, kLocaleSThousand), ".");
  EXPECT_EQ(Info(kGerman, kLocaleSList), ";");
  EXPECT_EQ(Info(kGerman, kLocaleSCurrency), "\x80");  // the euro sign in Windows-1252
  EXPECT_EQ(Info(kGerman, kLocaleSDate), ".");
  EXPECT_EQ(Info(kGerman, kLocaleSTime), ":");
  EXPECT_EQ(Info(kGerman, kLocaleIDate), "1");
  EXPECT_EQ(Info(kGerman, kLocaleILDate), "1");
  // The patterns themselves differ between the C library's data and Windows' own.
#ifndef _WIN32
  EXPECT_EQ(Info(kGerman, kLocaleSShortDate), "dd.MM.yyyy");
  EXPECT_EQ(Info(kGerman, kLocaleSLongDate), "dddd d. MMMM yyyy");
#endif
  EXPECT_EQ(Info(kGerman, kLocaleSTimeFormat), "HH:mm:ss");
}

TEST_F(SystemLocales, NamesCountDaysFromMonday) {
  EXPECT_EQ(Info(kGerman, kLocaleSDayName1), "Montag");
  EXPECT_EQ(Info(kGerman, kLocaleSDayName1 + 6), "Sonntag");
#ifndef _WIN32  // "So." on Windows
  EXPECT_EQ(Info(kGerman, kLocaleSAbbrevDayName1 + 6), "So");
#endif
  EXPECT_EQ(Info(kGerman, kLocaleSMonthName1 + 2), "M\xE4rz");
  EXPECT_EQ(Info(kGerman, kLocaleSAbbrevMonthName1 + 11), "Dez");
}

TEST_F(SystemLocales, FrenchThousandsSeparatorBecomesNoBreakSpace) {
  EXPECT_EQ(Info(kFrench, kLocaleSThousand), "\xA0");
  EXPECT_EQ(Info(kFrench, kLocaleSDate), "/");
  EXPECT_EQ(Info(kFrench, kLocaleIDate), "1");
}

TEST_F(SystemLocales, AmericanIsMonthFirstWithTwelveHourClock) {
  EXPECT_EQ(Info(kAmerican, kLocaleIDate), "0");
  EXPECT_EQ(Info(kAmerican, kLocaleILDate), "0");
  EXPECT_EQ(Info(kAmerican, kLocaleSList), ",");
  EXPECT_EQ(Info(kAmerican, kLocaleSCurrency), "$");
  EXPECT_EQ(Info(kAmerican, kLocaleS1159), "AM");
  EXPECT_EQ(Info(kAmerican, kLocaleS2359), "PM");
#ifndef _WIN32  // "h:mm:ss tt" on Windows
  EXPECT_EQ(Info(kAmerican, kLocaleSTimeFormat), "hh:mm:ss tt");
#endif
  EXPECT_EQ(Info(kAmerican, kLocaleSTime), ":");
}

TEST_F(SystemLocales, ValueMustFitWithItsNul) {
  char buf[3] = {'x', 'x', 'x'};
  EXPECT_EQ(SystemLocaleProvider().GetLocaleInfo(kAmerican, kLocaleS1159, buf, 2), 0);
  EXPECT_EQ(buf[0], 'x');
  EXPECT_EQ(SystemLocaleProvider().GetLocaleInfo(kAmerican, kLocaleS1159, nullptr, 0), 3);
  EXPECT_EQ(SystemLocaleProvider().GetLocaleInfo(kAmerican, kLocaleS1159, buf, 3), 3);
  EXPECT_STREQ(buf, "AM");
#ifndef _WIN32  // Windows gives German an AM designator
  // German has no AM designator: the empty string still takes its NUL.
  EXPECT_EQ(SystemLocaleProvider().GetLocaleInfo(kGerman, kLocaleS1159, buf, 1), 1);
  EXPECT_EQ(buf[0], '\0');
#endif
}

TEST_F(SystemLocales, OnlyInstalledTableLocalesAreValid) {
#ifdef _WIN32
  GTEST_SKIP() << "which locales are installed is the C library's notion";
#else
  LocaleProvider& provider = SystemLocaleProvider();
  EXPECT_FALSE(provider.IsValidLocale(0x0C0A));  // Spanish: in the table, not compiled here
  EXPECT_EQ(Info(0x0C0A, kLocaleSDecimal), "<failed>");
  EXPECT_FALSE(provider.IsValidLocale(0x0417));  // not in the table at all
  EXPECT_EQ(Info(0x0417, kLocaleSDecimal), "<failed>");
  EXPECT_FALSE(provider.IsValidLocale(0));
  EXPECT_EQ(Info(kGerman, 0x9999), "<failed>");
#endif
}

TEST_F(SystemLocales, UserDefaultFollowsTheEnvironment) {
#ifdef _WIN32
  GTEST_SKIP() << "LANG and LC_* are POSIX";
#else
  ScopedEnv noAll("LC_ALL", nullptr);
  ScopedEnv noNumeric("LC_NUMERIC", nullptr);
  ScopedEnv noTime("LC_TIME", nullptr);
  ScopedEnv noMonetary("LC_MONETARY", nullptr);
  ScopedEnv noCtype("LC_CTYPE", nullptr);
  ScopedEnv noMessages("LC_MESSAGES", nullptr);
  {
    ScopedEnv lang("LANG", "de_DE.UTF-8");
    EXPECT_TRUE(SystemLocaleProvider().IsValidLocale(kLocaleUserDefault));
    EXPECT_EQ(Info(kLocaleUserDefault, kLocaleSDecimal), ",");
    EXPECT_EQ(Info(kLocaleUserDefault, kLocaleIDate), "1");
  }
  ScopedEnv lang("LANG", "en_US.UTF-8");
  EXPECT_EQ(Info(kLocaleUserDefault, kLocaleSDecimal), ".");
  {
    ScopedEnv numeric("LC_NUMERIC", "fr_FR.UTF-8");
    EXPECT_EQ(Info(kLocaleUserDefault, kLocaleSThousand), "\xA0");
    EXPECT_EQ(Info(kLocaleUserDefault, kLocaleIDate), "0");
  }
  // A category naming a missing locale does not take the others down with it.
  ScopedEnv messages("LC_MESSAGES", "xx_YY.UTF-8");
  ScopedEnv numeric("LC_NUMERIC", "de_DE.UTF-8");
  EXPECT_EQ(Info(kLocaleUserDefault, kLocaleSDecimal), ",");
  EXPECT_EQ(Info(kLocaleUserDefault, kLocaleIDate), "0");
  EXPECT_NE(Info(kLocaleSystemDefault, kLocaleSDecimal), "<failed>");
#endif
}

}  // namespace
}  // namespace kelpdex::platform
