#include "platform/locale_table.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

namespace kelpdex::platform {
namespace {

std::string LanguageOf(int choice) {
  std::string name = LocaleChoiceName(choice);
  return name.substr(0, name.find(" ("));
}

TEST(LocaleTable, BeginsWithTheThreeFixedChoices) {
  EXPECT_STREQ(LocaleChoiceName(0), "Generic (Fixed)");
  EXPECT_EQ(LocaleIdOfChoice(0), 0u);
  EXPECT_STREQ(LocaleChoiceName(1), "System Default");
  EXPECT_EQ(LocaleIdOfChoice(1), kLocaleSystemDefault);
  EXPECT_STREQ(LocaleChoiceName(2), "User Default");
  EXPECT_EQ(LocaleIdOfChoice(2), kLocaleUserDefault);
}

TEST(LocaleTable, ListsLanguagesAlphabeticallyAndSublanguagesByLcid) {
  EXPECT_EQ(LocaleIdOfChoice(3), 0x0436u);
  EXPECT_STREQ(LocaleChoiceName(3), "Afrikaans");
  EXPECT_EQ(LocaleIdOfChoice(5), 0x0401u);
  EXPECT_EQ(LocaleIdOfChoice(6), 0x0801u);
  EXPECT_EQ(LocaleIdOfChoice(kLocaleChoiceCount - 3), 0x0443u);
  EXPECT_EQ(LocaleIdOfChoice(kLocaleChoiceCount - 1), 0x042Au);
  EXPECT_STREQ(LocaleChoiceName(kLocaleChoiceCount - 1), "Vietnamese");

  for (int choice = 4; choice < kLocaleChoiceCount; ++choice) {
    SCOPED_TRACE(LocaleChoiceName(choice));
    std::string previous = LanguageOf(choice - 1);
    std::string current = LanguageOf(choice);
    EXPECT_LE(previous, current);
    if (previous == current) {
      EXPECT_LT(LocaleIdOfChoice(choice - 1), LocaleIdOfChoice(choice));
      // The sublanguages of one menu language share the primary language of the LCID.
      EXPECT_EQ(LocaleIdOfChoice(choice - 1) & 0x3FF, LocaleIdOfChoice(choice) & 0x3FF);
    }
  }
}

TEST(LocaleTable, LanguageLcidsAreDistinctAndNamePosixLocales) {
  std::set<uint32_t> seen;
  bool haveSources = std::filesystem::is_directory("/usr/share/i18n/locales");
  for (int choice = 3; choice < kLocaleChoiceCount; ++choice) {
    uint32_t lcid = LocaleIdOfChoice(choice);
    SCOPED_TRACE(LocaleChoiceName(choice));
    EXPECT_TRUE(seen.insert(lcid).second);
    EXPECT_EQ(FindLocaleChoice(lcid), choice);
    const char* posix = PosixLocaleName(lcid);
    ASSERT_NE(posix, nullptr);
    if (haveSources) {
      EXPECT_TRUE(std::filesystem::exists(std::string("/usr/share/i18n/locales/") + posix));
    }
  }
  EXPECT_EQ(seen.size(), 131u);
}

TEST(LocaleTable, AnswersOutsideTheTable) {
  EXPECT_EQ(LocaleIdOfChoice(-1), 0u);
  EXPECT_EQ(LocaleIdOfChoice(kLocaleChoiceCount), 0u);
  EXPECT_EQ(LocaleChoiceName(kLocaleChoiceCount), nullptr);
  EXPECT_EQ(PosixLocaleName(0), nullptr);
  EXPECT_EQ(PosixLocaleName(kLocaleUserDefault), nullptr);
  EXPECT_EQ(PosixLocaleName(kLocaleSystemDefault), nullptr);
  EXPECT_EQ(PosixLocaleName(0x0417), nullptr);  // Romansh: not among the choices
  EXPECT_EQ(FindLocaleChoice(0x0417), -1);
  EXPECT_EQ(FindLocaleChoice(kLocaleUserDefault), 2);
  EXPECT_STREQ(PosixLocaleName(0x0407), "de_DE");
  EXPECT_STREQ(PosixLocaleName(0x0C0A), "es_ES");
  EXPECT_STREQ(PosixLocaleName(0x0443), "uz_UZ");
}

}  // namespace
}  // namespace kelpdex::platform
