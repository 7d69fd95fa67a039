#include "views/grid/grid_view.h"

#include <QApplication>
#include <QDesktopServices>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QMouseEvent>
#include <QScrollBar>
#include <QUrl>
#include <algorithm>

#include "search/filter_text.h"
#include "search/search_keys.h"
#include "store/bytes.h"
#include "store/catalogue.h"
#include "store/field_row.h"
#include "store/sheet_records.h"
#include "table/layout.h"
#include "table/table_state.h"
#include "text/utf8.h"

namespace kelpdex::views {

namespace {

constexpr uint32_t kLastPosition = RecordSet::kEntries - 1;

template <typename T>
T Clamp(int64_t value, T low, T high) {
  return static_cast<T>(std::clamp<int64_t>(value, low, high));
}

}  // namespace

GridView::GridView(QWidget* parent) : QAbstractScrollArea(parent) {
  setFocusPolicy(Qt::StrongFocus);
  viewport()->setMouseTracking(true);
  setAcceptDrops(true);
  viewport()->setAcceptDrops(true);
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
  verticalScrollBar()->setSingleStep(1);
  horizontalScrollBar()->setSingleStep(1);
  linkOpener = [](const QString& url) { QDesktopServices::openUrl(QUrl(url)); };
}

GridView::~GridView() = default;

void GridView::SetDocument(Workbook* book, const SessionSettings* settings) {
  CancelEdit();
  book_ = book;
  settings_ = settings;
  Rebuild();
}

void GridView::InvalidateLooks() {
  looks_.clear();
  formatters_.clear();
  viewport()->update();
}

void GridView::Rebuild() {
  CancelEdit();
  InvalidateLooks();
  fields_.clear();
  fieldCount_ = 0;
  TableSpec table;
  if (book_ != nullptr && book_->firstNode != nullptr && book_->currentSheet != nullptr &&
      CurrentTable(*book_, table)) {
    fieldCount_ = FieldCount(table);
    fields_.resize(fieldCount_);
    char formula[kFilterFormulaRoom];
    for (uint16_t f = 0; f < fieldCount_; ++f) {
      FieldSpec fieldRow;
      if (!ReadField(table, f, fieldRow)) continue;
      FieldInfo& info = fields_[f];
      info.name = fieldRow.name;
      info.type = fieldRow.type;
      info.link = fieldRow.link;
      info.calculated = f < book_->fieldDefaults.size() && book_->fieldDefaults[f].IsCalculated();
      std::string filter = GetKeyFilterText(table, 0, f);
      size_t length =
          filter.empty() ? 0 : BuildFilterFormula(fieldRow.name, fieldRow.type, filter, formula);
      std::string_view shown(formula, length);
      if (!shown.empty() && shown[0] == '=') shown.remove_prefix(1);
      info.filter = std::string(shown);
    }
    // The table's own state, as it was left, clamped to what the table has now.
    const uint8_t* s = table.data->sheetSettings.data();
    uint16_t lastField = fieldCount_ == 0 ? 0 : static_cast<uint16_t>(fieldCount_ - 1);
    uint32_t lastRecord = std::min(recordCount(), kLastPosition);
    selection_.firstField =
        Clamp<uint16_t>(LoadU32(s + sheet_settings::kSelectionFirstColumnAt), 0, lastField);
    selection_.lastField = Clamp<uint16_t>(LoadU32(s + sheet_settings::kSelectionLastColumnAt),
                                           selection_.firstField, lastField);
    selection_.firstPosition =
        Clamp<uint32_t>(LoadU32(s + sheet_settings::kSelectionFirstRowAt), 0, lastRecord);
    selection_.lastPosition = Clamp<uint32_t>(LoadU32(s + sheet_settings::kSelectionLastRowAt),
                                              selection_.firstPosition, lastRecord);
    frozen_ = (s[sheet_settings::kFreezeFlagsAt] & 8) != 0
                  ? Clamp<uint16_t>(LoadU32(s + sheet_settings::kFreezeColumnAt), 0, lastField)
                  : 0;
    topPosition_ = Clamp<uint32_t>(LoadU32(s + sheet_settings::kTopLeftRowAt), 0, lastRecord);
    firstScrolled_ = Clamp<uint16_t>(LoadU32(s + sheet_settings::kTopLeftColumnAt), frozen_,
                                     std::max(frozen_, lastField));
  } else {
    selection_ = GridSelection();
    topPosition_ = 0;
    firstScrolled_ = 0;
    frozen_ = 0;
  }
  anchorField_ = activeField_ = selection_.firstField;
  anchorPosition_ = activePosition_ = selection_.firstPosition;
  UpdateScrollRanges();
  Relayout();
  emit selectionChanged();
}

void GridView::Refresh() {
  StoreState();
  Rebuild();
}

void GridView::StoreState() {
  Worksheet* sheet = data();
  if (sheet == nullptr || book_->firstNode == nullptr) return;
  uint8_t* s = sheet->sheetSettings.data();
  StoreU32(s + sheet_settings::kSelectionFirstColumnAt, selection_.firstField);
  StoreU32(s + sheet_settings::kSelectionLastColumnAt, selection_.lastField);
  StoreU32(s + sheet_settings::kSelectionFirstRowAt, selection_.firstPosition);
  StoreU32(s + sheet_settings::kSelectionLastRowAt, selection_.lastPosition);
  StoreU32(s + sheet_settings::kTopLeftRowAt, topPosition_);
  StoreU32(s + sheet_settings::kTopLeftColumnAt, firstScrolled_);
  StoreU32(s + sheet_settings::kFreezeColumnAt, frozen_);
  s[sheet_settings::kFreezeFlagsAt] =
      static_cast<uint8_t>((s[sheet_settings::kFreezeFlagsAt] & ~8) | (frozen_ != 0 ? 8 : 0));
}

UndoContext GridView::Context() const {
  UndoContext c;
  c.firstColumn = selection_.firstField;
  c.lastColumn = selection_.lastField;
  c.firstRecord = selection_.firstPosition;
  c.lastRecord = selection_.lastPosition;
  c.activeColumn = activeField_;
  c.activeRecord = activePosition_;
  return c;
}

void GridView::SetSelection(const GridSelection& s) {
  if (fieldCount_ == 0) return;
  uint16_t lastField = static_cast<uint16_t>(fieldCount_ - 1);
  selection_.firstField = std::min(s.firstField, lastField);
  selection_.lastField = std::clamp(s.lastField, selection_.firstField, lastField);
  selection_.firstPosition = std::min(s.firstPosition, kLastPosition);
  selection_.lastPosition = std::clamp(s.lastPosition, selection_.firstPosition, kLastPosition);
  anchorField_ = activeField_ = selection_.firstField;
  anchorPosition_ = activePosition_ = selection_.firstPosition;
  EnsureVisible(activeField_, activePosition_);
  viewport()->update();
  emit selectionChanged();
}

void GridView::FollowSelection(const GridView& other) {
  if (&other == this || fieldCount_ != other.fieldCount_) return;
  selection_ = other.selection_;
  anchorField_ = other.anchorField_;
  anchorPosition_ = other.anchorPosition_;
  activeField_ = other.activeField_;
  activePosition_ = other.activePosition_;
  viewport()->update();
}

void GridView::FollowPane(const GridView& other) {
  if (&other == this) return;
  const bool fresh = book_ == nullptr;
  const uint32_t top = topPosition_;
  const uint16_t scrolled = firstScrolled_;
  QSignalBlocker quiet(this);
  book_ = other.book_;
  settings_ = other.settings_;
  Rebuild();
  selection_ = other.selection_;
  anchorField_ = other.anchorField_;
  anchorPosition_ = other.anchorPosition_;
  activeField_ = other.activeField_;
  activePosition_ = other.activePosition_;
  frozen_ = other.frozen_;
  topPosition_ = fresh ? other.topPosition_ : std::min(top, kLastPosition);
  firstScrolled_ =
      fresh ? other.firstScrolled_
            : Clamp<uint16_t>(scrolled, frozen_, std::max<int>(frozen_, fieldCount_ - 1));
  UpdateScrollRanges();
  Relayout();
}

void GridView::MoveTo(int field, int64_t position, bool extend) {
  if (fieldCount_ == 0) return;
  activeField_ = Clamp<uint16_t>(field, 0, fieldCount_ - 1);
  activePosition_ = Clamp<uint32_t>(position, 0, kLastPosition);
  if (!extend) {
    anchorField_ = activeField_;
    anchorPosition_ = activePosition_;
  }
  selection_.firstField = std::min(anchorField_, activeField_);
  selection_.lastField = std::max(anchorField_, activeField_);
  selection_.firstPosition = std::min(anchorPosition_, activePosition_);
  selection_.lastPosition = std::max(anchorPosition_, activePosition_);
  EnsureVisible(activeField_, activePosition_);
  viewport()->update();
  emit selectionChanged();
}

void GridView::SetFrozenFields(uint16_t count) {
  frozen_ = std::min(count, fieldCount_);
  firstScrolled_ = std::max(firstScrolled_, frozen_);
  StoreState();
  UpdateScrollRanges();
  Relayout();
}

int GridView::VisibleRecordCount() const {
  int height = viewport()->height() - kHeaderHeight;
  Worksheet* sheet = data();
  if (sheet == nullptr || book_ == nullptr || !book_->records.allocated()) {
    return std::max(1, height / (kDefaultRecordHeight + kGridLine));
  }
  int rows = 0;
  for (uint32_t p = topPosition_; p < RecordSet::kEntries && height > 0; ++p, ++rows) {
    height -= RecordHeight(*sheet, book_->records[p]) + kGridLine;
  }
  return std::max(1, rows - (height < 0 ? 1 : 0));
}

void GridView::ScrollToPosition(uint32_t position) {
  UpdateScrollRanges();
  verticalScrollBar()->setValue(static_cast<int>(std::min(position, kLastPosition)));
}

void GridView::UpdateScrollRanges() {
  // The scroll range is the record count, and the empty rows beyond it grow it as they are
  // visited: a record can be typed anywhere below the last one.
  int visible = VisibleRecordCount();
  int64_t maximum = std::max<int64_t>({recordCount(), activePosition_, topPosition_});
  QScrollBar* v = verticalScrollBar();
  QSignalBlocker block(v);
  v->setRange(0, static_cast<int>(std::min<int64_t>(maximum, kLastPosition)));
  v->setPageStep(visible);
  v->setValue(static_cast<int>(topPosition_));
  QScrollBar* h = horizontalScrollBar();
  QSignalBlocker blockH(h);
  h->setRange(frozen_, std::max<int>(frozen_, fieldCount_ - 1));
  h->setPageStep(std::max(1, columns_.count - frozen_));
  h->setValue(firstScrolled_);
}

void GridView::Relayout() {
  Worksheet* sheet = data();
  if (sheet == nullptr || fieldCount_ == 0) {
    columns_.count = 0;
  } else {
    LayoutColumns(*sheet, fieldCount_, frozen_, firstScrolled_, viewport()->width(), columns_);
  }
  if (editing_) PlaceEditor();
  viewport()->update();
}

void GridView::EnsureVisible(uint16_t field, uint32_t position) {
  if (position < topPosition_) {
    topPosition_ = position;
  } else {
    int visible = VisibleRecordCount();
    if (position >= topPosition_ + static_cast<uint32_t>(visible)) {
      topPosition_ = position - static_cast<uint32_t>(visible) + 1;
    }
  }
  if (field >= frozen_) {
    if (field < firstScrolled_) {
      firstScrolled_ = field;
    } else {
      // Scroll right until the field's column ends inside the client.
      Relayout();
      for (;;) {
        bool whole = false;
        for (int i = 0; i < columns_.count; ++i) {
          const ColumnSpan& c = columns_.spans[i];
          if (c.field == field) whole = c.left + c.width <= viewport()->width() || i == frozen_;
        }
        if (whole || firstScrolled_ >= field) break;
        ++firstScrolled_;
        Relayout();
      }
    }
  }
  UpdateScrollRanges();
  Relayout();
}

void GridView::resizeEvent(QResizeEvent* event) {
  QAbstractScrollArea::resizeEvent(event);
  UpdateScrollRanges();
  Relayout();
}

void GridView::scrollContentsBy(int, int) {
  topPosition_ = static_cast<uint32_t>(verticalScrollBar()->value());
  firstScrolled_ = static_cast<uint16_t>(std::max<int>(frozen_, horizontalScrollBar()->value()));
  Relayout();
}

int64_t GridView::PositionAt(int y) const {
  if (y < kHeaderHeight) return -1;
  Worksheet* sheet = data();
  int top = kHeaderHeight;
  for (uint32_t p = topPosition_; p < RecordSet::kEntries; ++p) {
    int height = sheet != nullptr && book_->records.allocated()
                     ? RecordHeight(*sheet, book_->records[p])
                     : kDefaultRecordHeight;
    if (y < top + height + kGridLine) return p;
    top += height + kGridLine;
  }
  return kLastPosition;
}

int GridView::FieldAt(int x) const {
  for (int i = 0; i < columns_.count; ++i) {
    const ColumnSpan& c = columns_.spans[i];
    if (x >= c.left && x <= c.left + c.width) return c.field;
  }
  return -1;
}

QRect GridView::CellRect(uint16_t field, uint32_t position) const {
  int x = -1, width = 0;
  for (int i = 0; i < columns_.count; ++i) {
    if (columns_.spans[i].field == field) {
      x = columns_.spans[i].left;
      width = columns_.spans[i].width;
    }
  }
  if (x < 0 || position < topPosition_) return {};
  Worksheet* sheet = data();
  int top = kHeaderHeight;
  for (uint32_t p = topPosition_; p < position; ++p) {
    top += RecordHeight(*sheet, book_->records[p]) + kGridLine;
    if (top > viewport()->height()) return {};
  }
  return QRect(x, top, width, RecordHeight(*sheet, book_->records[position]));
}

void GridView::keyPressEvent(QKeyEvent* event) {
  if (fieldCount_ == 0 || book_ == nullptr || book_->firstNode == nullptr) {
    QAbstractScrollArea::keyPressEvent(event);
    return;
  }
  const bool shift = event->modifiers() & Qt::ShiftModifier;
  const bool ctrl = event->modifiers() & Qt::ControlModifier;
  const int page = VisibleRecordCount();
  const int64_t f = activeField_, p = activePosition_;
  switch (event->key()) {
    case Qt::Key_Left:
      return MoveTo(static_cast<int>(f - 1), p, shift);
    case Qt::Key_Right:
      return MoveTo(static_cast<int>(f + 1), p, shift);
    case Qt::Key_Up:
      if (ctrl) break;  // Ctrl+Up changes table
      return MoveTo(static_cast<int>(f), p - 1, shift);
    case Qt::Key_Down:
      if (ctrl) break;
      return MoveTo(static_cast<int>(f), p + 1, shift);
    case Qt::Key_PageUp:
      return MoveTo(static_cast<int>(f), p - page, shift);
    case Qt::Key_PageDown:
      return MoveTo(static_cast<int>(f), p + page, shift);
    case Qt::Key_Home:
      return MoveTo(0, ctrl ? 0 : p, shift);
    case Qt::Key_End:
      return MoveTo(fieldCount_ - 1, ctrl ? std::max<int64_t>(recordCount(), 1) - 1 : p, shift);
    case Qt::Key_Tab:
      return MoveTo(static_cast<int>(f + 1), p);
    case Qt::Key_Backtab:
      return MoveTo(static_cast<int>(f - 1), p);
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (ctrl) {
        if (commandHook) commandHook(33113);
        return;
      }
      return MoveTo(static_cast<int>(f), p + 1);
    case Qt::Key_F2:
      StartEdit(QString::fromUtf8(text::Cp1252ToUtf8(DisplayText(activeField_, activePosition_))),
                true);
      return;
    case Qt::Key_Delete:
      if (commandHook) {
        commandHook(57632);
      } else {
        ClearSelection();
      }
      return;
    default:
      break;
  }
  QString typed = event->text();
  if (!ctrl && !typed.isEmpty() && typed.at(0).isPrint()) {
    StartEdit(typed, false);
    return;
  }
  QAbstractScrollArea::keyPressEvent(event);
}

bool GridView::viewportEvent(QEvent* event) {
  // Tab is the grid's own key: it moves to the next field rather than to the next widget.
  if (event->type() == QEvent::KeyPress) {
    auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab) {
      keyPressEvent(key);
      return true;
    }
  }
  return QAbstractScrollArea::viewportEvent(event);
}

void GridView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || fieldCount_ == 0) {
    QAbstractScrollArea::mousePressEvent(event);
    return;
  }
  CommitEdit(move_mode::kNone);
  const QPoint at = event->position().toPoint();
  const bool shift = event->modifiers() & Qt::ShiftModifier;
  if (at.y() < kHeaderHeight) {
    HeaderHit hit = HitTestField(at.x(), at.y(), columns_);
    if (hit.resizeField >= 0) {
      resizingField_ = hit.resizeField;
      resizeOrigin_ = at.x();
      resizeStart_ = FieldWidth(*data(), static_cast<uint16_t>(hit.resizeField));
      return;
    }
    if (hit.field < 0) return;
    // A click on the name selects the whole field; one on the filter row opens its filter.
    if (shift) {
      anchorPosition_ = 0;
      MoveTo(hit.field, std::max<int64_t>(recordCount(), 1) - 1, true);
    } else {
      MoveTo(hit.field, 0);
      anchorPosition_ = 0;
      MoveTo(hit.field, std::max<int64_t>(recordCount(), 1) - 1, true);
    }
    if (at.y() >= kNameRowHeight) emit filterRequested(hit.field);
    return;
  }
  int64_t position = PositionAt(at.y());
  if (at.x() < kRowHeaderWidth) {
    // The lower edge of a record's number resizes it.
    QRect cell =
        CellRect(columns_.count > 0 ? columns_.spans[0].field : 0, static_cast<uint32_t>(position));
    if (cell.isValid() && at.y() >= cell.bottom() - kResizeMargin) {
      resizingRow_ = position;
      resizeOrigin_ = at.y();
      resizeStart_ = cell.height();
      return;
    }
    if (!shift) MoveTo(0, position);
    MoveTo(fieldCount_ - 1, position, true);
    return;
  }
  int field = FieldAt(at.x());
  if (field < 0) return;
  if (!shift && OnSelectionFrame(at)) {
    dragPending_ = true;
    dragOrigin_ = at;
    return;
  }
  MoveTo(field, position, shift);
  selecting_ = true;
  // A link follows on a click on its text.
  if (!shift && fields_[field].link) {
    std::string url = LinkAt(static_cast<uint16_t>(field), static_cast<uint32_t>(position));
    if (!url.empty() && linkOpener) linkOpener(QString::fromUtf8(text::Cp1252ToUtf8(url)));
  }
}

void GridView::mouseMoveEvent(QMouseEvent* event) {
  const QPoint at = event->position().toPoint();
  if (resizingField_ >= 0) {
    int width = std::clamp(resizeStart_ + at.x() - resizeOrigin_, 4, int{kMaxFieldWidth});
    data()
        ->formats.Column(static_cast<uint16_t>(resizingField_))
        .SetWidth(static_cast<uint16_t>(width), true);
    Relayout();
    return;
  }
  if (resizingRow_ >= 0) {
    viewport()->update();
    return;
  }
  if (dragPending_ && (event->buttons() & Qt::LeftButton)) {
    if ((at - dragOrigin_).manhattanLength() >= QApplication::startDragDistance()) {
      dragPending_ = false;
      StartRecordDrag();
    }
    return;
  }
  if (selecting_ && (event->buttons() & Qt::LeftButton)) {
    int field = FieldAt(at.x());
    int64_t position = PositionAt(at.y());
    if (field >= 0 && position >= 0) MoveTo(field, position, true);
    return;
  }
  HeaderHit hit = HitTestField(at.x(), at.y(), columns_);
  bool onRowEdge = false;
  if (at.x() < kRowHeaderWidth && at.y() >= kHeaderHeight && columns_.count > 0) {
    QRect cell = CellRect(columns_.spans[0].field, static_cast<uint32_t>(PositionAt(at.y())));
    onRowEdge = cell.isValid() && at.y() >= cell.bottom() - kResizeMargin;
  }
  viewport()->setCursor(hit.resizeField >= 0 ? Qt::SplitHCursor
                        : onRowEdge          ? Qt::SplitVCursor
                                             : Qt::ArrowCursor);
}

void GridView::mouseReleaseEvent(QMouseEvent* event) {
  const QPoint at = event->position().toPoint();
  if (resizingField_ >= 0) {
    // The drag drew the width live; the command makes it one undo step.
    uint16_t field = static_cast<uint16_t>(resizingField_);
    int width = std::clamp(resizeStart_ + at.x() - resizeOrigin_, 4, int{kMaxFieldWidth});
    data()->formats.Column(field).SetWidth(static_cast<uint16_t>(resizeStart_), true);
    UndoContext c = Context();
    c.firstColumn = c.lastColumn = field;
    if (SetFieldWidths(*book_, static_cast<uint16_t>(width), c)) emit documentChanged();
    resizingField_ = -1;
    Relayout();
    return;
  }
  if (resizingRow_ >= 0) {
    int height = std::clamp(resizeStart_ + at.y() - resizeOrigin_, 4, int{kMaxRecordHeight});
    UndoContext c = Context();
    c.firstRecord = c.lastRecord = static_cast<uint32_t>(resizingRow_);
    if (SetRecordHeights(*book_, static_cast<uint16_t>(height), c)) emit documentChanged();
    resizingRow_ = -1;
    Relayout();
    return;
  }
  if (dragPending_) {
    // A press on the frame that never became a drag is an ordinary click.
    dragPending_ = false;
    int field = FieldAt(at.x());
    int64_t position = PositionAt(at.y());
    if (field >= 0 && position >= 0) MoveTo(field, position);
  }
  selecting_ = false;
  QAbstractScrollArea::mouseReleaseEvent(event);
}

void GridView::mouseDoubleClickEvent(QMouseEvent* event) {
  const QPoint at = event->position().toPoint();
  if (at.y() < kHeaderHeight) {
    HeaderHit hit = HitTestField(at.x(), at.y(), columns_);
    if (hit.resizeField >= 0 && commandHook) {
      MoveTo(hit.resizeField, activePosition_);
      commandHook(32817);  // Auto Column Width
    }
    return;
  }
  if (FieldAt(at.x()) >= 0) {
    StartEdit(QString::fromUtf8(text::Cp1252ToUtf8(DisplayText(activeField_, activePosition_))),
              true);
  }
}

}  // namespace kelpdex::views
