#include "bench/bare_store.h"

#include <sqlite3.h>

#include <chrono>

namespace kelpin::bench {

double Milliseconds(const std::function<bool()>& work) {
  const auto start = std::chrono::steady_clock::now();
  if (!work()) return -1;  // shown as it is: the figure is none
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

bool BareLoop(const std::string& path, std::size_t& characters) {
  sqlite3* database = nullptr;
  sqlite3_stmt* statement = nullptr;
  int result = sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READONLY, nullptr);
  if (result == SQLITE_OK) {
    result =
        sqlite3_prepare_v2(database, "SELECT * FROM contact ORDER BY oid", -1, &statement, nullptr);
  }
  while (result == SQLITE_OK || result == SQLITE_ROW) {
    result = sqlite3_step(statement);
    for (int column = 1; result == SQLITE_ROW && column < sqlite3_column_count(statement);
         ++column) {
      static_cast<void>(sqlite3_column_text16(statement, column));
      characters += static_cast<std::size_t>(sqlite3_column_bytes16(statement, column)) / 2;
    }
  }
  sqlite3_finalize(statement);
  sqlite3_close(database);
  return result == SQLITE_DONE;
}

bool BareCopy(const std::string& path) {
  sqlite3* database = nullptr;
  sqlite3_stmt* find = nullptr;
  sqlite3_stmt* insert = nullptr;
  bool good =
      sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK &&
      sqlite3_exec(database, "PRAGMA synchronous=FULL", nullptr, nullptr, nullptr) == SQLITE_OK &&
      sqlite3_prepare_v2(database, "SELECT oid FROM contact WHERE file_as = ?1 AND file_as <> ''",
                         -1, &find, nullptr) == SQLITE_OK &&
      sqlite3_prepare_v2(database,
                         "INSERT INTO contact (last_name, file_as, mobile_phone) "
                         "VALUES (?1, ?1, '+4917139200')",
                         -1, &insert, nullptr) == SQLITE_OK;
  for (int i = 0; i < kCopied && good; ++i) {
    const std::string name = "Bare " + std::to_string(i);
    const int length = static_cast<int>(name.size());
    good = sqlite3_bind_text(find, 1, name.c_str(), length, SQLITE_TRANSIENT) == SQLITE_OK &&
           sqlite3_step(find) == SQLITE_DONE && sqlite3_reset(find) == SQLITE_OK &&
           sqlite3_bind_text(insert, 1, name.c_str(), length, SQLITE_TRANSIENT) == SQLITE_OK &&
           sqlite3_step(insert) == SQLITE_DONE && sqlite3_reset(insert) == SQLITE_OK;
  }
  sqlite3_finalize(find);
  sqlite3_finalize(insert);
  sqlite3_close(database);
  return good;
}

}  // namespace kelpin::bench
