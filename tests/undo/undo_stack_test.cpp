// The stack's levels and the Undo and Redo commands, over the commands of a small document.
#include "search/record_sets.h"
#include "search/sort_keys.h"
#include "undo/undo_fixture.h"

namespace kelpdex {
namespace {

class UndoStackTest : public testing::UndoTest {
 protected:
  void SetUp() override { MakeDocument(10); }
  std::string Table0Name() { return std::string(book.TableByIndex(0)->Name()); }
  std::vector<std::string> TableNames() {
    std::vector<std::string> names;
    for (uint32_t i = 0; i < book.TableCount(); ++i)
      names.emplace_back(book.TableByIndex(i)->Name());
    return names;
  }
};

TEST_F(UndoStackTest, AFullStackDropsTheOldestStep) {
  book.undoLevel = 3;
  for (int i = 0; i < 5; ++i) {
    ASSERT_EQ(CommitText(book, 0, 0, "v" + std::to_string(i), Cell(0, 0)), EntryResult::kWritten);
  }
  EXPECT_EQ(book.undoTop, 3);
  for (int s = 0; s <= 3; ++s) EXPECT_NE(book.undoSlots[s].kind, undo_kind::kNone) << s;
  EXPECT_EQ(book.undoSlots[4].kind, undo_kind::kNone);
  int undos = 0;
  while (stack->CanUndo()) {
    ASSERT_TRUE(stack->Undo().applied);
    ++undos;
  }
  EXPECT_EQ(undos, 4);
  // The first edit's step went, so the first edit stays.
  EXPECT_EQ(At(0, 0), "'v0'");
}

TEST_F(UndoStackTest, ANewStepEndsTheRedoChain) {
  ASSERT_EQ(CommitText(book, 1, 0, "one", Cell(1, 0)), EntryResult::kWritten);
  ASSERT_EQ(CommitText(book, 2, 0, "two", Cell(2, 0)), EntryResult::kWritten);
  ASSERT_TRUE(stack->Undo().applied);
  EXPECT_TRUE(stack->CanRedo());
  ASSERT_EQ(CommitText(book, 3, 0, "three", Cell(3, 0)), EntryResult::kWritten);
  EXPECT_FALSE(stack->CanRedo());
  EXPECT_FALSE(stack->Redo().applied);
  EXPECT_EQ(At(2, 0), "'cat2'");
  EXPECT_EQ(At(3, 0), "'three'");
}

TEST_F(UndoStackTest, EditsBehindTheLastRecordAndTheirCalculatedFieldsGoBackTogether) {
  ASSERT_EQ(CommitText(book, 13, 1, "21", Cell(13, 1)), EntryResult::kWritten);
  EXPECT_EQ(book.records.count(), 14u);
  EXPECT_EQ(At(13, 3), "42");
  UndoOutcome undone = stack->Undo();
  EXPECT_TRUE(undone.applied);
  EXPECT_FALSE(undone.refreshFrame);
  EXPECT_EQ(undone.selection.activeRecord, 13u);
  EXPECT_EQ(book.records.count(), 10u);
  EXPECT_EQ(At(13, 1), "-");
  EXPECT_EQ(At(13, 3), "-");
  ASSERT_TRUE(stack->Redo().applied);
  EXPECT_EQ(book.records.count(), 14u);
  EXPECT_EQ(At(13, 3), "42");
}

TEST_F(UndoStackTest, ADeletedTableComesBackAtTheEnd) {
  book.currentSheet = book.FindTable("T");
  ASSERT_TRUE(RefreshCurrentTable(book));
  ASSERT_TRUE(AddTable(book, "W"));
  book.currentSheet = book.FindTable("T");
  ASSERT_TRUE(RefreshCurrentTable(book));
  testing::RecordingPrompter prompter;
  prompter.answers = {answer::kYes};
  testing::ScopedPrompter scope(prompter);
  ASSERT_EQ(DeleteTable(book, nullptr, Cell(0, 0)), DeleteTableResult::kDeleted);
  EXPECT_EQ(TableNames(), (std::vector<std::string>{"U", "W"}));
  UndoOutcome undone = stack->Undo();
  ASSERT_TRUE(undone.applied);
  EXPECT_TRUE(undone.refreshFrame);
  EXPECT_EQ(TableNames(), (std::vector<std::string>{"U", "W", "T"}));
  EXPECT_EQ(book.currentSheet, book.FindTable("T"));
  EXPECT_EQ(At(1, 0), "'bee1'");
  ASSERT_TRUE(stack->Redo().applied);
  EXPECT_EQ(TableNames(), (std::vector<std::string>{"U", "W"}));
  EXPECT_EQ(book.currentSheet, book.FindTable("U"));  // the table behind, as at the deletion
}

TEST_F(UndoStackTest, UndoingARenameTwiceGivesTheNewNameAgain) {
  ASSERT_TRUE(RenameTable(book, "Stock", Cell(0, 0)));
  ASSERT_TRUE(stack->Undo().refreshFrame);
  EXPECT_NE(book.FindTable("T"), nullptr);
  EXPECT_NE(book.FindCatalogue("T"), nullptr);
  ASSERT_TRUE(stack->Redo().applied);
  EXPECT_NE(book.FindTable("Stock"), nullptr);
  EXPECT_EQ(book.FindTable("T"), nullptr);
}

TEST_F(UndoStackTest, TheSlotsTableIsMadeCurrentFirst) {
  ASSERT_EQ(CommitText(book, 0, 0, "changed", Cell(0, 0)), EntryResult::kWritten);
  ASSERT_TRUE(NextTable(book));
  ASSERT_EQ(book.currentSheet, book.FindTable("U"));
  UndoOutcome undone = stack->Undo();
  ASSERT_TRUE(undone.applied);
  EXPECT_TRUE(undone.refreshFrame);
  EXPECT_EQ(book.currentSheet, book.FindTable("T"));
  EXPECT_EQ(At(0, 0), "'ant0'");
  EXPECT_EQ(book.records.count(), 10u);
}

TEST_F(UndoStackTest, RedoNeverReachesTheLastTwoSlots) {
  book.undoLevel = 99;
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(CommitText(book, 0, 2, std::to_string(i), Cell(0, 2)), EntryResult::kWritten);
  }
  ASSERT_EQ(book.undoTop, 99);
  ASSERT_TRUE(stack->Undo().applied);
  ASSERT_TRUE(stack->Undo().applied);
  ASSERT_EQ(book.undoTop, 97);
  EXPECT_TRUE(stack->CanRedo());  // slot 98
  ASSERT_TRUE(stack->Redo().applied);
  EXPECT_EQ(book.undoTop, 98);
  EXPECT_NE(book.undoSlots[99].kind, undo_kind::kNone);
  EXPECT_FALSE(stack->CanRedo());
  EXPECT_EQ(At(0, 2), "'98'");
}

// A record moved by hand: opened, filled, the original removed, in a nested group, between two
// ordinary edits that stay steps of their own.
TEST_F(UndoStackTest, AGroupUndoesAndRedoesAsOneStep) {
  ASSERT_EQ(CommitText(book, 0, 0, "before", Cell(0, 0)), EntryResult::kWritten);
  const std::string start = Bytes();
  {
    UndoGroup outer(book.undo);
    ASSERT_TRUE(InsertRecords(book, 1, 1, nullptr, Cell(1, 0)));
    {
      UndoGroup inner(book.undo);
      ASSERT_EQ(CommitText(book, 1, 0, "moved", Cell(1, 0)), EntryResult::kWritten);
      ASSERT_EQ(CommitText(book, 1, 1, "7", Cell(1, 1)), EntryResult::kWritten);
    }
    ASSERT_TRUE(RemoveRecords(book, 6, 6, Cell(6, 0)));
  }
  const std::string moved = Bytes();
  ASSERT_EQ(CommitText(book, 2, 0, "after", Cell(2, 0)), EntryResult::kWritten);

  ASSERT_TRUE(stack->Undo().applied);  // "after"
  EXPECT_TRUE(Bytes() == moved);
  UndoOutcome undone = stack->Undo();
  ASSERT_TRUE(undone.applied);
  EXPECT_TRUE(Bytes() == start);
  EXPECT_EQ(undone.selection.activeRecord, 1u);
  EXPECT_EQ(At(0, 0), "'before'");
  ASSERT_TRUE(stack->CanUndo());
  ASSERT_TRUE(stack->Redo().applied);
  EXPECT_TRUE(Bytes() == moved);
  EXPECT_EQ(At(1, 0), "'moved'");
  // The edit after the group is still there to redo, alone.
  ASSERT_TRUE(stack->Redo().applied);
  EXPECT_EQ(At(2, 0), "'after'");
  EXPECT_FALSE(stack->CanRedo());
}

TEST_F(UndoStackTest, RemovedRecordsGoBackToTheirPlacesInASortedSet) {
  ASSERT_EQ(SortByFields(Table(), 1, 1, false, false), 0);
  ASSERT_TRUE(RunSearch(book));
  std::vector<uint32_t> sorted = Set();
  std::string before = Bytes();
  UndoContext c = Cell(2, 0);
  c.lastRecord = 6;
  ASSERT_TRUE(RemoveRecords(book, 2, 6, c));
  EXPECT_EQ(book.records.count(), 5u);
  ASSERT_TRUE(stack->Undo().applied);
  EXPECT_EQ(Set(), sorted);
  EXPECT_TRUE(Bytes() == before);
  ASSERT_TRUE(stack->Undo().applied);  // the sort
  EXPECT_TRUE(book.records.ordered());
  EXPECT_FALSE(stack->CanUndo());
}

TEST_F(UndoStackTest, ARecordSetStepRestoresTheSetAndTheKeys) {
  std::vector<uint32_t> all = Set();
  ASSERT_TRUE(FindDuplicates(Table(), book.records, 0, 0));
  std::vector<uint32_t> duplicates = Set();
  EXPECT_LT(duplicates.size(), all.size());
  ASSERT_TRUE(stack->Undo().applied);
  EXPECT_EQ(Set(), all);
  ASSERT_TRUE(stack->Redo().applied);
  EXPECT_EQ(Set(), duplicates);
}

TEST_F(UndoStackTest, AResetFreesEverySlotAndASaveTouchesNone) {
  ASSERT_EQ(CommitText(book, 0, 0, "x", Cell(0, 0)), EntryResult::kWritten);
  ASSERT_TRUE(RemoveRecords(book, 1, 3, Cell(1, 0)));
  Bytes();
  EXPECT_EQ(book.undoTop, 1);
  EXPECT_GT(stack->HeldBytes(), 0u);
  book.Clear();
  EXPECT_EQ(book.undoTop, -1);
  EXPECT_EQ(stack->HeldBytes(), 0u);
  EXPECT_FALSE(stack->CanUndo());
}

// One-cell edits hold the old cells and nothing else.
class UndoMemoryTest : public testing::TableTest {};

TEST_F(UndoMemoryTest, OneCellEditsHoldOnlyTheOldCells) {
  MakeTable({testing::Field("A", FieldType::kText)});
  ASSERT_TRUE(RefreshCurrentTable(book));
  UndoStack stack(book);
  book.undoLevel = 99;
  size_t oldCells = 0;
  for (uint32_t i = 0; i < 100; ++i) {
    CellRecord* old = Data().cells.GetCell(0, 0);
    oldCells += 3 + (old != nullptr ? cell::Size(old) : 0);
    ASSERT_EQ(CommitText(book, 0, 0, "value " + std::to_string(i)), EntryResult::kWritten);
  }
  EXPECT_EQ(book.undoTop, 99);
  EXPECT_EQ(stack.HeldBytes(), oldCells);
}

}  // namespace
}  // namespace kelpdex
