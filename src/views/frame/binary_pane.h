// The binary-field pane: beside the grid, the Long Text or Images/Files value of the current
// record, the current field's when it is such a field and otherwise the table's first one. It
// splits in two like the grid, the second view showing the next such field.
#pragma once

#include <QWidget>
#include <array>
#include <cstdint>

#include "store/workbook.h"

class QLabel;
class QListWidget;
class QPlainTextEdit;
class QSplitter;
class QStackedWidget;

namespace kelpdex::views {

class GridView;

class BinaryPanes : public QWidget {
  Q_OBJECT

 public:
  explicit BinaryPanes(QWidget* parent = nullptr);

  // Fills the views from the grid's current record; false when the table has no Long Text or
  // Images/Files field, and the pane then has nothing to show.
  bool ShowRecord(Workbook& book, const GridView& grid);
  // 0 one view, 1 two views one above the other, 2 side by side.
  void SetSplit(int mode);
  int split() const { return split_; }
  // The field and text a view shows, for the tests: -1 and empty when it shows none.
  int shownField(int view) const { return views_[view].field; }
  QString shownText(int view) const;

 private:
  struct View {
    QWidget* box = nullptr;
    QLabel* title = nullptr;
    QStackedWidget* stack = nullptr;
    QPlainTextEdit* text = nullptr;
    QListWidget* files = nullptr;
    int field = -1;
  };
  void Fill(View& view, Workbook& book, const GridView& grid, uint16_t field);

  QSplitter* splitter_ = nullptr;
  std::array<View, 2> views_;
  int split_ = 0;
};

}  // namespace kelpdex::views
