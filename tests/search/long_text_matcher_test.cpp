#include "search/long_text_matcher.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "persist/side_values.h"
#include "search/search_keys.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;

TEST(ContainsTextTest, CaseAndWholeWords) {
  EXPECT_TRUE(ContainsText("An Urgent call", "urgent", false, false));
  EXPECT_FALSE(ContainsText("An Urgent call", "urgent", false, true));
  EXPECT_TRUE(ContainsText("urgently", "urgent", false, false));
  EXPECT_FALSE(ContainsText("urgently", "urgent", true, false));
  EXPECT_TRUE(ContainsText("(urgent)", "URGENT", true, false));
  EXPECT_FALSE(ContainsText("abc", "", false, false));
  EXPECT_FALSE(ContainsText("ab", "abc", false, false));
}

class LongTextMatcherTest : public testing::TableTest {
 protected:
  void SetUp() override {
    MakeTable({Field("Qty", FieldType::kNumber), Field("Note", FieldType::kLongText),
               Field("Scans", FieldType::kFiles)});
    for (uint32_t r = 0; r < 4; ++r) PutNumber(r, 0, r);
    SetLongTextValue(book, Data(), 0, 1, "call back: URGENT");
    SetLongTextValue(book, Data(), 1, 1, "{\\rtf1\\ansi {\\fonttbl{\\f0 urgent;}}\\b calm\\b0}");
    SetLongTextValue(book, Data(), 2, 1, "{\\rtf1 not \\i urgent\\i0 at all}");
    BinaryObjectList files;
    files.Append("Invoice-2024.PDF", "pdf", "x");
    files.Append("photo.jpg", "jpg", "y");
    SetObjectsValue(book, Data(), 3, 2, files);
  }
  std::vector<uint32_t> Found() {
    SideFileMatcher matcher(Data(), "");
    FilterOptions options;
    options.matcher = &matcher;
    uint32_t found = 0;
    EXPECT_TRUE(RunFilters(Table(), book.records, options, found));
    return std::vector<uint32_t>(book.records.rows(), book.records.rows() + found);
  }
};

// Rich text is searched in its characters only: a font named "urgent" does not count.
TEST_F(LongTextMatcherTest, LongTextIsSearchedInItsPlainTextAndFilesByName) {
  ASSERT_TRUE(SetFieldFilter(Table(), 1, "0:urgent"));
  EXPECT_EQ(Found(), (std::vector<uint32_t>{0, 2}));
  ASSERT_TRUE(SetFieldFilter(Table(), 1, ""));
  ASSERT_TRUE(SetFieldFilter(Table(), 2, "0:invoice"));
  EXPECT_EQ(Found(), (std::vector<uint32_t>{3}));
  ASSERT_TRUE(SetFieldFilter(Table(), 2, "0:.png"));
  EXPECT_TRUE(Found().empty());
}

}  // namespace
}  // namespace kelpdex
