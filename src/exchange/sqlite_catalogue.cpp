// The "kelpdex_catalogue" table: one row per entry, (tbl, kind, row, col, value, tag). Kinds:
// "table" gives the table's place (row) and whether it is current (col); "marks" the current key
// (row) and form (col); "cell" a cell of the catalogue sheet; "data" a data cell its SQL column
// cannot hold as it is (a number in a TEXT column, an error, an Auto mark out of place); "rtf" the
// column (value) that holds the RTF of Long Text field col; "styles" (once, for no table) and
// "layout" the sheets' formats as BLOBs (see sqlite_layout.cpp). The value column has no declared
// type, so SQLite keeps each value's own class.
#include <cmath>
#include <cstring>

#include "exchange/sqlite_parts.h"
#include "store/cell_record.h"
#include "text/code_page.h"
#include "text/utf8.h"

namespace kelpdex::sqlite {

namespace {

// The largest whole number a double holds exactly; beyond it a value is written as REAL.
constexpr double kExactInteger = 9007199254740992.0;

}  // namespace

bool CatalogueWriter::Begin(Database& db) {
  return db.Exec(
             "CREATE TABLE kelpdex_catalogue(tbl TEXT NOT NULL, kind TEXT NOT NULL, "
             "row INTEGER, col INTEGER, value, tag INTEGER)") &&
         insert_.Prepare(db, "INSERT INTO kelpdex_catalogue VALUES(?,?,?,?,?,?)");
}

bool CatalogueWriter::Put(const std::string& tableUtf8, const char* kind, int64_t row,
                          int64_t column) {
  insert_.BindText(1, tableUtf8);
  insert_.BindText(2, kind);
  insert_.BindInt(3, row);
  insert_.BindInt(4, column);
  bool ok = insert_.Step() == SQLITE_DONE;
  insert_.Reset();
  sqlite3_clear_bindings(insert_.get());
  return ok;
}

bool CatalogueWriter::Table(const std::string& tableUtf8, uint32_t position, bool current,
                            uint16_t key, uint16_t form) {
  return Put(tableUtf8, "table", position, current ? 1 : 0) && Put(tableUtf8, "marks", key, form);
}

bool CatalogueWriter::Cell(const std::string& tableUtf8, const char* kind, const StoredCell& cell) {
  if (cell.isText) {
    utf8_.clear();
    text::AppendCp1252AsUtf8(utf8_, cell.text);
    insert_.BindText(5, utf8_);
  } else if (std::floor(cell.number) == cell.number && std::fabs(cell.number) < kExactInteger) {
    insert_.BindInt(5, static_cast<int64_t>(cell.number));
  } else {
    // NaN and the infinities would read back as NULL; their bits survive as a blob.
    if (!std::isfinite(cell.number)) {
      insert_.BindBlob(5, &cell.number, sizeof cell.number);
    } else {
      insert_.BindReal(5, cell.number);
    }
  }
  insert_.BindInt(6, cell.tag);
  return Put(tableUtf8, kind, cell.row, cell.column);
}

bool CatalogueWriter::Rtf(const std::string& tableUtf8, uint16_t field,
                          const std::string& columnUtf8) {
  insert_.BindText(5, columnUtf8);
  return Put(tableUtf8, "rtf", 0, field);
}

bool CatalogueWriter::Blob(const std::string& tableUtf8, const char* kind, int64_t row,
                           std::string_view bytes) {
  insert_.BindBlob(5, bytes.data(), bytes.size());
  return Put(tableUtf8, kind, row, 0);
}

bool ReadCatalogues(Database& db, StoredCatalogues& stored, SqliteProblem& problem) {
  stored = StoredCatalogues();
  std::vector<TableCatalogue>& tables = stored.tables;
  Statement exists;
  if (!exists.Prepare(db,
                      "SELECT 1 FROM sqlite_schema WHERE type = 'table' AND "
                      "name = 'kelpdex_catalogue'")) {
    SqliteFailure(db, sqlite3_errcode(db.handle()), err::kInvalidDatabase, problem);
    return false;
  }
  int result = exists.Step();
  if (result == SQLITE_DONE) return true;
  if (result != SQLITE_ROW) {
    SqliteFailure(db, result, err::kInvalidDatabase, problem);
    return false;
  }
  stored.present = true;
  Statement read;
  if (!read.Prepare(
          db, "SELECT tbl, kind, row, col, value, tag FROM kelpdex_catalogue ORDER BY rowid")) {
    SqliteFailure(db, sqlite3_errcode(db.handle()), err::kInvalidDatabase, problem);
    return false;
  }
  auto bad = [&](std::string_view table) {
    problem.code = err::kInvalidDatabase;
    problem.table = std::string(table);
    problem.column = kSqliteCatalogueTable;
    return false;
  };
  while ((result = read.Step()) == SQLITE_ROW) {
    std::string table = text::Utf8ToCp1252(read.ColumnText(0));
    std::string_view kind = read.ColumnText(1);
    const int64_t row = read.ColumnInt(2);
    const int64_t column = read.ColumnInt(3);
    if (kind == "styles") {
      stored.styles = std::string(read.ColumnBlob(4));
      continue;
    }
    if (kind == "table") {
      tables.push_back(TableCatalogue{});
      tables.back().name = table;
      tables.back().current = column != 0;
      continue;
    }
    // Every other entry belongs to the table named last.
    if (tables.empty() || tables.back().name != table) return bad(table);
    TableCatalogue& t = tables.back();
    if (kind == "marks") {
      t.key = static_cast<uint16_t>(row < 0 || row > kLastColumn ? 0 : row);
      t.form = static_cast<uint16_t>(column < 0 || column > kLastColumn ? 0 : column);
      continue;
    }
    if (row < 0 || row > kLastRow || column < 0 || column > kLastColumn) return bad(table);
    if (kind == "rtf") {
      t.rtfColumns.emplace_back(static_cast<uint16_t>(column), std::string(read.ColumnText(4)));
      continue;
    }
    if (kind == "layout") {
      if (row > 1) return bad(table);
      t.layouts[row] = std::string(read.ColumnBlob(4));
      continue;
    }
    if (kind != "cell" && kind != "data") return bad(table);
    StoredCell cell;
    cell.row = static_cast<uint32_t>(row);
    cell.column = static_cast<uint16_t>(column);
    cell.tag = static_cast<uint8_t>(read.ColumnInt(5));
    switch (read.ColumnType(4)) {
      case SQLITE_TEXT:
        cell.isText = true;
        cell.text = text::Utf8ToCp1252(read.ColumnText(4));
        break;
      case SQLITE_BLOB: {
        std::string_view bits = read.ColumnBlob(4);
        if (bits.size() != sizeof cell.number) return bad(table);
        std::memcpy(&cell.number, bits.data(), sizeof cell.number);
        break;
      }
      default:
        cell.number = read.ColumnReal(4);
        break;
    }
    (kind == "cell" ? t.cells : t.overrides).push_back(std::move(cell));
  }
  if (result != SQLITE_DONE) {
    SqliteFailure(db, result, err::kInvalidDatabase, problem);
    return false;
  }
  return true;
}

void SqliteFailure(Database& db, int result, ErrorCode otherwise, SqliteProblem& problem) {
  db.Failed();
  problem.detail = db.message();
  switch (result & 0xFF) {
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
      problem.code = err::kInvalidBinaryFormat;
      break;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      problem.code = err::kFileInUse;
      break;
    case SQLITE_NOMEM:
      problem.code = err::kOutOfMemory;
      break;
    case SQLITE_CANTOPEN:
      problem.code = err::kFileOpenRead;
      break;
    default:
      problem.code = otherwise;
      break;
  }
}

}  // namespace kelpdex::sqlite
