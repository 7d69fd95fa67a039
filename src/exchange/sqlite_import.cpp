// Reading an SQLite file into a new workbook. A table that "kelpdex_catalogue" describes gets its
// catalogue sheet back cell for cell and its values by field name; any other table (or a view
// asked for by name) becomes a table whose fields are its columns: numbers alone make a Number
// field, a BLOB an Images/Files field, anything else a Text field. The workbook is built apart
// and takes the place of the open one only when every table has come in.
#include <cstdio>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "core/progress.h"
#include "core/strings.h"
#include "exchange/import_table.h"
#include "exchange/sqlite_parts.h"
#include "persist/side_file.h"
#include "store/catalogue.h"
#include "store/cell_record.h"
#include "store/field_row.h"
#include "table/schema.h"
#include "table/table_state.h"
#include "text/code_page.h"
#include "text/utf8.h"

namespace kelpdex {

namespace {

using namespace sqlite;

constexpr uint32_t kProgressStep = 4096;
// Longer Long Text values wait in the pending list; shorter ones stand in their cell as text,
// which reads as the value too and costs no lookup.
constexpr size_t kLongTextInCell = 1024;

struct SqlTable {
  std::string nameUtf8;
  bool view = false;
};

// What a column held, as bits.
constexpr uint8_t kSawText = 1;
constexpr uint8_t kSawNumber = 2;
constexpr uint8_t kSawBlob = 4;

// A name for a BLOB that came without one, with an extension its first bytes suggest.
std::string BlobName(std::string_view field, uint32_t row, std::string_view bytes) {
  const char* extension = ".bin";
  if (bytes.substr(0, 8) == "\x89PNG\r\n\x1a\n") {
    extension = ".png";
  } else if (bytes.substr(0, 3) == "\xFF\xD8\xFF") {
    extension = ".jpg";
  } else if (bytes.substr(0, 4) == "GIF8") {
    extension = ".gif";
  } else if (bytes.substr(0, 2) == "BM") {
    extension = ".bmp";
  } else if (bytes.substr(0, 5) == "%PDF-") {
    extension = ".pdf";
  }
  return std::string(field) + "_" + std::to_string(row + 1) + extension;
}

// The cells the catalogue table kept, with their Auto mark and error; false when the store is full.
bool PutStoredCells(Worksheet& sheet, const std::vector<StoredCell>& cells) {
  uint8_t record[kBlockPayload];
  for (const StoredCell& c : cells) {
    const uint8_t extra = c.tag & (cell::kAuto | cell::kErrorMask);
    if (c.isText) {
      cell::EncodeText(record, c.row, c.column, c.text.substr(0, kBlockPayload - cell::kTextHeader),
                       extra);
    } else {
      cell::EncodeNumber(record, c.row, c.column, c.number, extra);
    }
    if (!sheet.cells.PutCell(record)) return false;
  }
  return true;
}

std::string Packed(std::string_view name, std::string_view type, std::string_view bytes) {
  BinaryObjectList list;
  list.Append(name, type, bytes);
  return PackObjects(list);
}

class Importer {
 public:
  Importer(Database& db, Workbook& book, LayoutReader& layouts, SqliteProblem& problem)
      : db_(db), book_(book), layouts_(layouts), problem_(problem) {}

  bool Plain(const SqlTable& table);
  // `hasRows`: the file holds the SQL table; a table without fields has none.
  bool Catalogued(const TableCatalogue& table, bool hasRows);
  bool cancelled() const { return cancelled_; }

 private:
  bool Fail(int result, std::string_view table) {
    SqliteFailure(db_, result, err::kInvalidDatabase, problem_);
    problem_.table = std::string(table);
    return false;
  }
  bool CheckName(const std::string& name);
  bool Select(const std::string& nameUtf8, const std::string& name, Statement& select);
  // Between rows: the progress, a cancel, and the row limit.
  bool NextRow(uint32_t row, const std::string& name);
  bool AppendValue(ImportedTable& table, Statement& select, int at, uint32_t row, uint16_t column,
                   uint8_t extraTag, uint8_t& saw);
  bool ReadFiles(const std::string& tableUtf8, const std::vector<std::string>& fieldNames,
                 std::vector<SheetObject>& objects);

  Database& db_;
  Workbook& book_;
  LayoutReader& layouts_;
  SqliteProblem& problem_;
  std::string text_;
  bool cancelled_ = false;
};

bool Importer::CheckName(const std::string& name) {
  switch (CheckTableName(book_, name)) {
    case TableNameCheck::kOk:
      return true;
    case TableNameCheck::kDuplicate:
      problem_.reason = FormatString(157);
      break;
    case TableNameCheck::kReserved:
      problem_.reason = kReservedTableNameText;
      break;
    case TableNameCheck::kInvalid:
      problem_.code = err::kInvalidNodePath;
      problem_.detail = "A table name has 1 to 127 characters and no backslash.";
      break;
  }
  problem_.table = name;
  return false;
}

bool Importer::Select(const std::string& nameUtf8, const std::string& name, Statement& select) {
  if (!select.Prepare(db_, "SELECT * FROM " + Quoted(nameUtf8))) {
    return Fail(sqlite3_errcode(db_.handle()), name);
  }
  const int columns = sqlite3_column_count(select.get());
  if (columns > kColumnLimit) {
    problem_.code = err::kInvalidBinaryFormat;
    problem_.table = name;
    problem_.detail = std::to_string(columns) + " columns; a table holds at most 2047 fields.";
    return false;
  }
  return true;
}

bool Importer::NextRow(uint32_t row, const std::string& name) {
  if (row >= kRowLimit) {
    problem_.code = err::kTooManyRecords;
    problem_.table = name;
    return false;
  }
  if (row % kProgressStep == 0) {
    ReportProgress(row, 0);
    if (ProgressCancelled()) {
      cancelled_ = true;
      return false;
    }
  }
  return true;
}

bool Importer::AppendValue(ImportedTable& table, Statement& select, int at, uint32_t row,
                           uint16_t column, uint8_t extraTag, uint8_t& saw) {
  switch (select.ColumnType(at)) {
    case SQLITE_INTEGER:
      saw |= kSawNumber;
      return table.AppendNumber(row, column, static_cast<double>(select.ColumnInt(at)), extraTag);
    case SQLITE_FLOAT:
      saw |= kSawNumber;
      return table.AppendNumber(row, column, select.ColumnReal(at), extraTag);
    case SQLITE_TEXT: {
      saw |= kSawText;
      std::string_view utf8 = select.ColumnText(at);
      if (text::IsAscii(utf8)) return table.AppendText(row, column, utf8, extraTag);
      text_ = text::Utf8ToCp1252(utf8);
      return table.AppendText(row, column, text_, extraTag);
    }
    case SQLITE_BLOB:
      saw |= kSawBlob;
      return true;
    default:
      return true;
  }
}

bool Importer::Plain(const SqlTable& sql) {
  const std::string name = text::Utf8ToCp1252(sql.nameUtf8);
  if (!CheckName(name)) return false;
  Statement select;
  if (!Select(sql.nameUtf8, name, select)) return false;
  const int columns = sqlite3_column_count(select.get());
  ImportedTable table;
  if (!table.Begin(book_, name)) return false;
  book_.currentSheet = table.table().data;
  if (!RefreshCurrentTable(book_)) return false;
  // The field dialog's rules decide the names; a refused one stops the import with its message.
  std::vector<FieldEdit> edits(columns);
  for (int c = 0; c < columns; ++c) {
    const char* columnName = sqlite3_column_name(select.get(), c);
    edits[c].name = text::Utf8ToCp1252(columnName != nullptr ? columnName : "");
  }
  std::vector<FieldSpec> fields;
  size_t refused = 0;
  FieldCheck check = CheckNewFields(table.table(), edits, fields, refused);
  if (!check.ok()) {
    problem_.reason = check.Text();
    problem_.table = name;
    problem_.column = refused < edits.size() ? edits[refused].name : std::string();
    // The check may have cut the name; the column is named as the file has it.
    if (refused < edits.size()) {
      const char* columnName = sqlite3_column_name(select.get(), static_cast<int>(refused));
      problem_.column = text::Utf8ToCp1252(columnName != nullptr ? columnName : "");
    }
    return false;
  }
  std::vector<uint8_t> saw(columns, 0);
  std::vector<SheetObject> objects;
  // The text and number cells of a column that also holds BLOBs: they become objects at the end.
  uint32_t row = 0;
  int result;
  while ((result = select.Step()) == SQLITE_ROW) {
    if (!NextRow(row, name)) return false;
    for (int c = 0; c < columns; ++c) {
      if (!AppendValue(table, select, c, row, static_cast<uint16_t>(c), 0, saw[c])) return false;
      if (select.ColumnType(c) == SQLITE_BLOB) {
        std::string_view bytes = select.ColumnBlob(c);
        objects.push_back(SheetObject{row, static_cast<uint16_t>(c), FieldType::kFiles,
                                      Packed(BlobName(fields[c].name, row, bytes), "BLOB", bytes)});
      }
    }
    ++row;
  }
  if (result != SQLITE_DONE) return Fail(result, name);
  for (int c = 0; c < columns; ++c) {
    FieldSpec& field = fields[c];
    if (saw[c] & kSawBlob) {
      field.type = FieldType::kFiles;
    } else if (saw[c] == kSawNumber) {
      field.type = FieldType::kNumber;
    } else if (saw[c] == 0) {
      // No value to go by: the declared type's affinity decides, as SQLite's own rules do.
      const char* declared = sqlite3_column_decltype(select.get(), c);
      const std::string type = text::Upper(declared != nullptr ? declared : "");
      const bool numeric =
          type.find("INT") != std::string::npos || type.find("REAL") != std::string::npos ||
          type.find("FLOA") != std::string::npos || type.find("DOUB") != std::string::npos ||
          type.find("NUM") != std::string::npos || type.find("DEC") != std::string::npos;
      const bool text = type.find("CHAR") != std::string::npos ||
                        type.find("CLOB") != std::string::npos ||
                        type.find("TEXT") != std::string::npos;
      if (numeric && !text) field.type = FieldType::kNumber;
      if (type.find("BLOB") != std::string::npos) field.type = FieldType::kFiles;
    }
  }
  if (!table.Finish(fields)) return false;
  Worksheet& data = *table.table().data;
  // A column of BLOBs mixed with other values keeps every value, each text or number as an
  // object of its own, since an Images/Files cell holds no text.
  for (int c = 0; c < columns; ++c) {
    if (!(saw[c] & kSawBlob) || saw[c] == kSawBlob) continue;
    const uint16_t column = static_cast<uint16_t>(c);
    CellCursor cursor;
    while (const CellRecord* r = data.cells.NextCell(cursor)) {
      if (cell::Column(r) != column) continue;
      const uint32_t at = cell::Row(r);
      char number[32];
      std::snprintf(number, sizeof number, "%.15g", cell::IsText(r) ? 0.0 : cell::Number(r));
      std::string bytes = cell::IsText(r) ? std::string(cell::Text(r)) : std::string(number);
      objects.push_back(SheetObject{
          at, column, FieldType::kFiles,
          Packed(fields[c].name + "_" + std::to_string(at + 1) + ".txt", "TEXT", bytes)});
    }
    data.cells.DeleteRange(column, column, 0, kLastRow);
  }
  data.objects = std::move(objects);
  return RefreshCurrentTable(book_);
}

bool Importer::ReadFiles(const std::string& tableUtf8, const std::vector<std::string>& fieldNames,
                         std::vector<SheetObject>& objects) {
  Statement exists;
  if (!exists.Prepare(db_, "SELECT 1 FROM sqlite_schema WHERE type = 'table' AND name = ?")) {
    return Fail(sqlite3_errcode(db_.handle()), text::Utf8ToCp1252(tableUtf8));
  }
  const std::string filesUtf8 = tableUtf8 + kSqliteFilesSuffix;
  exists.BindText(1, filesUtf8);
  if (exists.Step() != SQLITE_ROW) return true;
  Statement select;
  if (!select.Prepare(db_, "SELECT record, field, name, type, bytes FROM " + Quoted(filesUtf8) +
                               " ORDER BY record, rowid")) {
    return Fail(sqlite3_errcode(db_.handle()), text::Utf8ToCp1252(filesUtf8));
  }
  BinaryObjectList list;
  int64_t listRow = -1;
  int listField = -1;
  auto flush = [&] {
    if (list.first() != nullptr) {
      objects.push_back(SheetObject{static_cast<uint32_t>(listRow),
                                    static_cast<uint16_t>(listField), FieldType::kFiles,
                                    PackObjects(list)});
    }
    list.Clear();
  };
  int result;
  while ((result = select.Step()) == SQLITE_ROW) {
    const int64_t row = select.ColumnInt(0) - 1;
    std::string_view field = select.ColumnText(1);
    int f = -1;
    for (size_t i = 0; i < fieldNames.size() && f < 0; ++i) {
      if (fieldNames[i] == field) f = static_cast<int>(i);
    }
    if (row < 0 || row > kLastRow || f < 0) continue;
    if (row != listRow || f != listField) {
      flush();
      listRow = row;
      listField = f;
    }
    if (list.Append(text::Utf8ToCp1252(select.ColumnText(2)),
                    text::Utf8ToCp1252(select.ColumnText(3)), select.ColumnBlob(4)) == nullptr) {
      problem_.code = err::kOutOfMemory;
      return false;
    }
  }
  flush();
  if (result != SQLITE_DONE) return Fail(result, text::Utf8ToCp1252(filesUtf8));
  return true;
}

bool Importer::Catalogued(const TableCatalogue& stored, bool hasRows) {
  const std::string& name = stored.name;
  // A loaded catalogue may hold names the dialogs would refuse; only a clash is fatal.
  if (book_.FindTable(name) != nullptr) {
    problem_.reason = FormatString(157);
    problem_.table = name;
    return false;
  }
  const std::string nameUtf8 = text::Cp1252ToUtf8(name);
  Statement select;
  if (hasRows && !Select(nameUtf8, name, select)) return false;
  ImportedTable table;
  if (!table.Begin(book_, name)) return false;
  Worksheet& catalogueSheet = *table.table().catalogue;
  catalogueSheet.cells.DeleteRange(0, kLastColumn, 0, kLastRow);
  if (!PutStoredCells(catalogueSheet, stored.cells)) {
    book_.errorCode = err::kOutOfMemory;
    return false;
  }
  const uint16_t fieldCount = FieldCount(table.table());
  std::vector<FieldSpec> fields(fieldCount);
  std::vector<std::string> fieldNames(fieldCount);  // UTF-8, as the SQL columns are named
  std::vector<uint8_t> autoTag(fieldCount, 0);
  for (uint16_t f = 0; f < fieldCount; ++f) {
    if (!ReadField(table.table(), f, fields[f])) {
      fields[f].name = std::string(CatalogueText(catalogueSheet, f + 1u, catalogue::kFieldColumn));
      fields[f].type = FieldType::kUnknown;
    }
    fieldNames[f] = text::Cp1252ToUtf8(fields[f].name.empty() ? "field" + std::to_string(f + 1)
                                                              : fields[f].name);
    std::string formula, value;
    SplitFormulaOrValue(fields[f].formulaOrValue, formula, value);
    if (!formula.empty() && (formula[0] == '=' || formula[0] == '+')) autoTag[f] = cell::kAuto;
  }
  // Each field's column and, for Long Text, its RTF column, by name.
  const int columns = hasRows ? sqlite3_column_count(select.get()) : 0;
  std::vector<int> at(fieldCount, -1), rtfAt(fieldCount, -1);
  for (int c = 0; c < columns; ++c) {
    const char* columnName = sqlite3_column_name(select.get(), c);
    if (columnName == nullptr) continue;
    for (uint16_t f = 0; f < fieldCount; ++f) {
      if (at[f] < 0 && fieldNames[f] == columnName) at[f] = c;
    }
    for (const auto& [f, rtfName] : stored.rtfColumns) {
      if (f < fieldCount && rtfName == columnName) rtfAt[f] = c;
    }
  }
  std::vector<SheetObject> objects;
  uint8_t ignored = 0;
  uint32_t row = 0;
  int result = SQLITE_DONE;
  while (hasRows && (result = select.Step()) == SQLITE_ROW) {
    if (!NextRow(row, name)) return false;
    for (uint16_t f = 0; f < fieldCount; ++f) {
      if (at[f] < 0) continue;
      const FieldType type = fields[f].type;
      if (type == FieldType::kFiles) continue;
      if (type != FieldType::kLongText) {
        if (!AppendValue(table, select, at[f], row, f, autoTag[f], ignored)) return false;
        continue;
      }
      const bool rich = rtfAt[f] >= 0 && select.ColumnType(rtfAt[f]) == SQLITE_TEXT;
      const int from = rich ? rtfAt[f] : at[f];
      if (select.ColumnType(from) == SQLITE_NULL) continue;
      text_ = text::Utf8ToCp1252(select.ColumnText(from));
      if (text_.size() <= kLongTextInCell && !text_.empty()) {
        if (!table.AppendText(row, f, text_)) return false;
      } else {
        objects.push_back(SheetObject{row, f, FieldType::kLongText, text_});
      }
    }
    ++row;
  }
  if (result != SQLITE_DONE) return Fail(result, name);
  if (!ReadFiles(nameUtf8, fieldNames, objects)) return false;
  if (!table.Finish({})) return false;
  Worksheet& data = *table.table().data;
  if (!PutStoredCells(data, stored.overrides)) {
    book_.errorCode = err::kOutOfMemory;
    return false;
  }
  data.objects = std::move(objects);
  if (!layouts_.Apply(stored, table.table(), problem_)) return false;
  SelectKey(table.table(), stored.key);
  SelectForm(table.table(), stored.form);
  return RefreshCurrentTable(book_);
}

// The tables of the file in the order they were made, without SQLite's own, the catalogue and
// the tables behind a virtual table. A view comes only when asked for by name.
bool ListTables(Database& db, const std::string& only, std::vector<SqlTable>& out,
                SqliteProblem& problem) {
  std::unordered_set<std::string> shadow;
  Statement list;
  if (list.Prepare(db,
                   "SELECT name FROM pragma_table_list WHERE schema = 'main' AND "
                   "type = 'shadow'")) {
    while (list.Step() == SQLITE_ROW) shadow.insert(std::string(list.ColumnText(0)));
  }
  Statement select;
  if (!select.Prepare(db,
                      "SELECT name, type FROM sqlite_schema WHERE type IN ('table', 'view') "
                      "ORDER BY rowid")) {
    SqliteFailure(db, sqlite3_errcode(db.handle()), err::kInvalidDatabase, problem);
    return false;
  }
  int result;
  while ((result = select.Step()) == SQLITE_ROW) {
    std::string name(select.ColumnText(0));
    const bool view = select.ColumnText(1) == "view";
    if (name.compare(0, 7, "sqlite_") == 0 || name == kSqliteCatalogueTable ||
        shadow.count(name) != 0) {
      continue;
    }
    if (only.empty() ? view : !text::EqualNoCase(text::Utf8ToCp1252(name), only)) continue;
    out.push_back(SqlTable{name, view});
  }
  if (result != SQLITE_DONE) {
    SqliteFailure(db, result, err::kInvalidDatabase, problem);
    return false;
  }
  return true;
}

bool ReadAll(Database& db, Workbook& fresh, const std::string& only, SqliteProblem& problem,
             bool& cancelled) {
  std::vector<SqlTable> tables;
  StoredCatalogues stored;
  if (!ListTables(db, only, tables, problem) || !ReadCatalogues(db, stored, problem)) return false;
  LayoutReader layouts;
  if (stored.styles && !layouts.Begin(*stored.styles, fresh, problem)) return false;
  Importer importer(db, fresh, layouts, problem);
  Worksheet* current = nullptr;
  // The tables the catalogue describes come first, in their order; their file side tables are
  // theirs and no tables of their own.
  std::unordered_set<std::string> done;
  for (const TableCatalogue& table : stored.tables) {
    const std::string nameUtf8 = text::Cp1252ToUtf8(table.name);
    bool listed = false;
    for (const SqlTable& t : tables) listed = listed || (t.nameUtf8 == nameUtf8 && !t.view);
    done.insert(nameUtf8 + kSqliteFilesSuffix);
    // A table without fields has no SQL table; it comes with the others, or when named.
    const bool wanted = listed || only.empty() || text::EqualNoCase(table.name, only);
    if (!wanted) continue;
    done.insert(nameUtf8);
    if (!importer.Catalogued(table, listed)) {
      cancelled = importer.cancelled();
      return false;
    }
    if (table.current) current = fresh.FindTable(table.name);
  }
  for (const SqlTable& t : tables) {
    if (done.count(t.nameUtf8) != 0) continue;
    if (!importer.Plain(t)) {
      cancelled = importer.cancelled();
      return false;
    }
  }
  if (fresh.TableCount() == 0) {
    problem.code = only.empty() ? err::kNeedsOneTable : err::kInvalidNodePath;
    problem.table = only;
    return false;
  }
  fresh.currentSheet = current != nullptr ? current : fresh.TableByIndex(0);
  return RefreshCurrentTable(fresh);
}

}  // namespace

bool ImportSqlite(Workbook& book, const std::string& path, const std::string& table,
                  SqliteProblem& problem, bool heldByCaller) {
  problem = SqliteProblem();
  book.errorCode = err::kNone;
  Database db;
  if (!db.Open(path, SQLITE_OPEN_READONLY, heldByCaller)) {
    problem.code = err::kFileOpenRead;
    problem.detail = db.message();
    return false;
  }
  auto fresh = std::make_unique<Workbook>();
  bool cancelled = false;
  if (!ReadAll(db, *fresh, table, problem, cancelled)) {
    if (cancelled) {
      problem = SqliteProblem();
    } else if (!problem.any()) {
      problem.code = fresh->errorCode != err::kNone ? fresh->errorCode : err::kInvalidDatabase;
    }
    return false;
  }
  book.SwapContents(*fresh);
  book.errorCode = err::kNone;
  return true;
}

}  // namespace kelpdex
