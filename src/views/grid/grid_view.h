// The table grid: the records of the current table as rows and its fields as columns, painted
// straight from the record set for the visible rows only, with the two-part header, in-place
// editing through CommitText, the keyboard and mouse a spreadsheet user expects, and the
// clipboard.
#pragma once

#include <QAbstractScrollArea>
#include <QColor>
#include <QFont>
#include <QPointer>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/session_settings.h"
#include "format/cell_text.h"
#include "search/navigation.h"
#include "store/undo_recorder.h"
#include "store/workbook.h"
#include "views/grid/grid_geometry.h"

class QLineEdit;
class QListWidget;

namespace kelpdex::views {

class GridEditor;

// How a cell of one style is drawn; made once per style when it first shows.
struct CellLook {
  QFont font;
  QColor text;
  QColor fill;  // invalid: no fill
  QColor border;
  uint8_t borders = 0;        // 1 top, 2 bottom, 4 left, 8 right
  int horizontal = 0;         // 0 by the value, 1 left, 2 centre, 3 right
  int vertical = 0;           // 0 centre, 1 top, 2 bottom
  int rotation = 0;           // degrees
  uint16_t dropDownList = 0;  // 1-based slot, 0 none
  bool autoComplete = false;
  bool autoAppend = false;
};

// Moves after a commit: none, the four arrow steps, and Enter.
namespace move_mode {
constexpr int kNone = 0;
constexpr int kLeft = 1;
constexpr int kRight = 2;
constexpr int kUp = 3;
constexpr int kDown = 4;
constexpr int kEnter = 5;
}  // namespace move_mode

class GridView : public QAbstractScrollArea {
  Q_OBJECT

 public:
  explicit GridView(QWidget* parent = nullptr);
  ~GridView() override;

  // The document the grid shows; null leaves an empty grid.
  void SetDocument(Workbook* book, const SessionSettings* settings);
  // After a table switch, a schema change or a new record set: the fields are read again, the
  // table's saved state is taken over and clamped.
  void Rebuild();
  // Rebuild for the same table: the selection and scroll state stay as they are.
  void Refresh();
  // Only the painting caches (styles, formatters): after a locale change or a style edit.
  void InvalidateLooks();
  // Keeps the selection and scroll state in the table's sheet settings, for the next switch back.
  void StoreState();

  uint16_t fieldCount() const { return fieldCount_; }
  FieldType fieldType(uint16_t field) const { return fields_[field].type; }
  const std::string& fieldName(uint16_t field) const { return fields_[field].name; }
  const GridSelection& selection() const { return selection_; }
  uint16_t activeField() const { return activeField_; }
  uint32_t activePosition() const { return activePosition_; }
  uint32_t topPosition() const { return topPosition_; }
  uint16_t frozenFields() const { return frozen_; }
  // The selection as the logic's commands take it.
  UndoContext Context() const;
  // Selects a rectangle (anchor at its first corner) and scrolls it into view.
  void SetSelection(const GridSelection& selection);
  // Moves the current cell; with `extend` the selection grows from the anchor instead.
  void MoveTo(int field, int64_t position, bool extend = false);
  void SetFrozenFields(uint16_t count);
  void ScrollToPosition(uint32_t position);
  int VisibleRecordCount() const;

  // In-place editing. StartEdit refuses silently for Long Text, Images/Files and calculated
  // fields; CommitEdit is the one way typed text reaches a cell and does nothing without an edit.
  bool StartEdit(const QString& initial, bool keepText);
  bool CommitEdit(int moveMode);
  void CancelEdit();
  bool editing() const { return editing_; }
  QLineEdit* editor() const;
  QListWidget* dropDown() const { return dropDown_; }

  // The clipboard: plain text with the quoting rule and the native form.
  void CopySelection();
  bool PasteClipboard();
  // Delete: the selection's cells emptied as one undo step.
  void ClearSelection();
  // Drag and drop of records: the selected records go before position `target`, moved or
  // copied; dropped cells from elsewhere come in as new records there.
  bool MoveRecords(uint32_t target, bool copy);
  bool DropCells(uint32_t position, const std::string& text, bool native);
  // Split panes share one selection: takes over another pane's selection and current cell
  // without scrolling this pane.
  void FollowSelection(const GridView& other);
  // Everything of another pane but its scroll place: document, fields, selection, frozen
  // fields. A pane that showed nothing yet takes the scroll place too.
  void FollowPane(const GridView& other);

  // The address a click on this cell follows; empty when it is no link.
  std::string LinkAt(uint16_t field, uint32_t position);

  // The cell's text as it is shown (the code page's bytes).
  std::string DisplayText(uint16_t field, uint32_t position);
  // Client rectangle of a cell, for tests and the editor.
  QRect CellRect(uint16_t field, uint32_t position) const;
  const VisibleColumns& columns() const { return columns_; }

  // Where commands the grid does not run itself go (Delete, Ctrl+Enter, the header's menus).
  std::function<void(int id)> commandHook;
  // Opens a link; the default goes to QDesktopServices.
  std::function<void(const QString& url)> linkOpener;

 signals:
  void documentChanged();
  void selectionChanged();
  void filterRequested(int field);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  bool viewportEvent(QEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  friend class GridEditor;
  struct FieldInfo {
    std::string name;
    std::string filter;  // the filter in force as its formula, without "="
    FieldType type = FieldType::kText;
    bool link = false;
    bool calculated = false;
  };

  Worksheet* data() const { return book_ != nullptr ? book_->currentSheet : nullptr; }
  uint32_t recordCount() const { return book_ != nullptr ? book_->records.count() : 0; }
  const CellLook& LookOf(uint16_t style);
  const CellFormatter& FormatterOf(uint16_t style);
  void Relayout();
  void UpdateScrollRanges();
  void EnsureVisible(uint16_t field, uint32_t position);
  // Position under a client y, or -1 in the header; past the rows drawn it counts on with the
  // default height.
  int64_t PositionAt(int y) const;
  int FieldAt(int x) const;
  void MoveAfterCommit(int moveMode);
  void PlaceEditor();
  void OnEditorTextEdited(const QString& text);
  void PaintHeader(QPainter& painter, const QRect& client);
  void PaintRows(QPainter& painter, const QRect& client);
  void PaintCell(QPainter& painter, const QRect& cell, uint16_t field, uint32_t row, bool selected);
  bool PasteText(const std::string& text, bool native);
  QString CopyText(bool native);
  bool OnSelectionFrame(const QPoint& at) const;
  void StartRecordDrag();
  bool OpenRecordsAt(uint32_t position, uint32_t count);

  Workbook* book_ = nullptr;
  const SessionSettings* settings_ = nullptr;
  std::vector<FieldInfo> fields_;
  uint16_t fieldCount_ = 0;
  GridSelection selection_;
  uint16_t anchorField_ = 0;
  uint32_t anchorPosition_ = 0;
  uint16_t activeField_ = 0;
  uint32_t activePosition_ = 0;
  uint32_t topPosition_ = 0;
  uint16_t firstScrolled_ = 0;
  uint16_t frozen_ = 0;
  VisibleColumns columns_;
  std::vector<std::unique_ptr<CellLook>> looks_;
  std::vector<std::unique_ptr<CellFormatter>> formatters_;
  // Mouse state: a column or record being resized, or a selection being dragged out.
  int resizingField_ = -1;
  int64_t resizingRow_ = -1;
  int resizeOrigin_ = 0;
  int resizeStart_ = 0;
  bool selecting_ = false;
  // A press on the selection's frame: the drag starts once the mouse has moved far enough.
  bool dragPending_ = false;
  QPoint dragOrigin_;
  // The edit.
  GridEditor* editor_ = nullptr;
  QListWidget* dropDown_ = nullptr;
  bool editing_ = false;
  uint16_t editField_ = 0;
  uint32_t editPosition_ = 0;
  const CellLook* editLook_ = nullptr;
};

}  // namespace kelpdex::views
