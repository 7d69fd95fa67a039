#include "format/format_text.h"

#include <gtest/gtest.h>

#include "format/date_names.h"
#include "platform/locale_table.h"
#include "support/fake_locale_provider.h"
#include "support/format_locales.h"

namespace kelpdex {
namespace {

using testing::kGermanLocale;

TEST(FormatText, DateTokensOverGenericDateStrings) {
  EXPECT_EQ(FormatText("2006-01-31", "dddd, mmmm dd, yyyy"), "Tuesday, January 31, 2006");
  EXPECT_EQ(FormatText("2006-01-31", "d-mmm-yy"), "31-Jan-06");
  EXPECT_EQ(FormatText("2006-01-31", "mmmmm"), "J");
  EXPECT_EQ(FormatText("2006-01-31", "m/d/yyyy"), "1/31/2006");
  EXPECT_EQ(FormatText("40000-07-04", "yyyy-mm-dd"), "40000-07-04");
  EXPECT_EQ(FormatText("2006-01-31T13:05:09.25", "yyyy-mm-dd hh:mm:ss.00"),
            "2006-01-31 13:05:09.25");
  EXPECT_EQ(FormatText("13:05:09", "h:mm AM/PM"), "1:05 PM");
  EXPECT_EQ(FormatText("00:30:00", "hh:mm A/P"), "12:30 A");
  EXPECT_EQ(FormatText("02:03:04", "[m]:ss"), "123:04");
  EXPECT_EQ(FormatText("02:03:04", "[s]"), "7384");
  // A time has no date to show, and a text that is no date is shown as it stands.
  EXPECT_EQ(FormatText("13:05:09", "m/d/yyyy"), "13:05:09");
  EXPECT_EQ(FormatText("soon", "m/d/yyyy"), "soon");
  EXPECT_EQ(FormatText("2006-02-30", "m/d/yyyy"), "2006-02-30");
}

TEST(FormatText, TheTextSection) {
  EXPECT_EQ(FormatText("abc", "0;-0;0;\"<\"@\">\""), "<abc>");
  EXPECT_EQ(FormatText("abc", "_(@_)"), " abc ");
  EXPECT_EQ(FormatText("abc", "0.00"), "abc");  // no text section: as it stands
}

TEST(FormatText, LocaleNamesWithEnglishForWhatTheLocaleLacks) {
  testing::FakeLocaleProvider provider;
  uint32_t lcid = platform::LocaleIdOfChoice(kGermanLocale.localeIndex);
  provider.installed.insert(lcid);
  provider.values[{lcid, platform::kLocaleSMonthName1}] = "Januar";
  provider.values[{lcid, platform::kLocaleSAbbrevMonthName1 + 2}] = "Mrz";
  provider.values[{lcid, platform::kLocaleSDayName1 + 6}] = "Sonntag";  // counted from Monday
  SetDateNamesProvider(&provider);
  EXPECT_EQ(FormatText("2006-01-01", "dddd, d. mmmm yyyy", &kGermanLocale),
            "Sonntag, 1. Januar 2006");
  EXPECT_EQ(FormatText("2006-03-01", "d. mmm", &kGermanLocale), "1. Mrz");
  EXPECT_EQ(FormatText("2006-02-01", "mmmm", &kGermanLocale), "February");
  EXPECT_EQ(FormatText("2006-01-01", "mmmm"), "January");  // generic stays English
  SetDateNamesProvider(nullptr);
}

}  // namespace
}  // namespace kelpdex
