// A document with two tables, an undo stack, and its binary form as bytes, for the undo tests.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "persist/binary_format.h"
#include "persist/file_stream.h"
#include "search/run_filters.h"
#include "support/recording_prompter.h"
#include "support/temp_dir.h"
#include "table/cell_entry.h"
#include "table/records.h"
#include "table/table_fixture.h"
#include "undo/undo_stack.h"

namespace kelpdex::testing {

class UndoTest : public TableTest {
 protected:
  // Table "T": Name, Qty, Note, and two fields calculated from the record itself; `records`
  // records of them; and a small second table "U".
  void MakeDocument(uint32_t records) {
    MakeTable({Field("Name", FieldType::kText), Field("Qty", FieldType::kNumber),
               Field("Note", FieldType::kText, "V:none"),
               Field("Twice", FieldType::kNumber, "F:=Qty*2"),
               Field("Shout", FieldType::kText, "F:=upper(Name)&\"!\"")});
    ASSERT_TRUE(RefreshCurrentTable(book));
    const char* names[] = {"ant", "bee", "cat", "dog", "eel", "fox", "gnu"};
    for (uint32_t r = 0; r < records; ++r) {
      ASSERT_EQ(CommitText(book, r, 0, std::string(names[r % 7]) + std::to_string(r % 13)),
                EntryResult::kWritten);
      ASSERT_EQ(CommitText(book, r, 1, std::to_string((r * 37) % 101)), EntryResult::kWritten);
      if (r % 3 == 0) {
        ASSERT_EQ(CommitText(book, r, 2, "note " + std::to_string(r)), EntryResult::kWritten);
      }
    }
    ASSERT_TRUE(AddTable(book, "U"));
    ASSERT_TRUE(InsertField(book, 0, Field("Code", FieldType::kText)));
    for (uint32_t r = 0; r < 5; ++r) {
      ASSERT_EQ(CommitText(book, r, 0, "c" + std::to_string(r)), EntryResult::kWritten);
    }
    book.currentSheet = book.FindTable("T");
    ASSERT_TRUE(RefreshCurrentTable(book) && RunSearch(book));
    stack = std::make_unique<UndoStack>(book);
  }
  void TearDown() override { stack.reset(); }

  // The document as a binary file holds it, but for which table is current: switching tables is
  // no change that undo takes back.
  std::string Bytes() {
    std::string path = dir.Path("doc.kpb");
    Worksheet* current = book.currentSheet;
    book.currentSheet = nullptr;
    // Straight through a stream: the safe writer's wait for the disk would dominate the runs.
    FileStream stream;
    EXPECT_TRUE(stream.Open(path, StreamMode::kWrite, false)) << stream.error();
    EXPECT_TRUE(WriteBinaryDocument(stream, book) && stream.Close());
    book.currentSheet = current;
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  std::vector<uint32_t> Set() {
    return std::vector<uint32_t>(book.records.rows(), book.records.rows() + book.records.count());
  }
  UndoContext Cell(uint32_t record, uint16_t field) {
    UndoContext c;
    c.firstColumn = c.lastColumn = c.activeColumn = field;
    c.firstRecord = c.lastRecord = c.activeRecord = record;
    return c;
  }

  TempDir dir;
  std::unique_ptr<UndoStack> stack;
};

}  // namespace kelpdex::testing
