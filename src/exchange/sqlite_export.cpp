// Writing tables into a new SQLite file: one SQL table per table with a column per field, its
// rows in storage order (so the rowid is the record's row plus one), Images/Files objects in a
// side table "<table>__files", and the catalogue in "kelpdex_catalogue". One transaction and one
// prepared insert per table; the file is made beside the target and renamed over it at the end.
#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <vector>

#include "core/progress.h"
#include "exchange/sqlite_parts.h"
#include "persist/document_file.h"
#include "persist/side_file_io.h"
#include "persist/side_values.h"
#include "platform/os.h"
#include "store/catalogue.h"
#include "store/cell_error.h"
#include "store/cell_record.h"
#include "store/field_row.h"
#include "text/code_page.h"
#include "text/rtf_text.h"
#include "text/utf8.h"

namespace kelpdex {

namespace {

using namespace sqlite;

constexpr double kExactInteger = 9007199254740992.0;  // 2^53
constexpr uint32_t kProgressStep = 4096;

struct FieldPlan {
  FieldSpec row;        // the catalogue row
  std::string sqlName;  // UTF-8
  bool calculated = false;
  bool integral = true;  // every number of a Number field is whole
  int rtfBind = 0;       // the insert's parameter of the RTF column, 0 while it has none
};

// A table wider than the SQLite library allows is refused by name before a byte of it is written,
// rather than with SQLite's own words halfway through. Debian's library allows 2000 columns, fewer
// than a table's 2047 fields.
bool WithinColumnLimit(Database& db, std::string_view table, size_t columns,
                       SqliteProblem& problem) {
  const int limit = sqlite3_limit(db.handle(), SQLITE_LIMIT_COLUMN, -1);
  if (columns <= static_cast<size_t>(limit)) return true;
  problem.code = err::kFileWrite;
  problem.table = std::string(table);
  problem.detail = std::to_string(columns) + " columns; an SQLite table holds at most " +
                   std::to_string(limit) + " here.";
  return false;
}

bool IsIntegral(double value) {
  return std::floor(value) == value && std::fabs(value) < kExactInteger;
}

// An object's type word is the file's modification time where kpx or the desktop attached it.
bool LooksLikeGenericDate(const char* type) {
  for (int i = 0; i < 10; ++i) {
    const char c = type[i];
    if (i == 4 || i == 7 ? c != '-' : (c < '0' || c > '9')) return false;
  }
  return true;
}

class TableExporter {
 public:
  TableExporter(Database& db, const Workbook& book, const TableSpec& table,
                CatalogueWriter& catalogue, SideFileReader& side, bool& sideOpen,
                SqliteProblem& problem)
      : db_(db),
        book_(book),
        table_(table),
        catalogue_(catalogue),
        side_(side),
        sideOpen_(sideOpen),
        problem_(problem) {}

  bool Run(uint32_t position, bool current);
  bool cancelled() const { return cancelled_; }

 private:
  bool Fail(int result) {
    SqliteFailure(db_, result, err::kFileWrite, problem_);
    problem_.table = std::string(table_.data->Name());
    return false;
  }
  bool PlanFields();
  bool WriteCatalogue(uint32_t position, bool current);
  bool CreateTable();
  bool PrepareInsert();
  bool AddRtfColumn(FieldPlan& plan);
  bool WriteRows();
  bool BindLongText(uint32_t row, uint16_t f, const CellRecord* cell);
  bool WriteObjects(uint32_t row, uint16_t f, const CellRecord* cell);
  bool OpenSide();
  void BindCell(int at, const FieldPlan& plan, const CellRecord* r);

  Database& db_;
  const Workbook& book_;
  const TableSpec& table_;
  CatalogueWriter& catalogue_;
  SideFileReader& side_;
  bool& sideOpen_;
  SqliteProblem& problem_;
  std::string tableUtf8_;
  std::vector<FieldPlan> fields_;
  std::vector<std::string> rtfNames_;  // UTF-8, in the order they were added
  std::unordered_map<uint64_t, const SheetObject*> pending_;
  Statement insert_;
  Statement files_;
  std::string utf8_;
  std::string value_;
  BinaryObjectList list_;
  bool cancelled_ = false;
  bool restart_ = false;
};

bool TableExporter::PlanFields() {
  const uint16_t count = FieldCount(table_);
  fields_.resize(count);
  for (uint16_t f = 0; f < count; ++f) {
    FieldPlan& plan = fields_[f];
    if (!ReadField(table_, f, plan.row)) {
      // A row the catalogue cannot describe still names a column; its cells go as they are.
      plan.row = FieldSpec{};
      plan.row.name =
          std::string(CatalogueText(*table_.catalogue, f + 1u, catalogue::kFieldColumn));
      plan.row.type = FieldType::kUnknown;
    }
    if (plan.row.name.empty()) plan.row.name = "field" + std::to_string(f + 1);
    plan.sqlName = text::Cp1252ToUtf8(plan.row.name);
    std::string formula, value;
    SplitFormulaOrValue(plan.row.formulaOrValue, formula, value);
    plan.calculated = !formula.empty() && (formula[0] == '=' || formula[0] == '+');
  }
  return true;
}

// The catalogue sheet cell by cell, then the data cells that their SQL column would change: a
// number in a TEXT column, a text in a numeric one, an error, an Auto mark where the field's
// kind does not imply it. Whether a Number field is wholly integral is learnt on the way.
bool TableExporter::WriteCatalogue(uint32_t position, bool current) {
  if (!catalogue_.Table(tableUtf8_, position, current, CurrentKey(table_), CurrentForm(table_)) ||
      !WriteLayouts(catalogue_, tableUtf8_, table_)) {
    return Fail(sqlite3_errcode(db_.handle()));
  }
  StoredCell stored;
  auto store = [&](const CellRecord* r) {
    stored.row = cell::Row(r);
    stored.column = cell::Column(r);
    stored.tag = cell::Tag(r);
    stored.isText =
        cell::IsText(r) || (cell::IsFormula(r) && (cell::FormulaFlags(r) & cell::kCachedString));
    stored.text.clear();
    if (stored.isText) {
      stored.text = std::string(cell::IsText(r) ? cell::Text(r) : cell::CachedString(r));
    } else {
      stored.number = cell::IsNumber(r) ? cell::Number(r) : cell::CachedNumber(r);
    }
  };
  CellCursor cursor;
  while (const CellRecord* r = table_.catalogue->cells.NextCell(cursor)) {
    store(r);
    if (!catalogue_.Cell(tableUtf8_, "cell", stored)) return Fail(sqlite3_errcode(db_.handle()));
  }
  cursor = CellCursor();
  while (const CellRecord* r = table_.data->cells.NextCell(cursor)) {
    const uint16_t c = cell::Column(r);
    if (c >= fields_.size()) continue;
    FieldPlan& plan = fields_[c];
    const FieldType type = plan.row.type;
    if (type == FieldType::kLongText || type == FieldType::kFiles) continue;
    const bool number = cell::IsNumber(r);
    const bool odd = cell::ErrorNibble(r) != 0 || cell::IsFormula(r) ||
                     cell::IsAuto(r) != plan.calculated ||
                     (type == FieldType::kNumber ? !number : number) ||
                     (number && !std::isfinite(cell::Number(r)));
    if (type == FieldType::kNumber && number && !IsIntegral(cell::Number(r))) plan.integral = false;
    if (!odd) continue;
    store(r);
    if (!catalogue_.Cell(tableUtf8_, "data", stored)) return Fail(sqlite3_errcode(db_.handle()));
  }
  return true;
}

bool TableExporter::CreateTable() {
  // SQL has no table without columns: a table without fields lives in the catalogue alone.
  if (fields_.empty()) return true;
  std::string sql = "CREATE TABLE " + Quoted(tableUtf8_) + "(";
  for (size_t f = 0; f < fields_.size(); ++f) {
    const FieldPlan& plan = fields_[f];
    if (f) sql += ", ";
    sql += Quoted(plan.sqlName);
    if (plan.row.type == FieldType::kNumber) {
      sql += plan.integral ? " INTEGER" : " REAL";
    } else if (plan.row.type != FieldType::kUnknown) {
      sql += " TEXT";
    }
  }
  sql += ")";
  if (!db_.Exec(sql.c_str())) return Fail(sqlite3_errcode(db_.handle()));
  return PrepareInsert();
}

bool TableExporter::PrepareInsert() {
  std::string sql = "INSERT INTO " + Quoted(tableUtf8_) + " VALUES(";
  const size_t columns = fields_.size() + rtfNames_.size();
  for (size_t i = 0; i < columns; ++i) sql += i ? ",?" : "?";
  sql += ")";
  return insert_.Prepare(db_, sql) || Fail(sqlite3_errcode(db_.handle()));
}

// The RTF column is added when the first RTF value turns up, so a field of plain texts gets none.
// The rows written before read NULL in it.
bool TableExporter::AddRtfColumn(FieldPlan& plan) {
  std::string name = plan.sqlName + "_rtf";
  auto taken = [&](const std::string& candidate) {
    for (const FieldPlan& other : fields_) {
      if (text::EqualNoCase(other.sqlName, candidate)) return true;
    }
    for (const std::string& other : rtfNames_) {
      if (text::EqualNoCase(other, candidate)) return true;
    }
    return false;
  };
  while (taken(name)) name += "_";
  if (!WithinColumnLimit(db_, table_.data->Name(), fields_.size() + rtfNames_.size() + 1,
                         problem_)) {
    return false;
  }
  std::string sql = "ALTER TABLE " + Quoted(tableUtf8_) + " ADD COLUMN " + Quoted(name) + " TEXT";
  if (!db_.Exec(sql.c_str())) return Fail(sqlite3_errcode(db_.handle()));
  rtfNames_.push_back(name);
  plan.rtfBind = static_cast<int>(fields_.size() + rtfNames_.size());
  if (!catalogue_.Rtf(tableUtf8_, static_cast<uint16_t>(&plan - fields_.data()), name)) {
    return Fail(sqlite3_errcode(db_.handle()));
  }
  return PrepareInsert();
}

bool TableExporter::OpenSide() {
  if (sideOpen_) return true;
  ErrorCode error = err::kNone;
  if (!side_.Open(SideFilePath(book_.fileName), error)) {
    problem_.code = error;
    problem_.table = std::string(table_.data->Name());
    return false;
  }
  sideOpen_ = true;
  return true;
}

void TableExporter::BindCell(int at, const FieldPlan& plan, const CellRecord* r) {
  if (cell::IsText(r) || (cell::IsFormula(r) && (cell::FormulaFlags(r) & cell::kCachedString))) {
    std::string_view text = cell::IsText(r) ? cell::Text(r) : cell::CachedString(r);
    if (text::IsAscii(text)) {
      // The cell stays put until the row is inserted: nothing writes to the sheet meanwhile.
      insert_.BindStaticText(at, text);
    } else {
      utf8_.clear();
      text::AppendCp1252AsUtf8(utf8_, text);
      insert_.BindText(at, utf8_);
    }
    return;
  }
  if (cell::ErrorNibble(r) != 0) {
    // The catalogue keeps the cell; SQL readers see the error's name.
    insert_.BindText(at, ErrorLiteral(cell::ErrorNibble(r)));
    return;
  }
  const double value = cell::IsNumber(r) ? cell::Number(r) : cell::CachedNumber(r);
  if (!std::isfinite(value)) {
    insert_.BindNull(at);
  } else if (plan.row.type == FieldType::kNumber && plan.integral) {
    insert_.BindInt(at, static_cast<int64_t>(value));
  } else {
    insert_.BindReal(at, value);
  }
}

bool TableExporter::BindLongText(uint32_t row, uint16_t f, const CellRecord* cell) {
  value_.clear();
  auto found = pending_.find((static_cast<uint64_t>(row) << 16) | f);
  if (found != pending_.end()) {
    value_ = found->second->content;
  } else if (cell != nullptr && cell::IsText(cell)) {
    value_ = std::string(cell::Text(cell));
  } else if (uint32_t offset = 0; StoredOffset(cell, offset)) {
    ErrorCode error = err::kNone;
    if (!OpenSide() || !side_.ReadLongText(offset, value_, error)) {
      if (problem_.code == err::kNone) problem_.code = error;
      problem_.table = std::string(table_.data->Name());
      problem_.column = fields_[f].row.name;
      return false;
    }
  } else {
    return true;
  }
  FieldPlan& plan = fields_[f];
  if (text::IsRichText(value_)) {
    if (plan.rtfBind == 0) {
      // The new statement has lost the row's bindings: the caller binds the row again.
      restart_ = true;
      return AddRtfColumn(plan);
    }
    utf8_.clear();
    text::AppendCp1252AsUtf8(utf8_, value_);
    insert_.BindText(plan.rtfBind, utf8_);
    value_ = text::LongTextPlain(value_);
  }
  utf8_.clear();
  text::AppendCp1252AsUtf8(utf8_, value_);
  insert_.BindText(f + 1, utf8_);
  return true;
}

bool TableExporter::WriteObjects(uint32_t row, uint16_t f, const CellRecord* cell) {
  list_.Clear();
  auto found = pending_.find((static_cast<uint64_t>(row) << 16) | f);
  if (found != pending_.end()) {
    if (!UnpackObjects(found->second->content, list_)) {
      problem_.code = err::kOutOfMemory;
      return false;
    }
  } else if (uint32_t offset = 0; StoredOffset(cell, offset)) {
    ErrorCode error = err::kNone;
    if (!OpenSide() || !side_.ReadObjects(offset, list_, error)) {
      if (problem_.code == err::kNone) problem_.code = error;
      problem_.table = std::string(table_.data->Name());
      problem_.column = fields_[f].row.name;
      return false;
    }
  }
  if (list_.first() == nullptr) return true;
  if (files_.get() == nullptr) {
    const std::string name = Quoted(tableUtf8_ + kSqliteFilesSuffix);
    std::string sql = "CREATE TABLE " + name +
                      "(record INTEGER, field TEXT, name TEXT, type TEXT, size INTEGER, "
                      "modified TEXT, bytes BLOB)";
    if (!db_.Exec(sql.c_str())) return Fail(sqlite3_errcode(db_.handle()));
    if (!files_.Prepare(db_, "INSERT INTO " + name + " VALUES(?,?,?,?,?,?,?)")) {
      return Fail(sqlite3_errcode(db_.handle()));
    }
  }
  std::string shown;
  for (const BinaryObjectItem* item = list_.first(); item != nullptr; item = item->next) {
    if (item != list_.first()) shown += "; ";
    shown += item->name;
    files_.BindInt(1, row + 1);
    files_.BindText(2, fields_[f].sqlName);
    files_.BindText(3, text::Cp1252ToUtf8(item->name));
    files_.BindText(4, text::Cp1252ToUtf8(item->type));
    files_.BindInt(5, item->size);
    if (LooksLikeGenericDate(item->type)) {
      files_.BindText(6, item->type);
    } else {
      files_.BindNull(6);
    }
    files_.BindBlob(7, item->data != nullptr ? item->data : reinterpret_cast<const uint8_t*>(""),
                    item->size);
    const int result = files_.Step();
    files_.Reset();
    if (result != SQLITE_DONE) return Fail(result);
  }
  // The table's own column names the objects, as the grid shows them.
  insert_.BindText(f + 1, text::Cp1252ToUtf8(shown));
  return true;
}

bool TableExporter::WriteRows() {
  const Worksheet& data = *table_.data;
  for (const SheetObject& object : data.objects) {
    pending_[(static_cast<uint64_t>(object.row) << 16) | object.column] = &object;
  }
  const uint32_t used = data.UsedRows();
  const uint16_t fieldCount = static_cast<uint16_t>(fields_.size());
  std::vector<const CellRecord*> rowCells(fieldCount, nullptr);
  // The Long Text fields, then the Images/Files fields: a row bound again after a new RTF column
  // must not have written its objects yet.
  std::vector<uint16_t> special;
  for (FieldType kind : {FieldType::kLongText, FieldType::kFiles}) {
    for (uint16_t f = 0; f < fieldCount; ++f) {
      if (fields_[f].row.type == kind) special.push_back(f);
    }
  }
  CellCursor cursor;
  const CellRecord* next = const_cast<CellStore&>(data.cells).NextCell(cursor);
  for (uint32_t row = 0; row < used; ++row) {
    if (row % kProgressStep == 0) {
      ReportProgress(row, used);
      if (ProgressCancelled()) {
        cancelled_ = true;
        return false;
      }
    }
    std::fill(rowCells.begin(), rowCells.end(), nullptr);
    while (next != nullptr && cell::Row(next) == row) {
      const uint16_t c = cell::Column(next);
      if (c < fieldCount) rowCells[c] = next;
      next = const_cast<CellStore&>(data.cells).NextCell(cursor);
    }
    do {
      restart_ = false;
      for (uint16_t f = 0; f < fieldCount; ++f) {
        const FieldType type = fields_[f].row.type;
        if (rowCells[f] == nullptr || type == FieldType::kLongText || type == FieldType::kFiles) {
          continue;
        }
        BindCell(f + 1, fields_[f], rowCells[f]);
      }
      for (uint16_t f : special) {
        const bool ok = fields_[f].row.type == FieldType::kLongText
                            ? BindLongText(row, f, rowCells[f])
                            : WriteObjects(row, f, rowCells[f]);
        if (!ok) return false;
        if (restart_) break;
      }
    } while (restart_);
    const int result = insert_.Step();
    insert_.Reset();
    sqlite3_clear_bindings(insert_.get());
    if (result != SQLITE_DONE) return Fail(result);
  }
  return true;
}

bool TableExporter::Run(uint32_t position, bool current) {
  tableUtf8_ = text::Cp1252ToUtf8(table_.data->Name());
  return PlanFields() && WriteCatalogue(position, current) && CreateTable() &&
         (fields_.empty() || WriteRows());
}

// Beside the target, so that the final rename stays within one file system.
std::string TemporaryPath(const std::string& path) {
  std::string folder = platform::FolderOf(path);
  std::string name = "." + platform::FileNameOf(path) + ".saving";
  return folder.empty() ? name : platform::JoinPath(folder, name);
}

bool WriteAll(Database& db, const Workbook& book, const std::string& only, SqliteProblem& problem,
              bool& cancelled) {
  const uint32_t count = book.TableCount();
  for (uint32_t i = 0; i < count; ++i) {
    Worksheet* data = book.TableByIndex(i);
    if (!only.empty() && !text::EqualNoCase(data->Name(), only)) continue;
    TableSpec table;
    if (MakeTableSpec(const_cast<Workbook&>(book), data->Name(), table) &&
        !WithinColumnLimit(db, data->Name(), FieldCount(table), problem)) {
      return false;
    }
  }
  if (!db.Exec("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA locking_mode=EXCLUSIVE; "
               "BEGIN")) {
    SqliteFailure(db, sqlite3_errcode(db.handle()), err::kFileWrite, problem);
    return false;
  }
  CatalogueWriter catalogue;
  if (!catalogue.Begin(db) || !WriteStyles(catalogue, book)) {
    SqliteFailure(db, sqlite3_errcode(db.handle()), err::kFileWrite, problem);
    return false;
  }
  SideFileReader side;
  bool sideOpen = false;
  bool any = false;
  for (uint32_t i = 0; i < count; ++i) {
    Worksheet* data = book.TableByIndex(i);
    if (!only.empty() && !text::EqualNoCase(data->Name(), only)) continue;
    TableSpec table;
    if (!MakeTableSpec(const_cast<Workbook&>(book), data->Name(), table)) {
      problem.code = err::kInvalidDatabase;
      problem.table = std::string(data->Name());
      return false;
    }
    TableExporter exporter(db, book, table, catalogue, side, sideOpen, problem);
    if (!exporter.Run(i, data == book.currentSheet)) {
      cancelled = exporter.cancelled();
      return false;
    }
    any = true;
  }
  if (!any) {
    problem.code = only.empty() ? err::kNeedsOneTable : err::kInvalidNodePath;
    problem.table = only;
    return false;
  }
  if (!db.Exec("COMMIT")) {
    SqliteFailure(db, sqlite3_errcode(db.handle()), err::kFileWrite, problem);
    return false;
  }
  return true;
}

}  // namespace

bool ExportSqlite(const Workbook& book, const std::string& path, const std::string& table,
                  SqliteProblem& problem) {
  problem = SqliteProblem();
  // The checks of the native save: a link is followed, a folder or a file we may not write is
  // refused before anything is made.
  const std::string target = platform::ResolveLinks(path);
  platform::ReplacedFile old;
  if (target.empty() || !platform::InspectReplacedFile(target, old)) {
    problem.code = err::kFileOpenWrite;
    return false;
  }
  if (old.folder) {
    problem.code = err::kFolderPath;
    return false;
  }
  if (old.exists && (!old.writable || !old.regular)) {
    problem.code = err::kFileOpenWrite;
    return false;
  }
  const std::string temporary = TemporaryPath(target);
  platform::DeleteFile(temporary);
  if (old.exists && !platform::CreatePrivateFile(temporary, old)) {
    problem.code = err::kFileOpenWrite;
    return false;
  }
  bool ok = false;
  bool cancelled = false;
  {
    Database db;
    ok = db.Open(temporary, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    if (!ok) {
      problem.code = err::kFileOpenWrite;
      problem.detail = db.message();
    }
    ok = ok && WriteAll(db, book, table, problem, cancelled);
  }
  if (cancelled) problem = SqliteProblem();
  ok = ok && platform::SyncFile(temporary) &&
       (!old.exists || platform::TakeOverPermissions(temporary, old)) &&
       platform::ReplaceFile(temporary, target);
  if (!ok) {
    if (!problem.any() && !cancelled) problem.code = err::kFileWrite;
    platform::DeleteFile(temporary);
    return false;
  }
  std::string folder = platform::FolderOf(target);
  platform::SyncFile(folder.empty() ? "." : folder);
  return true;
}

}  // namespace kelpdex
