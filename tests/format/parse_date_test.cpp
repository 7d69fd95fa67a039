#include "format/parse_date.h"

#include <gtest/gtest.h>

#include <string>

#include "format/date_names.h"
#include "platform/locale_table.h"
#include "support/fake_locale_provider.h"
#include "support/format_locales.h"

namespace kelpdex {
namespace {

using testing::kGermanLocale;

class ParseDateTextTest : public ::testing::Test {
 protected:
  void SetUp() override { SetDateParseYearForTesting(2026); }
  void TearDown() override {
    SetDateParseYearForTesting(0);
    SetDateNamesProvider(nullptr);
  }
  // The generic string of what was read, or "-" when nothing was.
  std::string Read(const std::string& text, int kind = format_kind::kDateTime,
                   const LocaleSettings* settings = nullptr, const NumberStyle* style = nullptr) {
    DateTimeRecord r;
    if (!ParseDateText(text, r, kind, style, settings)) return "-";
    return FormatGenericDate(r);
  }
};

TEST_F(ParseDateTextTest, DatePicturesByIndexAndOrder) {
  EXPECT_EQ(Read("8/11/2005"), "2005-08-11");
  EXPECT_EQ(Read("8/11/05"), "2005-08-11");
  EXPECT_EQ(Read("8/11"), "2026-08-11");  // the current year fills in
  EXPECT_EQ(Read("Apr-15"), "2026-04-15");
  EXPECT_EQ(Read("15-apr-1999"), "-");  // the generic order puts the month first
  EXPECT_EQ(Read("April 15, 1999"), "1999-04-15");
  EXPECT_EQ(Read("Thursday, April 15, 1999"), "1999-04-15");
  EXPECT_EQ(Read("2/30/2005"), "-");
  EXPECT_EQ(Read("2004-02-29"), "2004-02-29");
  EXPECT_EQ(Read("1900-02-29"), "-");
  EXPECT_EQ(Read("21.11.2026", format_kind::kDate, &kGermanLocale), "2026-11-21");
  EXPECT_EQ(Read("21.11.26", format_kind::kDate, &kGermanLocale), "2026-11-21");
  EXPECT_EQ(Read("21 November, 2026", format_kind::kDate, &kGermanLocale), "2026-11-21");
  EXPECT_EQ(Read("11/21/2026", format_kind::kDate, &kGermanLocale), "-");
  for (const char* bad : {"", "2005", "12.5", "10 4/5", "1/2/3/4", "13/1/2005", "abc"}) {
    EXPECT_EQ(Read(bad), "-") << bad;
  }
}

TEST_F(ParseDateTextTest, TimesAndDatesWithTimes) {
  EXPECT_EQ(Read("6:24 PM"), "18:24:00");
  EXPECT_EQ(Read("12:05 am"), "00:05:00");
  EXPECT_EQ(Read("10:30"), "10:30:00");
  EXPECT_EQ(Read("10:30:15"), "10:30:15");
  EXPECT_EQ(Read("13:10:55.1"), "13:10:55.100");
  EXPECT_EQ(Read("25:00"), "-");
  EXPECT_EQ(Read("13:00 PM"), "-");
  EXPECT_EQ(Read("8/11/2005 6:24 PM"), "2005-08-11T18:24:00");
  EXPECT_EQ(Read("8/11/2005 6:24 PM", format_kind::kDate), "-");
  EXPECT_EQ(Read("8/11/2005", format_kind::kTime), "-");
  EXPECT_EQ(Read("6:24", format_kind::kTime), "06:24:00");
  EXPECT_EQ(Read("2005-08-11T18:24:00", format_kind::kDateTime), "2005-08-11T18:24:00");
}

TEST_F(ParseDateTextTest, TheStylesOwnPictureAndLocalNames) {
  NumberStyle date;
  date.kind = format_kind::kDate;
  date.index = 3;               // "mm/dd/yy" in the fixed order
  date.systemDateOrder = true;  // "dd/mm/yy" under a day-first locale, with fixed separators
  EXPECT_EQ(Read("21/11/26", format_kind::kDate, &kGermanLocale, &date), "2026-11-21");

  testing::FakeLocaleProvider provider;
  uint32_t lcid = platform::LocaleIdOfChoice(kGermanLocale.localeIndex);
  provider.values[{lcid, platform::kLocaleSMonthName1 + 2}] = "M\xE4rz";
  provider.values[{lcid, platform::kLocaleSAbbrevMonthName1 + 2}] = "M\xE4r";
  SetDateNamesProvider(&provider);
  EXPECT_EQ(Read("1 m\xC4rz 2006", format_kind::kDate, &kGermanLocale), "2006-03-01");
  EXPECT_EQ(Read("1-M\xE4r-06", format_kind::kDate, &kGermanLocale), "2006-03-01");
  EXPECT_EQ(Read("1-Mar-06", format_kind::kDate, &kGermanLocale), "2006-03-01");
}

}  // namespace
}  // namespace kelpdex
