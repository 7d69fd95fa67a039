#include "store/catalogue.h"

#include <cstdio>
#include <new>
#include <vector>

#include "store/column_style.h"

namespace kelpdex {

namespace {

// The text of a row-0 title.
std::string_view TitleAt(const Worksheet& catalogue, uint16_t column) {
  return CatalogueText(catalogue, 0, column);
}

bool BeginsWith(std::string_view title, char lower) {
  return !title.empty() && (title[0] == lower || title[0] == lower - ('a' - 'A'));
}

// The first column of the views: "Table", behind the key columns.
uint16_t FirstViewColumn(const TableSpec& table) {
  return static_cast<uint16_t>(catalogue::kFirstKeyColumn + KeyCount(table));
}

bool IsMarked(const TableSpec& table, uint16_t column) {
  return table.workbook->styles.IsSelectionStyle(table.catalogue->formats.ColumnStyle(column));
}

}  // namespace

std::string_view CatalogueText(const Worksheet& sheet, uint32_t row, uint16_t column,
                               CellCursor* cursor) {
  CellRecord* r = const_cast<CellStore&>(sheet.cells).GetCell(row, column, cursor);
  if (r == nullptr || !cell::IsText(r)) return std::string_view();
  return cell::Text(r);
}

bool PutCatalogueText(Worksheet& sheet, uint32_t row, uint16_t column, std::string_view text,
                      CellCursor* cursor) {
  if (text.empty()) {
    sheet.cells.DeleteRange(column, column, row, row, cursor);
    return true;
  }
  std::vector<uint8_t> record(cell::TextSize(text.size()));
  cell::EncodeText(record.data(), row, column, text);
  return sheet.cells.PutCell(record.data(), cursor);
}

bool MakeTableSpec(Workbook& workbook, std::string_view table, TableSpec& out) {
  out.workbook = &workbook;
  out.catalogue = workbook.FindCatalogue(table);
  out.data = workbook.FindTable(table);
  if (out.catalogue == nullptr || out.data == nullptr) {
    workbook.errorCode = err::kInvalidNodePath;
    return false;
  }
  return true;
}

bool CompileTableSpec(Workbook& workbook, std::string_view table, TableSpec& out) {
  uint32_t fields = 0;
  if (MakeTableSpec(workbook, table, out)) {
    out.catalogue->cells.LastUsed(nullptr, nullptr, nullptr, &fields);
    // Row 0 holds the titles, so the highest row is the number of fields.
    if (fields <= kColumnLimit) return true;
  }
  workbook.errorCode = err::kInvalidDatabase;
  return false;
}

uint16_t KeyCount(const TableSpec& table) {
  uint16_t count = 0;
  for (uint16_t column = catalogue::kFirstKeyColumn; column <= kLastColumn; ++column) {
    if (!BeginsWith(TitleAt(*table.catalogue, column), 'k')) break;
    ++count;
  }
  return count;
}

uint16_t FormCount(const TableSpec& table) {
  uint16_t count = 0;
  // "Table" and "Std. Form{...}" always stand behind the keys; the user's forms follow them.
  for (uint32_t column = FirstViewColumn(table) + 2u; column <= kLastColumn; ++column) {
    if (!BeginsWith(TitleAt(*table.catalogue, static_cast<uint16_t>(column)), 'f')) break;
    ++count;
  }
  return count;
}

uint16_t CurrentKey(const TableSpec& table) {
  uint16_t keys = KeyCount(table);
  for (uint16_t i = 0; i < keys; ++i) {
    if (IsMarked(table, static_cast<uint16_t>(catalogue::kFirstKeyColumn + i))) return i;
  }
  return 0;
}

uint16_t CurrentForm(const TableSpec& table) {
  uint16_t first = FirstViewColumn(table);
  uint16_t views = static_cast<uint16_t>(FormCount(table) + 2);
  for (uint16_t i = 0; i < views && first + i <= kLastColumn; ++i) {
    if (IsMarked(table, static_cast<uint16_t>(first + i))) return i;
  }
  return 0;
}

uint16_t SelectKey(const TableSpec& table, uint16_t index) {
  if (index >= KeyCount(table)) return CurrentKey(table);
  uint16_t old = CurrentKey(table);
  Workbook& wb = *table.workbook;
  MarkColumn(wb, *table.catalogue, static_cast<uint16_t>(catalogue::kFirstKeyColumn + old), false);
  MarkColumn(wb, *table.catalogue, static_cast<uint16_t>(catalogue::kFirstKeyColumn + index), true);
  return index;
}

uint16_t SelectForm(const TableSpec& table, uint16_t index) {
  if (index >= FormCount(table) + 2) return 0;
  uint16_t first = FirstViewColumn(table);
  uint16_t old = CurrentForm(table);
  Workbook& wb = *table.workbook;
  MarkColumn(wb, *table.catalogue, static_cast<uint16_t>(first + old), false);
  MarkColumn(wb, *table.catalogue, static_cast<uint16_t>(first + index), true);
  return index;
}

std::string KeyTitle(std::string_view name) {
  std::string title = "Key{";
  title += name;
  title += '}';
  return title;
}

std::string FormTitle(int columns, int rows, std::string_view name) {
  char head[48];
  std::snprintf(head, sizeof head, "form{%d,%d,", columns, rows);
  std::string title = head;
  title += name;
  title += '}';
  return title;
}

bool ParseKeyTitle(std::string_view title, std::string& name) {
  std::string text(title);
  char buf[256];
  if (text.size() >= sizeof buf || std::sscanf(text.c_str(), "%*c%*c%*c%*c%255[^}]", buf) != 1) {
    return false;
  }
  name = buf;
  return true;
}

bool ParseStdFormTitle(std::string_view title, int& a, int& b, int& c) {
  std::string text(title);
  return std::sscanf(text.c_str(), "%*[^{]%*c%d%*c%d%*c%d", &a, &b, &c) == 3;
}

bool ParseFormTitle(std::string_view title, int& columns, int& rows, std::string& name) {
  std::string text(title);
  char buf[256];
  if (text.size() >= sizeof buf) return false;
  if (std::sscanf(text.c_str(), "%*c%*c%*c%*c%*c%d%*c%d", &columns, &rows) != 2) return false;
  if (std::sscanf(text.c_str(), "%*c%*c%*c%*c%*c%*d%*c%*d%*c%255[^}]", buf) != 1) return false;
  name = buf;
  return true;
}

bool CreateTable(Workbook& workbook, std::string_view name) {
  WorkbookNode* system = workbook.FindNode("\\system");
  if (system == nullptr || !system->IsFolder()) {
    auto* folder = new (std::nothrow) Folder("system");
    if (folder == nullptr) {
      workbook.errorCode = err::kOutOfMemory;
      return false;
    }
    // Always the first node: every catalogue lives in it.
    folder->next = workbook.firstNode;
    if (workbook.firstNode != nullptr) workbook.firstNode->previous = folder;
    workbook.firstNode = folder;
    ++workbook.folderCount;
    system = folder;
  }

  auto* catalogueSheet = new (std::nothrow) Worksheet(name);
  auto* data = new (std::nothrow) Worksheet(name);
  bool ok = catalogueSheet != nullptr && data != nullptr;
  if (ok) {
    CellCursor cursor;
    const char* titles[] = {"Field",        "Type",  "Sort Index",       "Formula / Value",
                            "Key{Default}", "Table", "Std. Form{1,1,50}"};
    for (uint16_t column = 0; column < 7 && ok; ++column) {
      ok = PutCatalogueText(*catalogueSheet, 0, column, titles[column], &cursor);
    }
  }
  // The default key and the table view start out chosen.
  ok = ok && MarkColumn(workbook, *catalogueSheet, catalogue::kFirstKeyColumn, true) &&
       MarkColumn(workbook, *catalogueSheet, catalogue::kFirstKeyColumn + 1, true);
  if (!ok) {
    delete catalogueSheet;
    delete data;
    if (workbook.errorCode != err::kTooManyStyles) workbook.errorCode = err::kOutOfMemory;
    return false;
  }
  workbook.AttachNode(catalogueSheet, system);
  workbook.AttachNode(data, nullptr);
  workbook.currentSheet = workbook.TableByIndex(0);
  return true;
}

}  // namespace kelpdex
