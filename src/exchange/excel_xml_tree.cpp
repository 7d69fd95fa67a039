// The sheets of an Excel 2003 XML file made into a workbook: as a database, where each "sys_"
// sheet is the catalogue of the sheet behind its prefix and goes into \system, or as tables, where
// every worksheet becomes a table whose first row names the fields. Also the sniff that tells
// such a file from a native XML document.
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "exchange/excel_xml.h"
#include "exchange/excel_xml_parts.h"
#include "exchange/import_table.h"
#include "format/cell_text.h"
#include "store/catalogue.h"
#include "table/schema.h"
#include "table/table_state.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

using namespace excel_xml;

constexpr std::string_view kCataloguePrefix = "sys_";

bool IsCatalogueName(std::string_view name) {
  return name.size() > kCataloguePrefix.size() && text::StartsWithNoCase(name, kCataloguePrefix);
}

bool FailWith(Workbook& book, ErrorCode code) {
  book.errorCode = code;
  return false;
}

// \<table> sheets at level 1 in file order, then \system with the catalogues at level 2. 45 when
// a sheet has no partner or there is no catalogue at all; 44 when a catalogue does not compile.
bool BuildDatabase(Workbook& book, SheetList& list) {
  const size_t count = list.sheets.size();
  std::vector<int64_t> partner(count, -1);
  size_t catalogues = 0;
  for (size_t i = 0; i < count; ++i) {
    std::string_view name = list.sheets[i]->Name();
    for (size_t j = 0; j < i; ++j) {
      if (text::EqualNoCase(name, list.sheets[j]->Name())) {
        return FailWith(book, err::kInvalidExcelDatabase);
      }
    }
    if (!IsCatalogueName(name)) continue;
    std::string_view table = name.substr(kCataloguePrefix.size());
    for (size_t j = 0; j < count; ++j) {
      if (!IsCatalogueName(list.sheets[j]->Name()) &&
          text::EqualNoCase(list.sheets[j]->Name(), table)) {
        partner[i] = static_cast<int64_t>(j);
        partner[j] = static_cast<int64_t>(i);
      }
    }
    if (partner[i] < 0) return FailWith(book, err::kInvalidExcelDatabase);
    ++catalogues;
  }
  for (size_t i = 0; i < count; ++i) {
    if (partner[i] < 0) return FailWith(book, err::kInvalidExcelDatabase);
  }
  if (catalogues == 0) return FailWith(book, err::kInvalidExcelDatabase);

  // The file's choice of sheet, where it is a table; else the first table.
  int64_t current = -1;
  for (int64_t pick : {list.activeSheet, list.selectedSheet}) {
    if (current < 0 && pick >= 0 && pick < static_cast<int64_t>(count) &&
        !IsCatalogueName(list.sheets[pick]->Name())) {
      current = pick;
    }
  }
  for (size_t i = 0; i < count; ++i) {
    if (IsCatalogueName(list.sheets[i]->Name())) continue;
    if (current < 0) current = static_cast<int64_t>(i);
    if (static_cast<int64_t>(i) == current) book.currentSheet = list.sheets[i].get();
    book.AttachNode(list.sheets[i].release(), nullptr);
  }
  Folder* system = new (std::nothrow) Folder("system");
  if (system == nullptr) return FailWith(book, err::kOutOfMemory);
  book.AttachNode(system, nullptr);
  for (size_t i = 0; i < count; ++i) {
    if (list.sheets[i] == nullptr) continue;
    Worksheet* sheet = list.sheets[i].release();
    sheet->SetName(std::string(sheet->Name().substr(kCataloguePrefix.size())));
    sheet->level = 2;
    book.AttachNode(sheet, system);
  }
  TableSpec table;
  if (!MakeTableSpec(book, book.currentSheet->Name(), table)) {
    return FailWith(book, err::kInvalidDatabase);
  }
  for (WorkbookNode* n = system->next; n != nullptr && n->level > system->level; n = n->next) {
    if (!CompileTableSpec(book, n->Name(), table)) return false;
  }
  return true;
}

// A sheet's name as a table name: no backslash, not too long, not "system", not taken.
std::string TableNameOf(const Workbook& book, std::string_view sheet) {
  std::string name;
  for (char c : sheet) {
    if (c != '\\') name += c;
  }
  if (name.size() > kTableNameMax) name.resize(kTableNameMax);
  if (name.empty() || text::EqualNoCase(name, "system")) name = "Table";
  std::string base = name;
  for (int n = 2; book.FindTable(name) != nullptr; ++n) {
    std::string suffix = "_" + std::to_string(n);
    name = base.substr(0, kTableNameMax - suffix.size()) + suffix;
  }
  return name;
}

// One worksheet as a table: its first row names the fields by the rules of the text import's
// header line; a column that held numbers alone is a Number field, any other Text / Link.
bool AddSheetAsTable(Workbook& book, const Worksheet& sheet) {
  ImportedTable table;
  if (!table.Begin(book, TableNameOf(book, sheet.Name()))) return false;
  // The fields go into the current table: this one, not the first.
  book.currentSheet = table.table().data;
  if (!RefreshCurrentTable(book)) return false;
  std::vector<std::string> names;
  std::vector<uint8_t> kinds;  // bit 0 text seen, bit 1 number seen
  CellFormatter formatter{NumberStyle()};
  char scratch[kDisplayTextMax];
  CellCursor cursor;
  while (const CellRecord* r = const_cast<CellStore&>(sheet.cells).NextCell(cursor)) {
    const uint16_t column = cell::Column(r);
    const uint32_t row = cell::Row(r);
    const uint8_t error = cell::ErrorNibble(r);
    const bool formula = cell::IsFormula(r);
    const uint8_t flags = formula ? cell::FormulaFlags(r) : 0;
    // A formula keeps only its result: a record's cells are plain values.
    const bool isText = cell::IsText(r) || (flags & cell::kCachedString);
    if (row == 0) {
      if (names.size() <= column) names.resize(column + 1u);
      if (isText) {
        names[column] = formula ? cell::CachedString(r) : cell::Text(r);
      } else {
        names[column].assign(scratch, formatter.Display(r, scratch));
      }
      continue;
    }
    if (kinds.size() <= column) kinds.resize(column + 1u);
    bool ok;
    if (isText) {
      kinds[column] |= 1;
      ok =
          table.AppendText(row - 1, column, formula ? cell::CachedString(r) : cell::Text(r), error);
    } else if (!formula || (flags & cell::kCachedNumber) || error != 0) {
      kinds[column] |= 2;
      ok = table.AppendNumber(row - 1, column, formula ? cell::CachedNumber(r) : cell::Number(r),
                              error);
    } else {
      continue;
    }
    if (!ok) return false;
  }
  std::vector<FieldSpec> fields(names.size() > kinds.size() ? names.size() : kinds.size());
  for (size_t i = 0; i < fields.size(); ++i) {
    fields[i].name = DefaultFieldName(static_cast<uint16_t>(i));
    if (i < kinds.size() && kinds[i] == 2) {
      fields[i].type = FieldType::kNumber;
    } else {
      fields[i].type = FieldType::kText;
      fields[i].link = true;
    }
  }
  table.NameFields(names, fields);
  return table.Finish(fields);
}

bool BuildTables(Workbook& book, const SheetList& list) {
  if (list.sheets.empty()) return FailWith(book, err::kNeedsOneTable);
  for (const std::unique_ptr<Worksheet>& sheet : list.sheets) {
    if (!AddSheetAsTable(book, *sheet)) return false;
  }
  book.currentSheet = book.TableByIndex(0);
  return RefreshCurrentTable(book);
}

}  // namespace

bool ReadExcelXml(FileStream& stream, Workbook& book, ExcelXmlMode mode, int* line) {
  if (line != nullptr) *line = 0;
  book.errorCode = err::kNone;
  if (!stream.Rewind()) {
    book.errorCode = stream.error();
    return false;
  }
  SheetList list;
  int failedLine = 0;
  bool cancelled = false;
  if (!ReadSheets(stream, list, failedLine, cancelled)) {
    if (cancelled) return false;
    book.errorCode = stream.error() != err::kNone ? stream.error() : err::kXmlUnexpectedElement;
    if (line != nullptr) *line = failedLine;
    return false;
  }
  auto fresh = std::make_unique<Workbook>();
  fresh->lastSavedBy = list.lastAuthor;
  fresh->lastSavedAt = list.lastSaved;
  bool ok;
  if (mode == ExcelXmlMode::kDatabase) {
    fresh->styles.LoadFonts(list.fonts.data(), static_cast<uint8_t>(list.fonts.size()));
    fresh->styles.LoadStyles(list.styles.data(), static_cast<uint16_t>(list.styles.size()));
    ok = BuildDatabase(*fresh, list);
  } else {
    // Styles of another spreadsheet's cells have no place in a table made from its values.
    ok = BuildTables(*fresh, list);
  }
  if (!ok) {
    book.errorCode = fresh->errorCode != err::kNone ? fresh->errorCode : err::kInvalidDatabase;
    return false;
  }
  book.SwapContents(*fresh);
  book.errorCode = err::kNone;
  return true;
}

bool ImportExcelXml(Workbook& book, const std::string& path, ExcelXmlMode mode, int* line) {
  if (line != nullptr) *line = 0;
  FileStream in;
  if (!in.Open(path, StreamMode::kRead, true)) {
    book.errorCode = in.error();
    return false;
  }
  bool ok = ReadExcelXml(in, book, mode, line);
  in.Close();
  return ok;
}

XmlRoot SniffXmlRoot(const std::string& path) {
  FileStream in;
  if (!in.Open(path, StreamMode::kRead, true)) return XmlRoot::kOther;
  // The root element's opening tag lies within the first few kilobytes.
  std::string head;
  char buffer[4096];
  while (head.size() < 65536) {
    size_t n = in.ReadSome(buffer, sizeof buffer);
    if (n == 0) break;
    head.append(buffer, n);
    const size_t root = head.find("Workbook");
    if (root != std::string::npos && head.find('>', root) != std::string::npos) break;
  }
  in.Close();
  size_t start = head.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
  while (start < head.size() && (head[start] == ' ' || head[start] == '\r' || head[start] == '\n' ||
                                 head[start] == '\t')) {
    ++start;
  }
  if (head.compare(start, 5, "<?xml") != 0) return XmlRoot::kOther;
  if (head.find("progid=\"Excel.Sheet\"") != std::string::npos) return XmlRoot::kSpreadsheet;
  // The first element that is no declaration, instruction or comment.
  size_t at = head.find('<', start + 5);
  while (at != std::string::npos && at + 1 < head.size() &&
         (head[at + 1] == '?' || head[at + 1] == '!')) {
    at = head.find('<', at + 1);
  }
  if (at == std::string::npos) return XmlRoot::kOther;
  const size_t end = head.find('>', at);
  std::string_view tag =
      std::string_view(head).substr(at, end == std::string::npos ? head.npos : end - at);
  if (tag.find(kSpreadsheetNs) != std::string_view::npos) return XmlRoot::kSpreadsheet;
  const bool workbook = tag.size() >= 9 && tag.substr(1, 8) == "Workbook" &&
                        (tag.size() == 9 || tag[9] == ' ' || tag[9] == '\r' || tag[9] == '\n' ||
                         tag[9] == '\t' || tag[9] == '/');
  return workbook ? XmlRoot::kNative : XmlRoot::kOther;
}

}  // namespace kelpdex
