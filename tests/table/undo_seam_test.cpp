// Every command hands one snapshot to the undo recorder before it changes anything, and a refused
// snapshot leaves the table as it was.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/recording_prompter.h"
#include "support/scripted_recorder.h"
#include "table/convert_column.h"
#include "table/records.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;
using testing::ScriptedRecorder;

class UndoSeamTest : public testing::TableTest {
 protected:
  void SetUp() override {
    MakeTable({Field("A", FieldType::kText), Field("B", FieldType::kNumber)});
    for (uint32_t r = 0; r < 4; ++r) PutText(r, 0, "r" + std::to_string(r));
    ASSERT_TRUE(RefreshCurrentTable(book));
    book.undo = &recorder;
  }
  void TearDown() override { book.undo = nullptr; }
  ScriptedRecorder recorder;
};

TEST_F(UndoSeamTest, OneSnapshotPerCommand) {
  ASSERT_TRUE(InsertField(book, 1, Field("C", FieldType::kText)));
  ASSERT_TRUE(SwapFields(book, 0, 1));
  EXPECT_TRUE(SwapFields(book, 2, 3));  // past the end: no step
  ASSERT_TRUE(ModifyField(book, 2, Field("Bee", FieldType::kNumber)));
  ASSERT_TRUE(ModifyField(book, 2, Field("Bee", FieldType::kText)));
  ASSERT_TRUE(DeleteField(book, 0));
  ASSERT_TRUE(InsertRecords(book, 1, 1));
  ASSERT_TRUE(RemoveRecords(book, 0, 2));
  ASSERT_TRUE(RenameTable(book, "U"));
  ASSERT_TRUE(AddTable(book, "V"));
  testing::RecordingPrompter prompter;
  prompter.answers = {answer::kYes};
  testing::ScopedPrompter scope(prompter);
  ASSERT_EQ(DeleteTable(book), DeleteTableResult::kDeleted);
  ASSERT_NE(recorder.held.data, nullptr);  // the recorder holds the deleted sheets
  EXPECT_EQ(recorder.held.data->Name(), "V");
  EXPECT_EQ(recorder.calls,
            (std::vector<std::string>{"field inserted 1", "swap 0 1", "field changed 2", "column 2",
                                      "field deleted 0", "rows inserted 1", "rows removed 3",
                                      "renamed T", "added V", "deleted V"}));
}

TEST_F(UndoSeamTest, ARefusedSnapshotChangesNothing) {
  recorder.refuse = true;
  EXPECT_FALSE(InsertField(book, 0, Field("C", FieldType::kText)));
  EXPECT_FALSE(DeleteField(book, 0));
  EXPECT_FALSE(RemoveRecords(book, 0, 0));
  EXPECT_FALSE(InsertRecords(book, 0, 0));
  EXPECT_FALSE(RenameTable(book, "U"));
  EXPECT_EQ(Names(), (std::vector<std::string>{"A", "B"}));
  EXPECT_EQ(At(0, 0), "'r0'");
  EXPECT_EQ(book.records.count(), 4u);
  EXPECT_NE(book.FindTable("T"), nullptr);
}

TEST_F(UndoSeamTest, TooManyRecordsIsRefusedBeforeTheSnapshot) {
  PutText(kLastRow - 1, 0, "far");
  ASSERT_TRUE(RefreshCurrentTable(book));
  EXPECT_FALSE(InsertRecords(book, 0, 1));
  EXPECT_EQ(book.errorCode, err::kTooManyRecords);
  EXPECT_TRUE(recorder.calls.empty());
}

}  // namespace
}  // namespace kelpdex
