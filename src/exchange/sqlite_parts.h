// What the SQLite export and import share: the "kelpdex_catalogue" table that carries each table's
// catalogue sheet, the cells an SQL column cannot hold as they are, and the marks of the current
// table, key and form. Private to exchange/.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "exchange/sqlite.h"
#include "exchange/sqlite_db.h"

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
};

// Writes the entries of one table after another into the catalogue table, which it creates.
class CatalogueWriter {
 public:
  bool Begin(Database& db);
  bool Table(const std::string& tableUtf8, uint32_t position, bool current, uint16_t key,
             uint16_t form);
  bool Cell(const std::string& tableUtf8, const char* kind, const StoredCell& cell);
  bool Rtf(const std::string& tableUtf8, uint16_t field, const std::string& columnUtf8);

 private:
  bool Put(const std::string& tableUtf8, const char* kind, int64_t row, int64_t column);

  Statement insert_;
  std::string utf8_;
};

// Reads the catalogue table, if the file has one, in table order. False with SQLite's message
// in `problem` for a table that exists but cannot be read or holds entries that make no sense.
bool ReadCatalogues(Database& db, bool& present, std::vector<TableCatalogue>& tables,
                    SqliteProblem& problem);

// The problem SQLite's last failure on `db` makes: a file that is no database or is damaged is
// 33, a file another program holds is 69, out of memory 21, anything else `otherwise`.
void SqliteFailure(Database& db, int result, ErrorCode otherwise, SqliteProblem& problem);

}  // namespace kelpdex::sqlite
