// The native XML document's skeleton on the writing side: the prolog, the children of Workbook in
// their order (last modification, window, drop-down lists, styles, inspected cells) and the
// workbook tree of folders and worksheets. Each section inside is written by its own file (see
// xml_sections.h).
#include <string>

#include "persist/native_xml.h"
#include "persist/xml_sections.h"
#include "store/bytes.h"
#include "store/field_row.h"

namespace kelpdex {

namespace {

using namespace native_xml;

class DocumentWriter {
 public:
  DocumentWriter(FileStream& stream, const Workbook& book) : w_(stream), book_(book) {}

  bool Write() {
    w_.Prolog();
    w_.Tag("Workbook", TagMode::kOpen, 0, 1);
    WriteLastModification();
    WriteWindow();
    WriteDropDownLists();
    WriteStyles(w_, book_.styles);
    WriteInspectCells();
    for (const WorkbookNode* n = book_.firstNode; n != nullptr && w_.ok(); n = n->next) {
      XmlAttributes a;
      a.Text("Name", n->Name());
      if (n->IsFolder()) {
        a.Bool("Expanded", n->open != 0).Int("TreeLevel", n->level);
        w_.Tag("Folder", a, TagMode::kEmpty, 1, 1);
      } else {
        a.Int("TreeLevel", n->level);
        if (n == book_.currentSheet) a.Bool("Selected", true);
        w_.Tag("Worksheet", a, TagMode::kOpen, 1, 1);
        sheet_ = static_cast<const Worksheet*>(n);
        WriteWorksheet(*sheet_);
        w_.Tag("Worksheet", TagMode::kClose, 1, 1);
      }
    }
    w_.Tag("Workbook", TagMode::kClose, 0, 1);
    return w_.ok();
  }

  // Where the cell that was too long lives, in the words of its table where it belongs to one.
  std::string DescribeTooLong() const {
    if (sheet_ == nullptr || !tooLong_.found) return {};
    const uint32_t row = tooLong_.row;
    const uint16_t column = tooLong_.column;
    std::string path;
    book_.PathOfNode(sheet_, path, true);
    const Worksheet* catalogue = book_.FindCatalogue(sheet_->Name());
    if (catalogue == nullptr || book_.FindTable(sheet_->Name()) != sheet_) {
      return "Worksheet: " + path + "\nCell: " + CellAddress(row, column);
    }
    TableSpec table{const_cast<Workbook*>(&book_), const_cast<Worksheet*>(catalogue),
                    const_cast<Worksheet*>(sheet_)};
    FieldSpec field;
    std::string fieldName =
        ReadField(table, column, field) ? field.name : "column " + std::to_string(column + 1);
    return "Table: " + std::string(sheet_->Name()) + "\nRecord: " + std::to_string(row + 1) +
           "\nField: " + fieldName;
  }

 private:
  void WriteLastModification() {
    if (book_.lastSavedBy.empty() && book_.lastSavedAt.empty()) return;
    w_.Tag("LastModification", TagMode::kOpen, 1, 1);
    w_.TextElement("User", book_.lastSavedBy.substr(0, 127), 2, 1);
    w_.TextElement("Date", book_.lastSavedAt.substr(0, 49), 2, 1);
    w_.Tag("LastModification", TagMode::kClose, 1, 1);
  }

  void WriteWindow() {
    w_.Tag("Window", TagMode::kOpen, 1, 1);
    XmlAttributes tree;
    tree.Int("Visible", book_.treePaneVisible).Int("Width", book_.treePaneWidth);
    w_.Tag("TreePane", tree, TagMode::kEmpty, 2, 1);
    XmlAttributes inspect;
    inspect.Int("Visible", book_.inspectPaneVisible).Int("Height", book_.inspectPaneHeight);
    w_.Tag("InspectPane", inspect, TagMode::kEmpty, 2, 1);
    w_.Tag("Window", TagMode::kClose, 1, 1);
  }

  void WriteDropDownLists() {
    bool any = false;
    for (const DropDownList& list : book_.dropDownLists) any |= list.used;
    if (!any) {
      w_.Tag("DropDownLists", TagMode::kEmpty, 1, 1);
      return;
    }
    w_.Tag("DropDownLists", TagMode::kOpen, 1, 1);
    for (uint32_t slot = 0; slot < kDropDownListSlots; ++slot) {
      const DropDownList& list = book_.dropDownLists[slot];
      if (!list.used) continue;
      XmlAttributes a;
      a.Int("ID", slot + 1);
      w_.Tag("List", a, TagMode::kOpen, 2, 1);
      if (!list.name.empty()) w_.TextElement("Name", list.name.substr(0, 29), 3, 1);
      for (const std::string& item : list.items) w_.TextElement("Item", item, 3, 1);
      w_.Tag("List", TagMode::kClose, 2, 1);
    }
    w_.Tag("DropDownLists", TagMode::kClose, 1, 1);
  }

  void WriteInspectCells() {
    if (book_.inspectCells.empty()) return;
    w_.Tag("InspectCells", TagMode::kOpen, 1, 1);
    for (const InspectedCell& c : book_.inspectCells) {
      const uint8_t* b = c.bytes.data();
      XmlAttributes a;
      std::string_view path = FieldText(b + inspected_cell::kPathAt, 256);
      if (!path.empty()) a.Text("Worksheet", path);
      a.Text("rc", CellAddress(LoadU32(b + inspected_cell::kRowAt),
                               static_cast<uint16_t>(LoadU32(b + inspected_cell::kColumnAt))));
      std::string_view name = FieldText(b + inspected_cell::kNameAt, kInspectedCellSize - 268);
      if (!name.empty()) a.Text("Name", name);
      w_.Tag("Cell", a, TagMode::kEmpty, 2, 1);
    }
    w_.Tag("InspectCells", TagMode::kClose, 1, 1);
  }

  void WriteWorksheet(const Worksheet& sheet) {
    for (const ContainerRecord& c : sheet.containers) WriteContainer(w_, c, 2);
    WriteFormatting(w_, sheet.formats);
    WriteCells(w_, sheet.cells, tooLong_);
    WriteGeneralSettings(w_, sheet);
    WritePageSettings(w_, sheet);
  }

  XmlWriter w_;
  const Workbook& book_;
  const Worksheet* sheet_ = nullptr;  // the one being written
  CellAt tooLong_;
};

}  // namespace

bool WriteXmlDocument(FileStream& stream, const Workbook& book, std::string* place) {
  DocumentWriter writer(stream, book);
  writer.Write();
  if (place != nullptr) {
    place->clear();
    if (stream.error() == err::kXmlInvalidData) *place = writer.DescribeTooLong();
  }
  return stream.Flush();
}

}  // namespace kelpdex
