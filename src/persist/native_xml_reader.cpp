// The native XML document's skeleton on the reading side: the prolog, the children of Workbook in
// their order (last modification, window, drop-down lists, styles, inspected cells), the workbook
// tree of folders and worksheets, and the checks of the catalogue after the closing tag. Each
// section inside is read by its own file (see xml_sections.h).
#include <memory>
#include <string>
#include <vector>

#include "persist/native_xml.h"
#include "persist/xml_sections.h"
#include "store/bytes.h"
#include "store/catalogue.h"

namespace kelpdex {

namespace {

using namespace native_xml;

class DocumentReader {
 public:
  DocumentReader(FileStream& stream, Workbook& book) : x_(stream), book_(book) {}

  bool Read();
  int line() const { return x_.errorLine() != 0 ? x_.errorLine() : x_.line(); }

 private:
  bool Fail(ErrorCode code) { return x_.Fail(code); }

  bool ReadLastModification();
  bool ReadWindow();
  bool ReadDropDownLists();
  bool ReadInspectCells();
  bool ReadWorksheet(Worksheet& sheet);

  XmlScanner x_;
  Workbook& book_;
  uint32_t folders_ = 0;
  uint32_t sheets_ = 0;
};

bool DocumentReader::ReadLastModification() {
  if (!x_.Tag("LastModification", scan::kOpen | scan::kOptional)) return x_.ok();
  if (!x_.Text("User", 127)) return false;
  book_.lastSavedBy.assign(x_.text());
  if (x_.Text("Date", 49, scan::kOptional)) book_.lastSavedAt.assign(x_.text());
  return x_.ok() && x_.Tag("LastModification", scan::kClose);
}

bool DocumentReader::ReadWindow() {
  if (!x_.Tag("Window", scan::kOpen | scan::kOptional)) return x_.ok();
  if (x_.isClose()) return true;
  int visible = book_.treePaneVisible, size = book_.treePaneWidth;
  if (x_.Tag("TreePane", kOptionalOpen)) {
    if (!x_.IntAttr("Visible", visible, 0, 65534) || !x_.IntAttr("Width", size, 0, 65534) ||
        !CloseIfOpen(x_, "TreePane")) {
      return false;
    }
    book_.treePaneVisible = static_cast<uint16_t>(visible);
    book_.treePaneWidth = static_cast<uint16_t>(size);
  }
  visible = book_.inspectPaneVisible;
  size = book_.inspectPaneHeight;
  if (x_.Tag("InspectPane", kOptionalOpen)) {
    if (!x_.IntAttr("Visible", visible, 0, 65534) || !x_.IntAttr("Height", size, 0, 65534) ||
        !CloseIfOpen(x_, "InspectPane")) {
      return false;
    }
    book_.inspectPaneVisible = static_cast<uint16_t>(visible);
    book_.inspectPaneHeight = static_cast<uint16_t>(size);
  }
  return x_.ok() && x_.Tag("Window", scan::kClose);
}

bool DocumentReader::ReadDropDownLists() {
  if (!x_.Tag("DropDownLists", scan::kOpen | scan::kOptional)) return x_.ok();
  if (x_.isClose()) return true;
  while (x_.Tag("List", kOptionalOpen)) {
    int id = 0;
    if (x_.RequiredAttr("ID") == nullptr || !x_.IntAttr("ID", id, 1, 100)) return false;
    DropDownList& list = book_.dropDownLists[id - 1];
    if (list.used) return Fail(err::kXmlInvalidAttribute);
    list.used = true;
    list.name = "List " + std::to_string(id) + ".";
    if (x_.isClose()) continue;
    if (x_.Text("Name", 29, scan::kOptional)) list.name.assign(x_.text());
    while (x_.Text("Item", 1024, scan::kOptional)) list.items.emplace_back(x_.text());
    if (!x_.ok() || !x_.Tag("List", scan::kClose)) return false;
  }
  return x_.ok() && x_.Tag("DropDownLists", scan::kClose);
}

bool DocumentReader::ReadInspectCells() {
  if (!x_.Tag("InspectCells", scan::kOpen | scan::kOptional)) return x_.ok();
  if (x_.isClose()) return true;
  while (x_.Tag("Cell", kOptionalOpen)) {
    InspectedCell c;
    uint8_t* b = c.bytes.data();
    Address at;
    if (!ReadRc(x_, at, Address())) return false;
    StoreU32(b + inspected_cell::kRowAt, at.row);
    StoreU32(b + inspected_cell::kColumnAt, at.column);
    if (const char* path = x_.Attr("Worksheet")) {
      std::strncpy(reinterpret_cast<char*>(b + inspected_cell::kPathAt), path, 255);
    }
    if (const char* name = x_.Attr("Name")) {
      std::strncpy(reinterpret_cast<char*>(b + inspected_cell::kNameAt), name,
                   kInspectedCellSize - inspected_cell::kNameAt - 1);
    }
    if (!CloseIfOpen(x_, "Cell")) return false;
    book_.inspectCells.push_back(c);
  }
  return x_.ok() && x_.Tag("InspectCells", scan::kClose);
}

bool DocumentReader::ReadWorksheet(Worksheet& sheet) {
  std::vector<bool> seenIds(256);
  while (x_.Tag("Container", kOptionalOpen)) {
    if (!ReadContainer(x_, sheet, seenIds)) return false;
  }
  return x_.ok() && ReadFormatting(x_, sheet.formats) && ReadCells(x_, sheet.cells) &&
         ReadGeneralSettings(x_, sheet) && ReadPageSettings(x_, sheet) &&
         x_.Tag("Worksheet", scan::kClose);
}

bool DocumentReader::Read() {
  if (!x_.ok() || !x_.Prolog() || !x_.Tag("Workbook", scan::kOpen)) return false;
  std::vector<StyleRecord> styles;
  std::vector<FontRecord> fonts(1, StyleTable().Font(0));
  if (!ReadLastModification() || !ReadWindow() || !ReadDropDownLists() ||
      !ReadStyles(x_, styles, fonts) || !ReadInspectCells()) {
    return false;
  }
  if (styles.empty()) styles.push_back(StyleTable().Style(0));
  book_.styles.LoadFonts(fonts.data(), static_cast<uint8_t>(fonts.size()));
  book_.styles.LoadStyles(styles.data(), static_cast<uint16_t>(styles.size()));
  WorkbookNode* last = nullptr;
  Worksheet* firstSheet = nullptr;
  while (x_.Tag("", kOptionalOpen | scan::kPeek)) {
    std::string kind(x_.name());
    if (kind != "Folder" && kind != "Worksheet") break;
    x_.Tag(kind, kOpenAttributes);
    bool folder = kind == "Folder";
    std::string name;
    if (const char* text = x_.Attr("Name")) {
      name = text;
      if (name.size() >= kNodeNameSize) return Fail(err::kXmlInvalidAttribute);
    } else {
      name = (folder ? "Folder" : "Worksheet") + std::to_string((folder ? folders_ : sheets_) + 1);
    }
    int level = 1;
    if (!x_.IntAttr("TreeLevel", level, 1, 65534, err::kXmlInvalidData)) return false;
    // The flat list is the tree: a node goes at most one level below a folder just before it,
    // else it would hang in no folder and no path would find it.
    int deepest = last == nullptr ? 1 : last->level + (last->IsFolder() ? 1 : 0);
    if (level > deepest) return Fail(err::kXmlInvalidData);
    WorkbookNode* node;
    if (folder) {
      auto* f = new (std::nothrow) Folder(name);
      if (f == nullptr) return Fail(err::kXmlOutOfMemory);
      bool expanded = false;
      if (!x_.BoolAttr("Expanded", expanded)) {
        delete f;
        return false;
      }
      f->open = expanded;
      node = f;
      ++folders_;
      ++book_.folderCount;
    } else {
      auto* w = new (std::nothrow) Worksheet(name);
      if (w == nullptr) return Fail(err::kXmlOutOfMemory);
      bool selected = false;
      if (!x_.BoolAttr("Selected", selected)) {
        delete w;
        return false;
      }
      if (selected && book_.currentSheet == nullptr) book_.currentSheet = w;
      if (firstSheet == nullptr) firstSheet = w;
      node = w;
      ++sheets_;
      ++book_.worksheetCount;
    }
    node->level = static_cast<uint16_t>(level);
    node->previous = last;
    if (last != nullptr) {
      last->next = node;
    } else {
      book_.firstNode = node;
    }
    last = node;
    if (folder) {
      if (!CloseIfOpen(x_, "Folder")) return false;
    } else if (!x_.isClose() && !ReadWorksheet(*static_cast<Worksheet*>(node))) {
      return false;
    }
  }
  if (!x_.ok() || !x_.Tag("Workbook", scan::kClose)) return false;
  // Without a selected worksheet the first table is current: a catalogue cannot be.
  if (book_.currentSheet == nullptr) book_.currentSheet = book_.TableByIndex(0);
  if (book_.currentSheet == nullptr) book_.currentSheet = firstSheet;
  return true;
}

// After the closing tag: a current table, every catalogue compiled, the record set and fields.
bool CheckDocument(Workbook& book) {
  if (book.currentSheet == nullptr) {
    book.errorCode = err::kNeedsOneTable;
    return false;
  }
  TableSpec current;
  if (!MakeTableSpec(book, book.currentSheet->Name(), current)) {
    book.errorCode = err::kInvalidDatabase;
    return false;
  }
  WorkbookNode* system = book.FindNode("\\system");
  if (system != nullptr && system->IsFolder()) {
    for (WorkbookNode* n = system->next; n != nullptr && n->level > system->level; n = n->next) {
      TableSpec compiled;
      if (n->IsWorksheet() && !CompileTableSpec(book, n->Name(), compiled)) return false;
    }
  }
  return true;
}

}  // namespace

bool ReadXmlDocument(FileStream& stream, Workbook& book, int* line) {
  if (line != nullptr) *line = 0;
  if (!stream.Rewind()) {
    book.errorCode = stream.error();
    return false;
  }
  auto fresh = std::make_unique<Workbook>();
  DocumentReader reader(stream, *fresh);
  bool ok = reader.Read();
  if (!ok || !stream.ok()) {
    book.errorCode = stream.error() != err::kNone ? stream.error() : err::kXmlUnexpectedElement;
    if (line != nullptr) *line = reader.line();
    return false;
  }
  if (!CheckDocument(*fresh)) {
    book.errorCode = fresh->errorCode;
    return false;
  }
  book.SwapContents(*fresh);
  book.errorCode = err::kNone;
  return true;
}

}  // namespace kelpdex
