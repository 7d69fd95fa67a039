// Painting: the header, then the visible rows from the first visible position, each cell read
// through the record set and shown through its style's formatter.
#include <QPaintEvent>
#include <QPainter>
#include <algorithm>

#include "document/side_value_text.h"
#include "store/bytes.h"
#include "store/style_table.h"
#include "text/utf8.h"
#include "views/grid/grid_view.h"
#include "views/grid/link_target.h"

namespace kelpdex::views {

namespace {

const QColor kHeaderFill(236, 236, 236);
const QColor kFilterFill(250, 246, 226);
const QColor kFilterText(130, 90, 0);
const QColor kGridColour(212, 212, 212);
const QColor kSelectionFill(204, 224, 255);
const QColor kCurrentFrame(40, 90, 200);
const QColor kLinkColour(0, 0, 205);
const QColor kFrozenLine(110, 110, 110);

QColor FromColorRef(uint32_t ref) {
  return QColor(ref & 0xFF, (ref >> 8) & 0xFF, (ref >> 16) & 0xFF);
}

QString FromCodePage(std::string_view text) {
  return QString::fromUtf8(text::Cp1252ToUtf8(text));
}

}  // namespace

const CellLook& GridView::LookOf(uint16_t styleId) {
  if (styleId >= looks_.size()) looks_.resize(styleId + 1u);
  std::unique_ptr<CellLook>& slot = looks_[styleId];
  if (slot) return *slot;
  slot = std::make_unique<CellLook>();
  CellLook& look = *slot;
  const uint8_t* b = book_->styles.Style(styleId).bytes;
  look.font = font();
  const uint8_t* f = book_->styles.Font(b[style::kFontSetAt] ? b[style::kFontIndexAt] : 0).bytes;
  std::string_view name(reinterpret_cast<const char*>(f + font::kNameAt),
                        strnlen(reinterpret_cast<const char*>(f + font::kNameAt), 128));
  if (b[style::kFontSetAt]) {
    if (!name.empty()) look.font.setFamily(FromCodePage(name));
    if (f[font::kSizeAt] != 0) look.font.setPointSize(f[font::kSizeAt]);
    look.font.setBold(f[font::kWeightAt] >= 2);
    look.font.setItalic(f[font::kItalicAt] != 0);
    look.font.setUnderline(f[font::kUnderlineAt] != 0);
    look.font.setStrikeOut(f[font::kStrikeoutAt] != 0);
  }
  look.text = b[style::kFontColourSetAt] ? FromColorRef(LoadU32(b + style::kFontColourAt))
                                         : QColor(Qt::black);
  if (b[style::kFillAt] != 0 && (b[style::kFillColourFlagsAt] & 1)) {
    look.fill = FromColorRef(LoadU32(b + style::kFillColourAt));
  }
  look.borders = b[style::kBordersAt] & 0x0F;
  look.border = b[style::kBorderColourSetAt] ? FromColorRef(LoadU32(b + style::kBorderColourAt))
                                             : QColor(Qt::black);
  switch (b[style::kHorizontalAt]) {
    case 1:
      look.horizontal = 1;
      break;
    case 2:
      look.horizontal = 2;
      break;
    case 3:
      look.horizontal = 3;
      break;
    default:
      look.horizontal = 0;
      break;
  }
  look.vertical = b[style::kVerticalAt] == 4 ? 1 : b[style::kVerticalAt] == 7 ? 2 : 0;
  look.rotation = static_cast<int16_t>(LoadU16(b + style::kRotationAt));
  look.dropDownList = LoadU16(b + style::kDropDownAt);
  look.autoComplete = b[style::kDropDownCompleteAt] != 0;
  look.autoAppend = b[style::kDropDownAppendAt] != 0;
  return look;
}

const CellFormatter& GridView::FormatterOf(uint16_t styleId) {
  if (styleId >= formatters_.size()) formatters_.resize(styleId + 1u);
  std::unique_ptr<CellFormatter>& slot = formatters_[styleId];
  if (!slot) slot = std::make_unique<CellFormatter>(ReadNumberStyle(book_->styles.Style(styleId)));
  return *slot;
}

std::string GridView::DisplayText(uint16_t field, uint32_t position) {
  Worksheet* sheet = data();
  if (sheet == nullptr || field >= fieldCount_ || position >= RecordSet::kEntries) return {};
  uint32_t row = book_->records[position];
  // A value typed since the last save waits in the pending list, with no cell yet.
  FieldType type = fields_[field].type;
  if (type == FieldType::kLongText || type == FieldType::kFiles) {
    std::string value;
    ErrorCode error = err::kNone;
    return SideValueText(*book_, *sheet, row, field, type, value, error) ? value : std::string();
  }
  const CellRecord* cell = sheet->cells.GetCellFast(row, field);
  if (cell == nullptr) return {};
  char shown[kDisplayTextMax];
  size_t length = FormatterOf(sheet->formats.StyleAt(row, field)).Display(cell, shown);
  return std::string(shown, length);
}

std::string GridView::LinkAt(uint16_t field, uint32_t position) {
  if (field >= fieldCount_ || !fields_[field].link) return {};
  return LinkTarget(DisplayText(field, position));
}

void GridView::paintEvent(QPaintEvent*) {
  QPainter painter(viewport());
  const QRect client = viewport()->rect();
  painter.fillRect(client, Qt::white);
  if (book_ == nullptr || book_->firstNode == nullptr || data() == nullptr) return;
  PaintRows(painter, client);
  PaintHeader(painter, client);
}

void GridView::PaintHeader(QPainter& painter, const QRect& client) {
  painter.fillRect(QRect(0, 0, client.width(), kHeaderHeight), kHeaderFill);
  painter.setPen(kGridColour);
  painter.drawLine(0, kHeaderHeight - 1, client.width(), kHeaderHeight - 1);
  if (fieldCount_ == 0) {
    painter.setPen(Qt::black);
    painter.drawText(QRect(kRowHeaderWidth + 4, 0, 300, kNameRowHeight),
                     Qt::AlignVCenter | Qt::AlignLeft, QStringLiteral("(no fields)"));
    return;
  }
  QFont bold = font();
  bold.setBold(true);
  QFont small = font();
  small.setPointSizeF(std::max(6.0, font().pointSizeF() - 1));
  for (int i = 0; i < columns_.count; ++i) {
    const ColumnSpan& c = columns_.spans[i];
    const FieldInfo& info = fields_[c.field];
    QRect name(c.left, 0, c.width, kNameRowHeight);
    QRect filter(c.left, kNameRowHeight, c.width, kFilterRowHeight - 1);
    bool selected = c.field >= selection_.firstField && c.field <= selection_.lastField;
    // A raised cell: light upper-left edge, dark lower-right edge.
    painter.fillRect(name, selected ? QColor(214, 222, 236) : kHeaderFill);
    painter.setPen(Qt::white);
    painter.drawLine(name.topLeft(), name.topRight());
    painter.drawLine(name.topLeft(), name.bottomLeft());
    painter.setPen(QColor(160, 160, 160));
    painter.drawLine(name.bottomLeft(), name.bottomRight());
    painter.drawLine(name.topRight() + QPoint(1, 0),
                     name.bottomRight() + QPoint(1, kFilterRowHeight));
    painter.setFont(bold);
    painter.setPen(Qt::black);
    painter.drawText(name.adjusted(4, 0, -4, 0), Qt::AlignVCenter | Qt::AlignLeft,
                     painter.fontMetrics().elidedText(FromCodePage(info.name), Qt::ElideRight,
                                                      name.width() - 8));
    painter.fillRect(filter, info.filter.empty() ? kHeaderFill : kFilterFill);
    if (!info.filter.empty()) {
      painter.setFont(small);
      painter.setPen(kFilterText);
      painter.drawText(filter.adjusted(4, 0, -4, 0), Qt::AlignVCenter | Qt::AlignLeft,
                       painter.fontMetrics().elidedText(FromCodePage(info.filter), Qt::ElideRight,
                                                        filter.width() - 8));
    }
    if (frozen_ > 0 && c.field + 1 == frozen_) {
      painter.setPen(QPen(kFrozenLine, 2));
      painter.drawLine(c.left + c.width, 0, c.left + c.width, client.height());
    }
  }
  painter.setFont(font());
}

void GridView::PaintRows(QPainter& painter, const QRect& client) {
  Worksheet& sheet = *data();
  const uint32_t count = recordCount();
  int top = kHeaderHeight;
  for (uint32_t p = topPosition_; p < RecordSet::kEntries && top < client.height(); ++p) {
    uint32_t row = book_->records.allocated() ? book_->records[p] : p;
    int height = RecordHeight(sheet, row);
    QRect number(0, top, kRowHeaderWidth - 1, height);
    bool inRows = p >= selection_.firstPosition && p <= selection_.lastPosition;
    painter.fillRect(number, inRows ? QColor(214, 222, 236) : kHeaderFill);
    // A cell's font (a link's underline) must not carry over to the record numbers.
    painter.setFont(font());
    painter.setPen(QColor(90, 90, 90));
    // Rows past the last record are empty places that take new records; the first shows "*".
    QString label = p < count    ? QString::number(p + 1)
                    : p == count ? QStringLiteral("*")
                                 : QString();
    painter.drawText(number.adjusted(0, 0, -6, 0), Qt::AlignVCenter | Qt::AlignRight, label);
    for (int i = 0; i < columns_.count; ++i) {
      const ColumnSpan& c = columns_.spans[i];
      QRect cell(c.left, top, c.width, height);
      bool selected = inRows && c.field >= selection_.firstField && c.field <= selection_.lastField;
      if (fieldCount_ > 0) PaintCell(painter, cell, c.field, p < count ? row : kRowLimit, selected);
      painter.setPen(kGridColour);
      painter.drawLine(c.left + c.width, top, c.left + c.width, top + height);
    }
    painter.setPen(kGridColour);
    painter.drawLine(0, top + height, client.width(), top + height);
    top += height + kGridLine;
  }
  // The current cell's frame, and the selection's outline when it spans more.
  QRect current = CellRect(activeField_, activePosition_);
  if (current.isValid()) {
    painter.setPen(QPen(kCurrentFrame, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(current.adjusted(1, 1, -1, -1));
  }
  if (frozen_ > 0) {
    for (int i = 0; i < columns_.count; ++i) {
      const ColumnSpan& c = columns_.spans[i];
      if (c.field + 1 != frozen_) continue;
      painter.setPen(QPen(kFrozenLine, 2));
      painter.drawLine(c.left + c.width, kHeaderHeight, c.left + c.width, client.height());
    }
  }
}

void GridView::PaintCell(QPainter& painter, const QRect& cell, uint16_t field, uint32_t row,
                         bool selected) {
  Worksheet& sheet = *data();
  uint16_t styleId =
      row < kRowLimit ? sheet.formats.StyleAt(row, field) : sheet.formats.ColumnStyle(field);
  const CellLook& look = LookOf(styleId);
  if (selected) {
    painter.fillRect(cell, kSelectionFill);
  } else if (look.fill.isValid()) {
    painter.fillRect(cell, look.fill);
  }
  if (look.borders != 0) {
    painter.setPen(look.border);
    if (look.borders & 1) painter.drawLine(cell.topLeft(), cell.topRight());
    if (look.borders & 2) painter.drawLine(cell.bottomLeft(), cell.bottomRight());
    if (look.borders & 4) painter.drawLine(cell.topLeft(), cell.bottomLeft());
    if (look.borders & 8) painter.drawLine(cell.topRight(), cell.bottomRight());
  }
  if (row >= kRowLimit) return;
  const FieldInfo& info = fields_[field];
  if (info.type == FieldType::kLongText || info.type == FieldType::kFiles) {
    // The cell holds where the value stands in the side file, or the value waits in the pending
    // list with no cell yet; the start of the value shows.
    std::string value;
    ErrorCode error = err::kNone;
    if (!SideValueText(*book_, sheet, row, field, info.type, value, error)) return;
    painter.setFont(look.font);
    painter.setPen(look.text);
    painter.drawText(cell.adjusted(4, 1, -4, -1), Qt::AlignVCenter | Qt::AlignLeft,
                     FromCodePage(value));
    return;
  }
  const CellRecord* record = sheet.cells.GetCellFast(row, field);
  if (record == nullptr) return;
  QString text;
  bool number = cell::IsNumber(record);
  char shown[kDisplayTextMax];
  FormatColour colour{};
  size_t length = FormatterOf(styleId).Display(record, shown, &colour);
  text = FromCodePage(std::string_view(shown, length));
  QFont f = look.font;
  QColor pen = colour.set ? FromColorRef(colour.colour) : look.text;
  if (info.link && !LinkTarget(std::string_view(shown, length)).empty()) {
    pen = kLinkColour;
    f.setUnderline(true);
  }
  painter.setFont(f);
  painter.setPen(pen);
  int h = look.horizontal == 1   ? Qt::AlignLeft
          : look.horizontal == 2 ? Qt::AlignHCenter
          : look.horizontal == 3 ? Qt::AlignRight
          : number               ? Qt::AlignRight
                                 : Qt::AlignLeft;
  int v = look.vertical == 1   ? Qt::AlignTop
          : look.vertical == 2 ? Qt::AlignBottom
                               : Qt::AlignVCenter;
  painter.save();
  painter.setClipRect(cell);
  if (look.rotation != 0) {
    painter.translate(cell.center());
    painter.rotate(-look.rotation);
    QRect turned(-cell.width() / 2, -cell.height() / 2, cell.width(), cell.height());
    painter.drawText(turned.adjusted(3, 0, -3, 0), h | v, text);
  } else {
    painter.drawText(cell.adjusted(4, 1, -4, -1), h | v, text);
  }
  painter.restore();
}

}  // namespace kelpdex::views
