// A main frame over a workbook built in the test, with a prompter that answers from a script.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <memory>
#include <string>
#include <vector>

#include "search/run_filters.h"
#include "store/catalogue.h"
#include "store/field_row.h"
#include "table/cell_entry.h"
#include "table/schema.h"
#include "table/table_state.h"
#include "views/frame/main_frame.h"
#include "views/frame/qt_prompter.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views::testing {

inline FieldSpec Field(const std::string& name, FieldType type, const std::string& formula = "",
                       bool link = false) {
  FieldSpec f;
  f.name = name;
  f.type = type;
  f.formulaOrValue = formula;
  f.link = link;
  return f;
}

class FrameTest : public ::testing::Test {
 protected:
  void SetUp() override {
    frame = std::make_unique<MainFrame>(book, settings);
    frame->resize(1000, 640);
    frame->show();
    // Accelerators reach only the active window.
    frame->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(frame.get()));
    // Every question is answered by the test; unanswered ones count as Cancel.
    frame->prompter().script = [this](const QString& text, unsigned) {
      asked.push_back(text);
      return nextAnswer;
    };
  }
  void TearDown() override { frame.reset(); }

  // A table with the fields given, shown in the frame as a document without a file.
  void MakeTable(const std::string& name, const std::vector<FieldSpec>& fields) {
    ASSERT_TRUE(CreateTable(book, name));
    book.currentSheet = book.FindTable(name);
    uint16_t at = 0;
    for (const FieldSpec& f : fields) ASSERT_TRUE(InsertField(book, at++, f));
    ASSERT_TRUE(RefreshCurrentTable(book));
  }
  void Show() {
    book.currentSheet = book.TableByIndex(0);
    frame->DocumentShown();
    book.modified = false;
  }
  void Put(uint32_t record, uint16_t field, const std::string& text) {
    ASSERT_EQ(CommitText(book, record, field, text), EntryResult::kWritten);
  }
  GridView& grid() { return frame->grid(); }
  std::string Shown(uint16_t field, uint32_t record) { return grid().DisplayText(field, record); }
  const CellRecord* Cell(uint16_t field, uint32_t record) {
    return book.currentSheet->cells.GetCellFast(book.records[record], field);
  }
  // Types into the cell through the real keys: the first key starts the edit, the rest go to
  // the edit control, and `end` finishes it.
  void Type(uint16_t field, uint32_t record, const QString& text, Qt::Key end = Qt::Key_Return) {
    grid().MoveTo(field, record);
    QTest::keyClicks(&grid(), text.left(1));
    ASSERT_TRUE(grid().editing());
    QTest::keyClicks(grid().editor(), text.mid(1));
    if (end != Qt::Key_unknown) QTest::keyClick(grid().editor(), end);
  }

  Workbook book;
  SessionSettings settings;
  std::unique_ptr<MainFrame> frame;
  std::vector<QString> asked;
  int nextAnswer = answer::kCancel;
};

}  // namespace kelpdex::views::testing
