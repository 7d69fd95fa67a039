#include "views/frame/binary_pane.h"

#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "persist/document_file.h"
#include "persist/side_values.h"
#include "store/catalogue.h"
#include "text/rtf_text.h"
#include "text/utf8.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views {

namespace {

QString Utf8(std::string_view codePage) {
  return QString::fromUtf8(text::Cp1252ToUtf8(codePage));
}

bool IsBinary(FieldType type) {
  return type == FieldType::kLongText || type == FieldType::kFiles;
}

}  // namespace

BinaryPanes::BinaryPanes(QWidget* parent) : QWidget(parent) {
  setObjectName("BinaryPanes");
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  splitter_ = new QSplitter(Qt::Vertical, this);
  splitter_->setChildrenCollapsible(false);
  layout->addWidget(splitter_);
  for (View& view : views_) {
    view.box = new QWidget(splitter_);
    auto* box = new QVBoxLayout(view.box);
    box->setContentsMargins(2, 2, 2, 2);
    box->setSpacing(2);
    view.title = new QLabel(view.box);
    view.stack = new QStackedWidget(view.box);
    view.text = new QPlainTextEdit(view.stack);
    view.text->setReadOnly(true);
    view.files = new QListWidget(view.stack);
    view.stack->addWidget(view.text);
    view.stack->addWidget(view.files);
    box->addWidget(view.title);
    box->addWidget(view.stack, 1);
    splitter_->addWidget(view.box);
  }
  views_[1].box->hide();
}

void BinaryPanes::SetSplit(int mode) {
  split_ = mode;
  splitter_->setOrientation(mode == 2 ? Qt::Horizontal : Qt::Vertical);
  views_[1].box->setVisible(mode != 0);
}

QString BinaryPanes::shownText(int view) const {
  const View& v = views_[view];
  if (v.field < 0) return {};
  if (v.stack->currentWidget() == v.text) return v.text->toPlainText();
  QStringList names;
  for (int i = 0; i < v.files->count(); ++i) names << v.files->item(i)->text();
  return names.join('\n');
}

bool BinaryPanes::ShowRecord(Workbook& book, const GridView& grid) {
  std::vector<uint16_t> binary;
  for (uint16_t f = 0; f < grid.fieldCount(); ++f) {
    if (IsBinary(grid.fieldType(f))) binary.push_back(f);
  }
  if (binary.empty()) {
    for (View& view : views_) view.field = -1;
    return false;
  }
  // The current field when it is binary, else the first; the second view shows the next one.
  size_t at = 0;
  for (size_t i = 0; i < binary.size(); ++i) {
    if (binary[i] == grid.activeField()) at = i;
  }
  Fill(views_[0], book, grid, binary[at]);
  Fill(views_[1], book, grid, binary[(at + 1) % binary.size()]);
  return true;
}

void BinaryPanes::Fill(View& view, Workbook& book, const GridView& grid, uint16_t field) {
  view.field = field;
  const uint32_t position = grid.activePosition();
  view.title->setText(
      QStringLiteral("%1 - Record %2").arg(Utf8(grid.fieldName(field))).arg(position + 1));
  view.text->clear();
  view.files->clear();
  const bool longText = grid.fieldType(field) == FieldType::kLongText;
  view.stack->setCurrentWidget(longText ? static_cast<QWidget*>(view.text) : view.files);
  Worksheet* data = book.currentSheet;
  if (data == nullptr || position >= book.records.count()) return;
  const uint32_t row = book.records[position];
  const std::string side = SideFilePath(book.fileName);
  bool present = false;
  ErrorCode error = err::kNone;
  if (longText) {
    std::string value;
    if (ReadLongTextValue(*data, side, row, field, value, present, error)) {
      view.text->setPlainText(Utf8(text::LongTextPlain(value)));
    }
    return;
  }
  BinaryObjectList list;
  if (!ReadObjectsValue(*data, side, row, field, list, present, error)) return;
  for (const BinaryObjectItem* item = list.first(); item != nullptr; item = item->next) {
    view.files->addItem(QStringLiteral("%1  (%2 bytes)").arg(Utf8(item->name)).arg(item->size));
  }
}

}  // namespace kelpdex::views
