#include "device/contacts/sqlite/contact_schema.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "device/contacts/contact_record.h"
#include "device/contacts/sqlite/file_trouble.h"
#include "platform/system_trouble.h"

namespace kelpin::device::contacts {

using platform::Say;
using platform::Words;

const char* const kTextColumns[kContactTextCount] = {
    "first_name",   "middle_name",    "last_name",  "company_name",    "file_as",
    "mobile_phone", "business_phone", "home_phone", "business2_phone", "home2_phone",
    "radio_phone",  "pager_phone",    "car_phone",  "assistant_phone", "home_fax",
    "business_fax", "email1",         "email2",     "email3",          "company_phone",
};

namespace {

constexpr std::string_view kMagic("SQLite format 3\0", 16);
constexpr std::size_t kHeaderSize = 100;
constexpr std::size_t kVersionOffset = 60;
constexpr std::size_t kApplicationOffset = 68;
// Larger files are looked through as they are read, not at the start, which would take long.
constexpr std::int64_t kLargestLookedThrough = 4 * 1024 * 1024;
constexpr std::chrono::milliseconds kPause(10);
constexpr std::string_view kCannotOpen = Words("%s: the contacts file cannot be opened: %s");
constexpr std::string_view kNotAFile =
    Words("%s: not a file; name one with --contacts sqlite:FILE");

// An oid is never given out again (AUTOINCREMENT) and fits into 31 bits.
std::string TableSql() {
  std::string sql =
      "CREATE TABLE contact (oid INTEGER PRIMARY KEY AUTOINCREMENT "
      "CHECK (oid BETWEEN 1 AND 2147483647)";
  for (const char* column : kTextColumns) {
    sql += std::string(", ") + column + " TEXT NOT NULL DEFAULT ''";
  }
  return sql + ") STRICT";
}

constexpr const char* kIndexSql =
    "CREATE INDEX contact_file_as ON contact (file_as) WHERE file_as <> ''";

bool Refuse(std::string reason, std::string& why) {
  why = std::move(reason);
  return false;
}

bool RefuseDamaged(const std::string& path, const std::string& what, std::string& why) {
  return Refuse(Say("%s: the contacts file is damaged (%s); it was left as it is. Put a copy of it "
                    "back in its place, or name another file with --contacts sqlite:FILE",
                    {path, what}),
                why);
}

std::uint32_t BigEndian(const char* bytes) {
  std::uint32_t value = 0;
  for (int i = 0; i < 4; ++i) {
    value = (value << 8) | static_cast<std::uint8_t>(bytes[i]);
  }
  return value;
}

bool RefuseNewer(const std::string& path, std::string& why) {
  return Refuse(Say("%s: the contacts file was made by a newer Kelpin; it was left as it is. Use "
                    "that one",
                    {path}),
                why);
}

// Looks at the file's first bytes before SQLite does, which might finish what another program's
// database has left half done.
bool CheckHeader(const std::string& path, std::string& why) {
  // A pipe without a writer would be waited for.
  const int file = open(path.c_str(), O_CREAT | O_RDWR | O_CLOEXEC | O_NONBLOCK, 0600);
  if (file < 0) {
    const int error = errno;
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
      return Refuse(Say(kNotAFile, {path}), why);
    }
    return Refuse(Say("%s: the contacts file cannot be opened for writing: %s",
                      {path, platform::SystemTrouble(error)}),
                  why);
  }
  struct stat status = {};
  const bool regular = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
  std::array<char, kHeaderSize> header = {};
  const ssize_t got = regular ? pread(file, header.data(), header.size(), 0) : -1;
  const int error = errno;
  close(file);
  if (!regular) {
    return Refuse(Say(kNotAFile, {path}), why);
  }
  if (got < 0) {
    return Refuse(
        Say("%s: the contacts file cannot be read: %s", {path, platform::SystemTrouble(error)}),
        why);
  }
  if (got == 0) {
    return true;  // new
  }
  const std::string_view text(header.data(), static_cast<std::size_t>(got));
  if (text.size() < kHeaderSize || !text.starts_with(kMagic)) {
    return Refuse(Say("%s: not a contacts file; it was left as it is. Name another file with "
                      "--contacts sqlite:FILE",
                      {path}),
                  why);
  }
  if (BigEndian(header.data() + kApplicationOffset) != kApplicationId) {
    return Refuse(
        Say("%s: another program's database; it was left as it is. Name another file with "
            "--contacts sqlite:FILE",
            {path}),
        why);
  }
  if (BigEndian(header.data() + kVersionOffset) > kSchemaVersion) {
    return RefuseNewer(path, why);
  }
  return true;
}

// SQLite keeps beside the file what is under way, and would wait for a pipe that stands there.
bool CheckBeside(const std::string& path, std::string& why) {
  std::error_code error;
  const std::filesystem::path real = std::filesystem::canonical(path, error);
  for (const char* ending : {"-journal", "-wal", "-shm"}) {
    const std::string beside = (error ? path : real.string()) + ending;
    struct stat status = {};
    if (stat(beside.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
      return Refuse(Say(kNotAFile, {beside}), why);
    }
  }
  return true;
}

bool RefuseFor(const std::string& path, std::string_view english, const Database& database,
               std::string& why) {
  why = FileTrouble(english, path, database);
  return false;
}

// In a journal that is undone as a whole, so that a file is ours or empty and nothing between.
bool MakeTables(const std::string& path, Database& database, std::string& why) {
  constexpr std::string_view kCannotMake = Words("%s: the contacts file cannot be made: %s");
  if (database.Run("BEGIN IMMEDIATE") != SQLITE_OK) {
    return RefuseFor(path, kCannotMake, database, why);
  }
  bool made = true;
  // Another program may have been faster.
  if (database.Number("SELECT count(*) FROM sqlite_schema", -1) == 0) {
    const std::string identity = "PRAGMA application_id=" + std::to_string(kApplicationId) +
                                 "; PRAGMA user_version=" + std::to_string(kSchemaVersion);
    made = database.Run(TableSql().c_str()) == SQLITE_OK && database.Run(kIndexSql) == SQLITE_OK &&
           database.Run(identity.c_str()) == SQLITE_OK;
  }
  if (made && database.Run("COMMIT") == SQLITE_OK) {
    return true;
  }
  // Taken before the undoing, which has a result of its own.
  static_cast<void>(RefuseFor(path, kCannotMake, database, why));
  static_cast<void>(database.Run("ROLLBACK"));
  return false;
}

// So that readers and a writer do not wait for each other. Where the disk cannot do it they wait.
void UseWriteAheadLog(Database& database) {
  const auto end =
      std::chrono::steady_clock::now() + std::chrono::milliseconds(Database::kPatience);
  // Others that are at the file now make it busy, for which SQLite does not wait here.
  while (database.Run("PRAGMA journal_mode=WAL") != SQLITE_OK &&
         (sqlite3_errcode(database.Handle()) & 0xFF) == SQLITE_BUSY &&
         std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(kPause);
  }
}

std::string SchemaOf(Database& database, const char* name) {
  Statement statement;
  if (!statement.Prepare(database, "SELECT sql FROM sqlite_schema WHERE name=?1")) {
    return {};
  }
  statement.Bind(1, std::string_view(name));
  return statement.Step() == SQLITE_ROW ? statement.Text(0) : std::string();
}

bool CheckTables(const std::string& path, Database& database, std::string& why) {
  const std::int64_t version = database.Number("PRAGMA user_version", -1);
  if (version > kSchemaVersion) {
    return RefuseNewer(path, why);
  }
  if (database.Number("PRAGMA application_id", -1) != kApplicationId || version < 1 ||
      SchemaOf(database, "contact") != TableSql() ||
      SchemaOf(database, "contact_file_as") != kIndexSql) {
    return RefuseDamaged(path, Say("its tables are not as Kelpin makes them"), why);
  }
  const std::int64_t size =
      database.Number("PRAGMA page_count", 0) * database.Number("PRAGMA page_size", 0);
  if (size > kLargestLookedThrough) {
    return true;
  }
  const std::string found = database.Text("PRAGMA quick_check(1)");
  if (found != "ok") {
    return RefuseDamaged(path, found.empty() ? database.Problem() : found, why);
  }
  return true;
}

// All of it as it is at one moment.
bool CheckContent(const std::string& path, Database& database, std::string& why) {
  if (database.Run("BEGIN; SELECT count(*) FROM sqlite_schema") != SQLITE_OK) {
    return RefuseFor(path, kCannotOpen, database, why);
  }
  const bool good = CheckTables(path, database, why);
  static_cast<void>(database.Run("ROLLBACK"));
  return good;
}

bool IsDamage(int result) {
  return (result & 0xFF) == SQLITE_CORRUPT || (result & 0xFF) == SQLITE_NOTADB;
}

}  // namespace

bool PrepareContactsFile(const std::string& path, std::string& why) {
  if (!CheckHeader(path, why) || !CheckBeside(path, why)) {
    return false;
  }
  Database database;
  int result = database.Open(path);
  // The first look at the content, which ends what a killed program has begun.
  if (result == SQLITE_OK) {
    result = database.Run("SELECT count(*) FROM sqlite_schema");
  }
  if (IsDamage(result)) {
    return RefuseDamaged(path, database.Problem(), why);
  }
  if (result == SQLITE_OK && sqlite3_db_readonly(database.Handle(), "main") == 1) {
    return Refuse(
        Say("%s: the contacts file cannot be written. See that neither it nor its folder is "
            "write-protected",
            {path}),
        why);
  }
  if (result != SQLITE_OK) {
    return RefuseFor(path, kCannotOpen, database, why);
  }
  if (database.Number("SELECT count(*) FROM sqlite_schema", -1) == 0 &&
      !MakeTables(path, database, why)) {
    return false;
  }
  if (!CheckContent(path, database, why)) {
    return false;
  }
  UseWriteAheadLog(database);
  return true;
}

int IsContactsFile(Database& database, bool& ours) {
  const int result = database.Run("PRAGMA application_id");
  ours = result == SQLITE_OK && database.Number("PRAGMA application_id", -1) == kApplicationId &&
         database.Number("PRAGMA user_version", -1) == kSchemaVersion;
  return result == SQLITE_NOTADB ? SQLITE_OK : result;
}

}  // namespace kelpin::device::contacts
