// SQLite databases: every table of a document written as an SQL table of the same name and field
// names, with its schema in a "kelpdex_catalogue" table so that reading the file back gives the
// same database; and any SQLite file read as a database, one table per SQL table.
#pragma once

#include <cstdint>
#include <string>

#include "core/error_code.h"
#include "store/workbook.h"

namespace kelpdex {

// The table that carries the catalogues, and the suffix of a table's Images/Files side table.
constexpr const char* kSqliteCatalogueTable = "kelpdex_catalogue";
constexpr const char* kSqliteFilesSuffix = "__files";

// Why an SQLite exchange failed: a code of the error table, or the table or field dialog's
// message for a name Kelpdex cannot hold, with the table and column it concerns and, where
// SQLite itself refused, its own words.
struct SqliteProblem {
  ErrorCode code = err::kNone;
  std::string reason;  // the dialog's message, in the code page; empty: the code's text
  std::string table;   // in the document's code page
  std::string column;  // likewise; empty when the table as a whole is meant
  std::string detail;  // SQLite's message, UTF-8

  bool any() const { return code != err::kNone || !reason.empty(); }
  // The message shown, in the code page: the error's or dialog's text, then where it was found.
  std::string Text() const;
};

// Whether the file begins with SQLite's header, "SQLite format 3" and a zero byte.
bool IsSqliteFile(const std::string& path);

// Writes every table of `book`, or only `table` when it is not empty, into a new SQLite file at
// `path`. The file is written beside the target and renamed over it only when complete, so a
// failure leaves what was there. A cancel through the progress sink fails with no problem.
bool ExportSqlite(const Workbook& book, const std::string& path, const std::string& table,
                  SqliteProblem& problem);

// Reads every table of the SQLite file at `path`, or only `table` (which may also be a view),
// into `book`, which is replaced only when the whole read succeeds. A file our export wrote
// comes back with its catalogues; any other table gets its fields from its columns. Long Text
// and Images/Files values wait in the sheets' pending lists for the next save.
// `heldByCaller`: the caller holds a lock on the whole file that keeps every other program out,
// so SQLite takes no locks of its own (they would collide with it).
bool ImportSqlite(Workbook& book, const std::string& path, const std::string& table,
                  SqliteProblem& problem, bool heldByCaller = false);

}  // namespace kelpdex
