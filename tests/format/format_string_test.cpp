#include "format/format_string.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "support/format_locales.h"

namespace kelpdex {
namespace {

using testing::kGermanLocale;

class FormatStringTest : public ::testing::Test {
 protected:
  bool Parse(const std::string& text, const LocaleSettings* settings = nullptr) {
    return ParseFormatString(text, *f, settings);
  }
  // The kinds of the items of a section, in order.
  std::vector<uint32_t> Kinds(int section) {
    std::vector<uint32_t> kinds;
    const FormatSection& s = f->sections[section];
    for (int i = s.first; i < s.first + s.count; ++i) kinds.push_back(f->items[i].kind);
    return kinds;
  }
  std::unique_ptr<CompiledFormat> f = std::make_unique<CompiledFormat>();
};

TEST_F(FormatStringTest, SectionsAndBracketsHaveTheirLimits) {
  EXPECT_TRUE(Parse("0;-0;\"zero\";@"));
  EXPECT_EQ(f->sectionCount, 4);
  EXPECT_EQ(f->TextSection(), 3);
  EXPECT_FALSE(Parse("0;0;0;@;0"));
  EXPECT_TRUE(Parse("[red][blue][green]0"));
  EXPECT_EQ(f->sections[0].bracketCount, 3);
  EXPECT_FALSE(Parse("[red][blue][green][white]0"));
  // The limit is per section.
  EXPECT_TRUE(Parse("[red][blue][green]0;[red][blue][green]0"));
  EXPECT_FALSE(Parse("[red0"));
  EXPECT_FALSE(Parse(""));
  EXPECT_TRUE(Parse("[$-409]0"));  // a mark we do not know is passed over
  EXPECT_EQ(f->sections[0].bracketCount, 0);
}

TEST_F(FormatStringTest, ColoursAndConditions) {
  ASSERT_TRUE(Parse("[Blue][>=1000]#,##0;[#FF8000]0"));
  const FormatSection& s = f->sections[0];
  ASSERT_EQ(s.bracketCount, 2);
  EXPECT_EQ(s.brackets[0].type, bracket::kColour);
  EXPECT_EQ(s.brackets[0].colour, 0xFF0000u);
  EXPECT_EQ(s.brackets[1].type, bracket::kCondition);
  EXPECT_EQ(s.brackets[1].op, condition::kGreaterEqual);
  EXPECT_EQ(s.brackets[1].value, 1000);
  EXPECT_EQ(f->sections[1].brackets[0].colour, 0x0080FFu);
  EXPECT_FALSE(Parse("[>abc]0"));
  ASSERT_TRUE(Parse("[<>2,5]0", &kGermanLocale));
  EXPECT_EQ(f->sections[0].brackets[0].op, condition::kNotEqual);
  EXPECT_EQ(f->sections[0].brackets[0].value, 2.5);
}

TEST_F(FormatStringTest, PlaceholdersGroupingScalingAndFractions) {
  ASSERT_TRUE(Parse("#,##0.00"));
  const FormatSection* s = &f->sections[0];
  EXPECT_EQ(s->integerDigits, 4);
  EXPECT_EQ(s->decimalDigits, 2);
  EXPECT_TRUE(s->grouping);
  EXPECT_EQ(s->thousandsScale, 0);

  ASSERT_TRUE(Parse("0.0,,"));
  EXPECT_FALSE(f->sections[0].grouping);
  EXPECT_EQ(f->sections[0].thousandsScale, 2);

  // Under a comma-decimal locale the roles of "." and "," change places.
  ASSERT_TRUE(Parse("#.##0,00", &kGermanLocale));
  EXPECT_TRUE(f->sections[0].grouping);
  EXPECT_EQ(f->sections[0].decimalDigits, 2);

  ASSERT_TRUE(Parse("# ?\?/??"));
  s = &f->sections[0];
  EXPECT_EQ(s->integerDigits, 1);
  EXPECT_EQ(s->numeratorDigits, 2);
  EXPECT_EQ(s->denominatorDigits, 2);
  EXPECT_GE(s->barAt, 0);

  ASSERT_TRUE(Parse("?\\ ?\?/\"16\""));
  EXPECT_EQ(f->sections[0].fixedDenominator, 16);
  ASSERT_TRUE(Parse("?/100"));
  EXPECT_EQ(f->sections[0].fixedDenominator, 100);
  EXPECT_EQ(f->sections[0].integerDigits, 0);

  ASSERT_TRUE(Parse("0.00E-00"));
  EXPECT_EQ(f->sections[0].exponentDigits, 2);
  EXPECT_EQ(f->sections[0].exponentSign, '-');
}

TEST_F(FormatStringTest, DateTokensByLongestMatchAndTheMinutesRule) {
  ASSERT_TRUE(Parse("yyyy-mm-dd hh:mm:ss"));
  std::vector<uint32_t> kinds = Kinds(0);
  std::vector<uint32_t> expected = {item::kYear,          item::kLiteral,       item::kMonth,
                                    item::kLiteral,       item::kDay,           item::kLiteral,
                                    item::kHour,          item::kTimeSeparator, item::kMinute,
                                    item::kTimeSeparator, item::kSecond};
  // "-" between date tokens is a literal here; only the locale's separator or "/" is a date one.
  EXPECT_EQ(kinds, expected);
  EXPECT_EQ(f->items[0].ch, 4);

  ASSERT_TRUE(Parse("mm:ss"));
  EXPECT_EQ(Kinds(0)[0], item::kMinute);
  ASSERT_TRUE(Parse("mmmm d, yyyy"));
  EXPECT_EQ(Kinds(0)[0], item::kMonth);
  EXPECT_EQ(f->items[0].ch, 4);
  ASSERT_TRUE(Parse("m/d/yy"));
  EXPECT_EQ(Kinds(0)[1], item::kDateSeparator);
  ASSERT_TRUE(Parse("[h]:mm:ss.00 AM/PM"));
  EXPECT_EQ(Kinds(0)[0], item::kHour | item::kElapsed);
  EXPECT_EQ(f->sections[0].secondDigits, 2);
  EXPECT_TRUE(f->sections[0].twelveHour);
  EXPECT_TRUE(f->HasDateTokens());

  EXPECT_FALSE(Parse("0.00 dd"));  // a number cannot also be a date
  EXPECT_TRUE(Parse("0.00 \"dd\""));
  EXPECT_TRUE(Parse("0.00 \\d"));
}

TEST_F(FormatStringTest, GeneralTextPercentBlanksAndTheItemLimit) {
  ASSERT_TRUE(Parse("General;[red]-General"));
  EXPECT_TRUE(f->sections[1].kinds & item::kGeneral);
  ASSERT_TRUE(Parse("_(@_)"));
  EXPECT_EQ(f->TextSection(), 0);
  ASSERT_TRUE(Parse("0%"));
  EXPECT_EQ(f->sections[0].percentCount, 1);
  ASSERT_TRUE(Parse("0\\%"));
  EXPECT_EQ(f->sections[0].percentCount, 0);

  EXPECT_TRUE(Parse(std::string(1025, 'x')));
  EXPECT_FALSE(Parse(std::string(1026, 'x')));
}

TEST(ColourNames, SixteenNamesAndTheHexForm) {
  uint32_t c = 0;
  EXPECT_TRUE(ParseColourName("RED", c));
  EXPECT_EQ(c, 0x0000FFu);
  EXPECT_TRUE(ParseColourName("#102030", c));
  EXPECT_EQ(c, 0x302010u);
  EXPECT_FALSE(ParseColourName("#10203", c));
  EXPECT_FALSE(ParseColourName("#1020ZZ", c));
  EXPECT_FALSE(ParseColourName("pink", c));
  char name[8];
  for (const char* n : {"black", "maroon", "green", "olive", "navy", "purple", "teal", "gray",
                        "silver", "red", "lime", "yellow", "blue", "fuchsia", "aqua", "white"}) {
    ASSERT_TRUE(ParseColourName(n, c));
    ColourName(c, name);
    EXPECT_STREQ(name, n);
  }
  EXPECT_EQ(ColourName(0x0A0B0C, name), 7u);
  EXPECT_STREQ(name, "#0C0B0A");
}

}  // namespace
}  // namespace kelpdex
