#include <cstring>

#include <gtest/gtest.h>

#include "core/locale_settings.h"
#include "platform/locale_table.h"
#include "support/fake_locale_provider.h"

namespace kelpdex {
namespace {

using testing::FakeLocaleProvider;

// Choice 3 is the first language of the table.
constexpr int kFirstLanguage = 3;

bool SameAsGeneric(const LocaleSettings& s) {
  return std::memcmp(&s, &genericLocale, sizeof s) == 0;
}

class LocaleSettingsTest : public ::testing::Test {
 protected:
  void SetUp() override { currentLocale = genericLocale; }
  void TearDown() override { currentLocale = genericLocale; }
  uint32_t FirstLcid() const { return platform::LocaleIdOfChoice(kFirstLanguage); }
  FakeLocaleProvider provider_;
};

TEST_F(LocaleSettingsTest, GenericValues) {
  EXPECT_EQ(genericLocale.decimalSeparator, '.');
  EXPECT_EQ(genericLocale.listSeparator, ',');
  EXPECT_EQ(genericLocale.rowSeparator, ';');
  EXPECT_STREQ(genericLocale.currencySymbol, "$");
  EXPECT_TRUE(SameAsGeneric(BuildLocaleSettings(0, provider_)));
  EXPECT_EQ(provider_.validityChecks, 0);
}

TEST_F(LocaleSettingsTest, PointDecimalLocaleKeepsTheGenericFormulaSeparators) {
  provider_.SetLocale(FirstLcid(), ".", " ", "-", ".", "2", "1", "R");
  LocaleSettings s = BuildLocaleSettings(kFirstLanguage, provider_);
  EXPECT_EQ(s.localeIndex, kFirstLanguage);
  EXPECT_EQ(s.thousandSeparator, ' ');
  EXPECT_EQ(s.dateSeparator, '-');
  EXPECT_EQ(s.timeSeparator, '.');
  EXPECT_EQ(s.listSeparator, ',');
  EXPECT_EQ(s.rowSeparator, ';');
  EXPECT_EQ(s.dateOrder, 2);
  EXPECT_EQ(s.longDateOrder, 1);
  EXPECT_STREQ(s.currencySymbol, "R");
}

TEST_F(LocaleSettingsTest, CommaDecimalLocaleDividesArgumentsBySemicolons) {
  provider_.SetLocale(platform::kLocaleUserDefault, ",", ".", ".", ":", "1", "1", "\x80");
  LocaleSettings s = BuildLocaleSettings(2, provider_);
  EXPECT_EQ(s.decimalSeparator, ',');
  EXPECT_EQ(s.listSeparator, ';');
  EXPECT_EQ(s.rowSeparator, '\\');
  EXPECT_STREQ(s.currencySymbol, "\x80");
  // The two defaults are never checked for being installed.
  EXPECT_EQ(provider_.validityChecks, 0);
}

TEST_F(LocaleSettingsTest, UnusableLocalesFallBackAsAWhole) {
  // A decimal separator that collides with the array-row separator.
  provider_.SetLocale(platform::kLocaleSystemDefault, ";", ".", ".", ":", "1", "1", "kr");
  EXPECT_TRUE(SameAsGeneric(BuildLocaleSettings(1, provider_)));
  // One value missing among good ones.
  provider_.SetLocale(platform::kLocaleUserDefault, ",", ".", ".", ":", "1", "1", "kr");
  provider_.values.erase({platform::kLocaleUserDefault, platform::kLocaleSTime});
  EXPECT_TRUE(SameAsGeneric(BuildLocaleSettings(2, provider_)));
  // A separator longer than one character does not fit the two-byte buffer.
  provider_.SetLocale(platform::kLocaleUserDefault, ",", "..", ".", ":", "1", "1", "kr");
  EXPECT_TRUE(SameAsGeneric(BuildLocaleSettings(2, provider_)));
  // An empty thousands separator cannot be kept in one byte either.
  provider_.SetLocale(platform::kLocaleUserDefault, ",", "", ".", ":", "1", "1", "kr");
  EXPECT_TRUE(SameAsGeneric(BuildLocaleSettings(2, provider_)));
  // A language that is not installed.
  EXPECT_TRUE(SameAsGeneric(BuildLocaleSettings(kFirstLanguage, provider_)));
  EXPECT_EQ(provider_.validityChecks, 1);
  EXPECT_TRUE(SameAsGeneric(BuildLocaleSettings(platform::kLocaleChoiceCount, provider_)));
}

TEST_F(LocaleSettingsTest, CurrencySymbolIsReadWithFourteenBytes) {
  provider_.SetLocale(platform::kLocaleUserDefault, ".", ",", "/", ":", "0", "0", "ABCDEFGHIJKLM");
  EXPECT_STREQ(BuildLocaleSettings(2, provider_).currencySymbol, "ABCDEFGHIJKLM");
  provider_.SetLocale(platform::kLocaleUserDefault, ".", ",", "/", ":", "0", "0", "ABCDEFGHIJKLMN");
  EXPECT_TRUE(SameAsGeneric(BuildLocaleSettings(2, provider_)));
}

TEST_F(LocaleSettingsTest, ChoosingTheLocaleInForceDoesNothing) {
  provider_.SetLocale(platform::kLocaleUserDefault, ",", ".", ".", ":", "1", "1", "kr");
  EXPECT_TRUE(ApplyLocaleChoice(2, provider_));
  EXPECT_EQ(currentLocale.decimalSeparator, ',');
  provider_.SetLocale(platform::kLocaleUserDefault, ".", ",", "/", ":", "0", "0", "$");
  EXPECT_FALSE(ApplyLocaleChoice(2, provider_));
  EXPECT_EQ(currentLocale.decimalSeparator, ',');
  EXPECT_TRUE(ApplyLocaleChoice(0, provider_));
  EXPECT_TRUE(SameAsGeneric(currentLocale));
}

TEST_F(LocaleSettingsTest, SystemSettingChangeSwitchesToTheUserDefault) {
  provider_.SetLocale(FirstLcid(), ".", ",", "/", ":", "0", "0", "$");
  provider_.SetLocale(platform::kLocaleUserDefault, ",", ".", ".", ":", "1", "1", "kr");
  ASSERT_TRUE(ApplyLocaleChoice(kFirstLanguage, provider_));
  OnSystemSettingChange(provider_);
  EXPECT_EQ(currentLocale.localeIndex, 2);
  EXPECT_EQ(currentLocale.decimalSeparator, ',');
  EXPECT_STREQ(currentLocale.currencySymbol, "kr");
  // Even from the generic choice, and failing as a whole like any rebuild.
  currentLocale = genericLocale;
  provider_.values.erase({platform::kLocaleUserDefault, platform::kLocaleSDate});
  OnSystemSettingChange(provider_);
  EXPECT_TRUE(SameAsGeneric(currentLocale));
}

}  // namespace
}  // namespace kelpdex
