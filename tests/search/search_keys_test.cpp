#include "search/search_keys.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "persist/document_file.h"
#include "search/run_filters.h"
#include "store/cell_record.h"
#include "support/scripted_recorder.h"
#include "support/temp_dir.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;

class SearchKeysTest : public testing::TableTest {
 protected:
  void SetUp() override {
    MakeTable({Field("Name", FieldType::kText), Field("Qty", FieldType::kNumber)});
    for (uint32_t r = 0; r < 5; ++r) PutNumber(r, 1, r);
    ASSERT_TRUE(SetFieldFilter(Table(), 1, "4:2"));
  }
  std::vector<std::string> Keys() { return SearchKeyNames(Table()); }
  std::string FilterIn(uint16_t key, uint16_t field = 1) {
    return GetKeyFilterText(Table(), key, field);
  }
  uint32_t Found() {
    uint32_t found = 0;
    EXPECT_TRUE(RunFilters(Table(), book.records, {}, found));
    return found;
  }
};

TEST_F(SearchKeysTest, AKeyIsASnapshotThatSelectingCopiesBackIntoForce) {
  ASSERT_EQ(AddSearchKey(Table(), "Big  "), KeyResult::kDone);  // trailing blanks are cut
  EXPECT_EQ(Keys(), (std::vector<std::string>{"Default", "Big"}));
  EXPECT_EQ(CurrentKey(Table()), 1);
  EXPECT_EQ(FilterIn(1), "4:2");
  ASSERT_TRUE(SetFieldFilter(Table(), 1, "5:1"));
  EXPECT_EQ(FilterIn(1), "4:2");  // the key keeps what it was given
  EXPECT_EQ(Found(), 1u);
  ASSERT_EQ(SelectSearchKey(Table(), 2), KeyResult::kDone);
  EXPECT_EQ(FilterIn(0), "4:2");
  EXPECT_EQ(Found(), 2u);
  // "(None)" clears the filters in force for good; "Default" then finds them gone.
  ASSERT_EQ(SelectSearchKey(Table(), kNoneEntry), KeyResult::kDone);
  ASSERT_EQ(SelectSearchKey(Table(), 1), KeyResult::kDone);
  EXPECT_EQ(FilterIn(0), "");
  EXPECT_EQ(Found(), 5u);
  EXPECT_EQ(SelectSearchKey(Table(), 3), KeyResult::kNoSuchKey);
}

TEST_F(SearchKeysTest, NamesAreUniqueWithoutRegardToCase) {
  EXPECT_EQ(AddSearchKey(Table(), "default"), KeyResult::kNameExists);
  ASSERT_EQ(AddSearchKey(Table(), "One"), KeyResult::kDone);
  ASSERT_EQ(AddSearchKey(Table(), "Two"), KeyResult::kDone);
  EXPECT_EQ(AddSearchKey(Table(), "ONE"), KeyResult::kNameExists);
  EXPECT_EQ(AddSearchKey(Table(), "   "), KeyResult::kEmptyName);
  EXPECT_EQ(AddSearchKey(Table(), std::string(1020, 'n')), KeyResult::kNameTooLong);
  EXPECT_EQ(AddSearchKey(Table(), std::string(1019, 'n')), KeyResult::kDone);
  EXPECT_EQ(RenameSearchKey(Table(), 1, "one"), KeyResult::kDone);  // its own name, recased
  EXPECT_EQ(RenameSearchKey(Table(), 1, "two"), KeyResult::kNameExists);
  EXPECT_EQ(RenameSearchKey(Table(), 0, "Main"), KeyResult::kNoSuchKey);
  EXPECT_EQ(Keys()[1], "one");
  EXPECT_EQ(FindSearchKey(Table(), "TWO"), 2);
}

TEST_F(SearchKeysTest, DeletingAKeyClosesItsColumnAndSelectsDefault) {
  ASSERT_EQ(AddSearchKey(Table(), "A"), KeyResult::kDone);
  ASSERT_TRUE(SetFieldFilter(Table(), 1, "5:4"));
  ASSERT_EQ(AddSearchKey(Table(), "B"), KeyResult::kDone);
  ASSERT_EQ(DeleteSearchKey(Table(), 1), KeyResult::kDone);
  EXPECT_EQ(Keys(), (std::vector<std::string>{"Default", "B"}));
  EXPECT_EQ(FilterIn(1), "5:4");
  EXPECT_EQ(CurrentKey(Table()), 0);
  EXPECT_EQ(DeleteSearchKey(Table(), 0), KeyResult::kNoSuchKey);
  EXPECT_EQ(DeleteSearchKey(Table(), 2), KeyResult::kNoSuchKey);
}

TEST_F(SearchKeysTest, LowerCaseTitlesAreKeysAndTheKeyCountIsBounded) {
  CellCursor cursor;
  std::vector<uint8_t> title(cell::TextSize(6));
  ASSERT_EQ(AddSearchKey(Table(), "x"), KeyResult::kDone);
  cell::EncodeText(title.data(), 0, 5, "key{y}");
  ASSERT_TRUE(Table().catalogue->cells.PutCell(title.data()));
  EXPECT_EQ(Keys(), (std::vector<std::string>{"Default", "y"}));
  for (int i = 0; Keys().size() <= kMaxKeyColumns; ++i) {
    ASSERT_EQ(AddSearchKey(Table(), "k" + std::to_string(i)), KeyResult::kDone);
  }
  EXPECT_EQ(AddSearchKey(Table(), "one more"), KeyResult::kTooManyKeys);
  EXPECT_EQ(Keys().size(), kMaxKeyColumns + 1u);
}

TEST_F(SearchKeysTest, NoKeyIsAddedWhenACatalogueCellWouldLeaveTheSheet) {
  std::vector<uint8_t> far(cell::TextSize(1));
  cell::EncodeText(far.data(), 1, kLastColumn, "x");
  ASSERT_TRUE(Table().catalogue->cells.PutCell(far.data()));
  EXPECT_EQ(AddSearchKey(Table(), "Full"), KeyResult::kNoRoom);
  EXPECT_EQ(Keys(), (std::vector<std::string>{"Default"}));
}

TEST_F(SearchKeysTest, EveryChangeTakesOneSnapshotAndARefusalChangesNothing) {
  testing::ScriptedRecorder recorder;
  book.undo = &recorder;
  ASSERT_EQ(AddSearchKey(Table(), "A"), KeyResult::kDone);
  ASSERT_EQ(RenameSearchKey(Table(), 1, "B"), KeyResult::kDone);
  ASSERT_EQ(SelectSearchKey(Table(), 2), KeyResult::kDone);
  ASSERT_TRUE(SetFieldFilter(Table(), 1, "2:3"));
  ASSERT_TRUE(ClearAllFilters(Table()));
  ASSERT_EQ(DeleteSearchKey(Table(), 1), KeyResult::kDone);
  EXPECT_EQ(recorder.calls, std::vector<std::string>(6, "field list"));
  recorder.refuse = true;
  ASSERT_TRUE(SetFieldFilter(Table(), 1, "2:3") == false);
  EXPECT_EQ(AddSearchKey(Table(), "C"), KeyResult::kFailed);
  EXPECT_EQ(SelectSearchKey(Table(), kNoneEntry), KeyResult::kFailed);
  EXPECT_EQ(Keys(), (std::vector<std::string>{"Default"}));
  EXPECT_EQ(FilterIn(0), "");
  book.undo = nullptr;
}

TEST_F(SearchKeysTest, FiltersAndKeysSurviveEveryNativeForm) {
  ASSERT_EQ(AddSearchKey(Table(), "Saved"), KeyResult::kDone);
  ASSERT_TRUE(SetFieldFilter(Table(), 0, "1:\"quoted\" & <angled>"));
  testing::TempDir dir;
  for (NativeFormat format : {NativeFormat::kXml, NativeFormat::kXmlCompressed,
                              NativeFormat::kBinary, NativeFormat::kBinaryCompressed}) {
    SCOPED_TRACE(static_cast<int>(format));
    std::string path = dir.Path("keys.kpx");
    ErrorCode error = err::kNone;
    ASSERT_TRUE(WriteDocumentFile(path, book, format, error));
    Workbook back;
    NativeFileKind kind;
    ASSERT_TRUE(ReadDocumentFile(path, back, kind, error));
    TableSpec t;
    ASSERT_TRUE(MakeTableSpec(back, "T", t));
    EXPECT_EQ(SearchKeyNames(t), (std::vector<std::string>{"Default", "Saved"}));
    EXPECT_EQ(GetKeyFilterText(t, 0, 0), "1:\"quoted\" & <angled>");
    EXPECT_EQ(GetKeyFilterText(t, 1, 1), "4:2");
    EXPECT_EQ(CurrentKey(t), 1);
    uint32_t found = 0;
    ASSERT_TRUE(RunFilters(t, back.records, {}, found));
    EXPECT_EQ(found, 0u);  // no names to match
  }
}

}  // namespace
}  // namespace kelpdex
