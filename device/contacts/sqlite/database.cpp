#include "device/contacts/sqlite/database.h"

#include <cstddef>

namespace kelpin::device::contacts {

Database::~Database() {
  sqlite3_close_v2(handle_);  // with the statements that are left, if any
}

int Database::Open(const std::string& path) {
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  const int result = sqlite3_open_v2(path.c_str(), &handle_, flags, nullptr);
  if (result != SQLITE_OK) {
    return result;
  }
  sqlite3_busy_timeout(handle_, kPatience);
  sqlite3_limit(handle_, SQLITE_LIMIT_LENGTH, kLongestText);
  sqlite3_limit(handle_, SQLITE_LIMIT_ATTACHED, 0);
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  // A save that was reported stays whatever happens next.
  return Run(
      "PRAGMA synchronous=FULL; PRAGMA cell_size_check=ON; PRAGMA mmap_size=0; "
      "PRAGMA cache_size=-16384");
}

int Database::Run(const char* sql) {
  return sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr);
}

std::int64_t Database::Number(const char* sql, std::int64_t otherwise) {
  Statement statement;
  return statement.Prepare(*this, sql) && statement.Step() == SQLITE_ROW ? statement.Integer(0)
                                                                         : otherwise;
}

std::string Database::Text(const char* sql) {
  Statement statement;
  return statement.Prepare(*this, sql) && statement.Step() == SQLITE_ROW ? statement.Text(0)
                                                                         : std::string();
}

std::string Database::Problem() const {
  return handle_ == nullptr ? "out of memory" : sqlite3_errmsg(handle_);
}

bool Statement::Prepare(const Database& database, const std::string& sql) {
  if (statement_ != nullptr) {
    return true;
  }
  return sqlite3_prepare_v3(database.Handle(), sql.c_str(), static_cast<int>(sql.size()),
                            SQLITE_PREPARE_PERSISTENT, &statement_, nullptr) == SQLITE_OK;
}

void Statement::Reset() {
  sqlite3_reset(statement_);
  bindResult_ = SQLITE_OK;
}

void Statement::Bind(int parameter, std::int64_t value) {
  const int result = sqlite3_bind_int64(statement_, parameter, value);
  bindResult_ = bindResult_ == SQLITE_OK ? result : bindResult_;
}

void Statement::Bind(int parameter, std::string_view text) {
  const int result = sqlite3_bind_text64(statement_, parameter, text.data(), text.size(),
                                         SQLITE_STATIC, SQLITE_UTF8);
  bindResult_ = bindResult_ == SQLITE_OK ? result : bindResult_;
}

void Statement::BindNull(int parameter) {
  const int result = sqlite3_bind_null(statement_, parameter);
  bindResult_ = bindResult_ == SQLITE_OK ? result : bindResult_;
}

int Statement::Step() {
  return bindResult_ == SQLITE_OK ? sqlite3_step(statement_) : bindResult_;
}

std::string Statement::Text(int column) const {
  const unsigned char* const text = sqlite3_column_text(statement_, column);
  const int size = sqlite3_column_bytes(statement_, column);
  if (text == nullptr || size <= 0) {
    return {};
  }
  return std::string(reinterpret_cast<const char*>(text), static_cast<std::size_t>(size));
}

}  // namespace kelpin::device::contacts
