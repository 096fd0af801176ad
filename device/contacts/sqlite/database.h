#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace kelpin::device::contacts {

// A database file that is open; of one thread at a time.
class Database {
 public:
  Database() = default;
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // The file has to be there. What is in it is not trusted: none of its triggers and views run, and
  // no text of more than kLongestText bytes is read. SQLITE_OK or what SQLite says.
  int Open(const std::string& path);
  // Runs statements that give no rows.
  int Run(const char* sql);
  // The first value of the first row, `otherwise` when there is none.
  std::int64_t Number(const char* sql, std::int64_t otherwise);
  std::string Text(const char* sql);
  // What went wrong last, in words.
  std::string Problem() const;
  sqlite3* Handle() const { return handle_; }

  static constexpr int kLongestText = 4 * 1024 * 1024;
  static constexpr int kPatience = 5000;  // milliseconds to wait while others write

 private:
  sqlite3* handle_ = nullptr;
};

// A statement, ready to be run any number of times. Texts that are bound must stay until it ran.
class Statement {
 public:
  Statement() = default;
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  // Once; nothing when it was prepared already. False when it cannot be.
  bool Prepare(const Database& database, const std::string& sql);
  // Before values are bound for another run.
  void Reset();
  void Bind(int parameter, std::int64_t value);
  void Bind(int parameter, std::string_view text);
  void BindNull(int parameter);
  // SQLITE_ROW, SQLITE_DONE or what went wrong, one that could not bind included.
  int Step();
  std::int64_t Integer(int column) const { return sqlite3_column_int64(statement_, column); }
  // Empty for NULL.
  std::string Text(int column) const;

 private:
  sqlite3_stmt* statement_ = nullptr;
  int bindResult_ = SQLITE_OK;
};

// Ends a run of the statement, and with it its hold on the database.
class StatementRun {
 public:
  explicit StatementRun(Statement& statement) : statement_(statement) { statement_.Reset(); }
  ~StatementRun() { statement_.Reset(); }
  StatementRun(const StatementRun&) = delete;
  StatementRun& operator=(const StatementRun&) = delete;

 private:
  Statement& statement_;
};

}  // namespace kelpin::device::contacts
