#include "search/run_filters.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "search/search_keys.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;

// Notes the records it is asked about and matches those whose object number is even.
class EvenObjects : public LongTextMatcher {
 public:
  bool Matches(const LongTextRecord& record, std::string_view needle, bool, bool,
               ErrorCode& error) override {
    asked.push_back(record.row);
    lastNeedle = std::string(needle);
    if (record.object == 0) {
      error = err::kOutOfMemory;
      return false;
    }
    return record.object % 2 == 0;
  }
  std::vector<uint32_t> asked;
  std::string lastNeedle;
};

class RunFiltersTest : public testing::TableTest {
 protected:
  void SetUp() override {
    MakeTable({Field("Name", FieldType::kText), Field("Qty", FieldType::kNumber),
               Field("Note", FieldType::kLongText)});
    const char* names[] = {"Anna", "Bob", "Carl", "Dora", "Emil", "Fritz"};
    for (uint32_t r = 0; r < 6; ++r) {
      PutText(r, 0, names[r]);
      PutNumber(r, 1, 10.0 * (r + 1));
      PutNumber(r, 2, r + 1);  // the Long Text value's object number
    }
  }
  // The rows found, and a check of the set's invariant.
  std::vector<uint32_t> Found(const FilterOptions& options = {}) {
    uint32_t found = 99;
    EXPECT_TRUE(RunFilters(Table(), book.records, options, found));
    EXPECT_EQ(found, book.records.count());
    EXPECT_TRUE(book.records.Consistent(Data().UsedRows()));
    return std::vector<uint32_t>(book.records.rows(), book.records.rows() + found);
  }
  void Filter(uint16_t field, const std::string& text) {
    ASSERT_TRUE(SetFieldFilter(Table(), field, text));
  }
};

TEST_F(RunFiltersTest, FiltersOfAllFieldsAreAndedInRowOrder) {
  EXPECT_EQ(Found(), (std::vector<uint32_t>{0, 1, 2, 3, 4, 5}));
  Filter(1, "6:20 50");
  EXPECT_EQ(Found(), (std::vector<uint32_t>{1, 2, 3, 4}));
  Filter(0, "3:Carl");
  EXPECT_EQ(Found(), (std::vector<uint32_t>{1, 3, 4}));
  Filter(0, "0:=Qty*2 > 70");
  EXPECT_EQ(Found(), (std::vector<uint32_t>{3, 4}));
  // The padding behind the found rows starts at the row count, not behind the last found row.
  EXPECT_EQ(book.records[2], 6u);
  EXPECT_EQ(book.records[1000], 6u + 998);
}

TEST_F(RunFiltersTest, ResultsKeepOnlyNonZeroNumbersAndNonEmptyTexts) {
  struct Case {
    const char* filter;
    size_t count;
  } cases[] = {
      {"0:=Qty - 30", 5},  // zero drops the one record
      {"0:=\"\"", 0},      // the empty text
      {"0:=Name", 6},      // a text
      {"0:=1/0", 0},       // an error
      {"0:=Qty +", 0},     // no formula
      {"0:Qty > 1", 0},    // no "=": not a formula, matches nothing
      {"2:abc", 0},        // an unknown name on a Number field
      {"6:20", 6},         // "Between" with one word tests nothing
      {"2:\"", 0},         // a quote breaks the formula
      {"0:={1,2}", 0},     // an array
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.filter);
    Filter(1, c.filter);
    EXPECT_EQ(Found().size(), c.count);
  }
}

TEST_F(RunFiltersTest, LongTextIsMatchedLastAndOnlyOnSurvivors) {
  EvenObjects matcher;
  FilterOptions options;
  options.matcher = &matcher;
  Filter(2, "0:needle");
  Filter(1, "4:25");  // rows 2 to 5
  EXPECT_EQ(Found(options), (std::vector<uint32_t>{3, 5}));
  EXPECT_EQ(matcher.asked, (std::vector<uint32_t>{2, 3, 4, 5}));
  EXPECT_EQ(matcher.lastNeedle, "needle");
  // An empty needle tests nothing; without a matcher such a filter matches nothing.
  Filter(2, "0:");
  matcher.asked.clear();
  EXPECT_EQ(Found(options).size(), 4u);
  EXPECT_TRUE(matcher.asked.empty());
  Filter(2, "0:x");
  EXPECT_TRUE(Found().empty());
}

TEST_F(RunFiltersTest, GivenFiltersReplaceThoseInForceWithoutTouchingThem) {
  Filter(1, "4:25");
  std::vector<std::string> transient = {"2:Bob"};
  FilterOptions options;
  options.filters = &transient;
  EXPECT_EQ(Found(options), (std::vector<uint32_t>{1}));
  EXPECT_EQ(GetKeyFilterText(Table(), 0, 1), "4:25");
  EXPECT_EQ(Found().size(), 4u);
}

TEST_F(RunFiltersTest, AnEmptyTableGivesPurePadding) {
  Data().cells.Reset(false);
  Filter(1, "4:0");
  EXPECT_TRUE(Found().empty());
  EXPECT_EQ(book.records[0], 0u);
  EXPECT_EQ(book.records[7], 7u);
}

TEST(FoundTextTest, CountIsGroupedInTheCurrentLocale) {
  LocaleSettings saved = currentLocale;
  currentLocale = genericLocale;
  EXPECT_EQ(FoundText(0), "Record(s) found: 0");
  EXPECT_EQ(FoundText(1234567), "Record(s) found: 1,234,567");
  currentLocale.thousandSeparator = '.';
  currentLocale.decimalSeparator = ',';
  EXPECT_EQ(FoundText(1234567), "Record(s) found: 1.234.567");
  currentLocale = saved;
}

}  // namespace
}  // namespace kelpdex
