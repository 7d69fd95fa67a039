// Thin owners of an SQLite connection and of a prepared statement, and the text conversions at
// the border: SQL names and texts are UTF-8, the document's are in its code page. Private to
// exchange/.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace kelpdex::sqlite {

class Statement;

class Database {
 public:
  Database() = default;
  ~Database() { Close(); }
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // `flags` as sqlite3_open_v2 takes them. `noLocks` for a file whose whole-file lock the caller
  // holds already: SQLite's own byte locks would collide with it. False with message() set.
  bool Open(const std::string& path, int flags, bool noLocks = false);
  void Close();
  // Runs statements that return no rows.
  bool Exec(const char* sql);
  std::string message() const { return message_; }
  sqlite3* handle() const { return db_; }
  // Takes SQLite's words for the last failure.
  bool Failed();

 private:
  sqlite3* db_ = nullptr;
  std::string message_;
};

class Statement {
 public:
  Statement() = default;
  ~Statement() { sqlite3_finalize(stmt_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  bool Prepare(Database& db, std::string_view sql);
  // SQLITE_ROW, SQLITE_DONE or an error code.
  int Step() { return sqlite3_step(stmt_); }
  bool Reset() { return sqlite3_reset(stmt_) == SQLITE_OK; }
  sqlite3_stmt* get() const { return stmt_; }

  // Binding by position from 1. Texts are given in UTF-8 and copied when the statement runs.
  void BindText(int at, std::string_view utf8) {
    sqlite3_bind_text(stmt_, at, utf8.data(), static_cast<int>(utf8.size()), SQLITE_TRANSIENT);
  }
  // A text that stays where it is until the statement has run: no copy is made.
  void BindStaticText(int at, std::string_view utf8) {
    sqlite3_bind_text(stmt_, at, utf8.data(), static_cast<int>(utf8.size()), SQLITE_STATIC);
  }
  void BindInt(int at, int64_t value) { sqlite3_bind_int64(stmt_, at, value); }
  void BindReal(int at, double value) { sqlite3_bind_double(stmt_, at, value); }
  void BindNull(int at) { sqlite3_bind_null(stmt_, at); }
  void BindBlob(int at, const void* bytes, size_t size) {
    sqlite3_bind_blob64(stmt_, at, bytes, size, SQLITE_STATIC);
  }

  // Columns by position from 0.
  int ColumnType(int at) const { return sqlite3_column_type(stmt_, at); }
  std::string_view ColumnText(int at) const {
    const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(stmt_, at));
    return p == nullptr ? std::string_view() : std::string_view(p, sqlite3_column_bytes(stmt_, at));
  }
  std::string_view ColumnBlob(int at) const {
    const auto* p = static_cast<const char*>(sqlite3_column_blob(stmt_, at));
    return p == nullptr ? std::string_view() : std::string_view(p, sqlite3_column_bytes(stmt_, at));
  }
  int64_t ColumnInt(int at) const { return sqlite3_column_int64(stmt_, at); }
  double ColumnReal(int at) const { return sqlite3_column_double(stmt_, at); }

 private:
  sqlite3_stmt* stmt_ = nullptr;
};

// `name` in double quotes with its quotes doubled: any text is a valid SQL identifier so.
std::string Quoted(std::string_view utf8Name);

}  // namespace kelpdex::sqlite
