#include "exchange/sqlite_db.h"

#include <cstring>

#include "exchange/sqlite.h"
#include "persist/file_stream.h"
#include "text/utf8.h"

namespace kelpdex {

namespace sqlite {

bool Database::Open(const std::string& path, int flags, bool noLocks) {
  Close();
#ifdef _WIN32
  const char* vfs = noLocks ? "win32-none" : nullptr;
#else
  const char* vfs = noLocks ? "unix-none" : nullptr;
#endif
  // One thread uses a connection: SQLite's own mutexes would only cost time.
  if (sqlite3_open_v2(path.c_str(), &db_, flags | SQLITE_OPEN_NOMUTEX, vfs) != SQLITE_OK) {
    return Failed();
  }
  // A file another program is writing waits a moment before it counts as locked.
  sqlite3_busy_timeout(db_, 2000);
  return true;
}

void Database::Close() {
  if (db_ != nullptr) sqlite3_close(db_);
  db_ = nullptr;
}

bool Database::Exec(const char* sql) {
  return sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) == SQLITE_OK || Failed();
}

bool Database::Failed() {
  message_ = db_ != nullptr ? sqlite3_errmsg(db_) : "out of memory";
  return false;
}

bool Statement::Prepare(Database& db, std::string_view sql) {
  sqlite3_finalize(stmt_);
  stmt_ = nullptr;
  if (sqlite3_prepare_v2(db.handle(), sql.data(), static_cast<int>(sql.size()), &stmt_, nullptr) !=
      SQLITE_OK) {
    return db.Failed();
  }
  return true;
}

std::string Quoted(std::string_view utf8Name) {
  std::string out = "\"";
  for (char c : utf8Name) {
    out += c;
    if (c == '"') out += '"';
  }
  out += '"';
  return out;
}

}  // namespace sqlite

std::string SqliteProblem::Text() const {
  std::string out = reason.empty() ? std::string(ErrorText(code)) : reason;
  if (!table.empty()) {
    out += "\nTable \"" + table + "\"";
    if (!column.empty()) out += ", column \"" + column + "\"";
  }
  if (!detail.empty()) out += "\n" + text::Utf8ToCp1252(detail);
  return out;
}

bool IsSqliteFile(const std::string& path) {
  static const char kHeader[16] = "SQLite format 3";  // and its terminating zero
  char head[16] = {};
  FileStream in;
  if (!in.Open(path, StreamMode::kRead, false, 64)) return false;
  const size_t n = in.ReadSome(head, sizeof head);
  in.Close();
  return n == sizeof head && std::memcmp(head, kHeader, sizeof head) == 0;
}

}  // namespace kelpdex
