// What the SQLite export and import share: the "kelpdex_catalogue" table that carries each table's
// catalogue sheet, the cells an SQL column cannot hold as they are, the marks of the current
// table, key and form, and the sheets' formats in the native binary form. Private to exchange/.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/sqlite.h"
#include "exchange/sqlite_db.h"
#include "store/catalogue.h"

namespace kelpdex::sqlite {

// One stored cell: its place, tag byte and value. `isText` picks `text` (code page) or `number`.
struct StoredCell {
  uint32_t row = 0;
  uint16_t column = 0;
  uint8_t tag = 0;
  bool isText = false;
  std::string text;
  double number = 0;
};

// Everything the catalogue table holds about one table.
struct TableCatalogue {
  std::string name;  // code page
  bool current = false;
  uint16_t key = 0;
  uint16_t form = 0;
  std::vector<StoredCell> cells;      // the catalogue sheet, every cell
  std::vector<StoredCell> overrides;  // data cells the SQL column could not hold exactly
  // Long Text fields whose RTF stands in a column of its own: field index and column name (UTF-8).
  std::vector<std::pair<uint16_t, std::string>> rtfColumns;
  // The layouts of the data sheet and the catalogue sheet, where the file has them.
  std::optional<std::string> layouts[2];
};

// Everything the catalogue table holds.
struct StoredCatalogues {
  bool present = false;
  std::optional<std::string> styles;  // the workbook's drop-down lists, fonts and styles
  std::vector<TableCatalogue> tables;
};

// Writes the entries of one table after another into the catalogue table, which it creates.
class CatalogueWriter {
 public:
  bool Begin(Database& db);
  bool Table(const std::string& tableUtf8, uint32_t position, bool current, uint16_t key,
             uint16_t form);
  bool Cell(const std::string& tableUtf8, const char* kind, const StoredCell& cell);
  bool Rtf(const std::string& tableUtf8, uint16_t field, const std::string& columnUtf8);
  bool Blob(const std::string& tableUtf8, const char* kind, int64_t row, std::string_view bytes);

 private:
  bool Put(const std::string& tableUtf8, const char* kind, int64_t row, int64_t column);

  Statement insert_;
  std::string utf8_;
};

// Reads the catalogue table, if the file has one, in table order. False with SQLite's message
// in `problem` for a table that exists but cannot be read or holds entries that make no sense.
bool ReadCatalogues(Database& db, StoredCatalogues& stored, SqliteProblem& problem);

// Writes the workbook's styles, then each table's sheet layouts, as catalogue entries.
bool WriteStyles(CatalogueWriter& writer, const Workbook& book);
bool WriteLayouts(CatalogueWriter& writer, const std::string& tableUtf8, const TableSpec& table);

// The file's styles taken into a workbook: its drop-down lists as they were, and each style added
// to the workbook's own table, whose ids the sheets' layouts are given in place of the file's.
class LayoutReader {
 public:
  // False with the problem set for styles that do not hold together or do not fit.
  bool Begin(std::string_view styles, Workbook& book, SqliteProblem& problem);
  // Gives the table's data and catalogue sheets their stored layouts, if there are any. False
  // with the problem set for a layout that does not hold together.
  bool Apply(const TableCatalogue& stored, const TableSpec& table, SqliteProblem& problem);

 private:
  bool began_ = false;
  std::vector<uint16_t> ids_;  // the workbook's style id per id of the file
};

// The problem SQLite's last failure on `db` makes: a file that is no database or is damaged is
// 33, a file another program holds is 69, out of memory 21, anything else `otherwise`.
void SqliteFailure(Database& db, int result, ErrorCode otherwise, SqliteProblem& problem);

}  // namespace kelpdex::sqlite
