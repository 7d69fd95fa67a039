#include "search/find_replace.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "search/run_filters.h"
#include "support/scripted_recorder.h"
#include "table/records.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;

TEST(FindInTextTest, WildcardsEscapesCaseAndWholeCells) {
  struct Case {
    const char* pattern;
    const char* text;
    bool matchCase;
    bool wholeCell;
    long offset;
  } cases[] = {
      {"", "abc", false, false, -1},     {"b", "abc", false, false, 1},
      {"B", "abc", true, false, -1},     {"B", "abc", false, false, 1},
      {"a?c", "xxabc", false, false, 2}, {"*", "abc", false, false, 0},
      {"*", "", false, false, 0},        {"b*d", "abxcd", false, false, 1},
      {"~*", "a*b", false, false, 1},    {"~?", "a?b", false, false, 1},
      {"~~", "a~b", false, false, 1},    {"~x", "a~xb", false, false, 1},
      {"bc", "abc", false, true, -1},    {"a*c", "abcbc", false, true, 0},
      {"abc", "ABC", false, true, 0},    {"a?", "a", false, false, -1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.pattern) + " in " + c.text);
    EXPECT_EQ(FindInText(c.pattern, c.text, c.matchCase, c.wholeCell), c.offset);
  }
}

class FindReplaceTest : public testing::TableTest {
 protected:
  void SetUp() override {
    MakeTable({Field("Name", FieldType::kText), Field("Qty", FieldType::kNumber),
               Field("Note", FieldType::kLongText),
               Field("Twice", FieldType::kNumber, "F:=Qty*2")});
    PutText(0, 0, "red apple");
    PutNumber(0, 1, 12);
    PutNumber(0, 2, 1);  // a Long Text object number, shown as "1"
    PutText(1, 0, "green");
    PutNumber(1, 1, 1);
    PutText(2, 0, "apple red");
    PutNumber(2, 1, 21);
    ASSERT_EQ(UpdateFormulas(book), UpdateResult::kUpdated);
    ASSERT_TRUE(RunSearch(book));
  }
  // Every hit of Find Next over the whole table, from before the first cell.
  std::vector<std::pair<uint32_t, uint16_t>> FindAll(const FindOptions& options) {
    std::vector<std::pair<uint32_t, uint16_t>> hits;
    GridSelection one{0, 0, 0, 0}, hit;
    uint16_t field = 0;
    uint32_t position = 0;
    bool first = true;
    while (FindNext(Table(), book.records, one, field, position, options, hit, first)) {
      first = false;
      hits.emplace_back(hit.firstPosition, hit.firstField);
      field = hit.firstField;
      position = hit.firstPosition;
    }
    return hits;
  }
};

TEST_F(FindReplaceTest, FindNextScansRecordByRecordAndPassesLongTextOver) {
  FindOptions options;
  options.text = "1";
  // Qty 12 (record 0), the calculated 24? no: "2"... and Qty 1, 21; Note's "1" is passed over.
  EXPECT_EQ(FindAll(options), (std::vector<std::pair<uint32_t, uint16_t>>{{0, 1}, {1, 1}, {2, 1}}));
  options.text = "*";
  EXPECT_EQ(FindAll(options).front(), (std::pair<uint32_t, uint16_t>{0, 0}));
  options.text = "red";
  options.wholeCell = true;
  EXPECT_TRUE(FindAll(options).empty());
}

TEST_F(FindReplaceTest, ReplaceAllRewritesShownTextsAndRecalculatesTheRecord) {
  testing::ScriptedRecorder recorder;
  book.undo = &recorder;
  FindOptions options;
  options.text = "1";
  options.replacement = "5";
  uint32_t changed = 0;
  ASSERT_TRUE(
      ReplaceInRange(Table(), book.records, WholeTable(Table(), book.records), options, changed));
  EXPECT_EQ(changed, 3u);  // 12, 1 and 21; not the Long Text nor the calculated field
  EXPECT_EQ(recorder.calls, std::vector<std::string>{"cells"});
  EXPECT_EQ(At(0, 1), "52");
  EXPECT_EQ(At(2, 1), "25");
  EXPECT_EQ(At(0, 2), "1");
  EXPECT_EQ(At(0, 3), "104");  // computed again from the new Qty
  // Every occurrence in a text, and a number field takes what the entry parser makes of its text.
  options.text = "e";
  options.replacement = "E";
  options.matchCase = true;
  GridSelection names{0, 0, 1, 2};
  ASSERT_TRUE(ReplaceInRange(Table(), book.records, names, options, changed));
  EXPECT_EQ(At(1, 0), "'grEEn'");
  options.text = "5";
  options.replacement = "x";
  ASSERT_TRUE(ReplaceInRange(Table(), book.records, names, options, changed));
  EXPECT_EQ(At(1, 1), "'x'");  // what the entry parser makes of a text that is no number
  // A star takes the whole text once, not once more for the nothing left behind it.
  options.text = "*";
  options.replacement = "all";
  GridSelection first{0, 0, 0, 0};
  ASSERT_TRUE(ReplaceInRange(Table(), book.records, first, options, changed));
  EXPECT_EQ(At(0, 0), "'all'");
  book.undo = nullptr;
}

}  // namespace
}  // namespace kelpdex
