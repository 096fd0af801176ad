#include "device/contacts/sqlite/sqlite_book.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "device/contacts/sqlite/contact_schema.h"
#include "device/contacts/sqlite/file_trouble.h"
#include "platform/wording.h"

namespace kelpin::device::contacts {

using platform::ComResult;
using platform::Words;

namespace {

constexpr std::string_view kCannotRead = Words("%s: the contacts cannot be read: %s");
constexpr std::string_view kCannotChange = Words("%s: the contacts cannot be changed: %s");

std::string TextColumnList() {
  std::string list;
  for (std::size_t text = 0; text < kContactTextCount; ++text) {
    list += (text == 0 ? "" : ",") + std::string(kTextColumns[text]);
  }
  return list;
}

std::string AddSql() {
  std::string sql = "INSERT INTO contact(" + TextColumnList() + ") VALUES(";
  for (std::size_t text = 0; text < kContactTextCount; ++text) {
    sql += text == 0 ? "?" : ",?";
  }
  return sql + ")";
}

}  // namespace

SqliteBook::SqliteBook(std::string path, TroubleListener trouble)
    : path_(std::move(path)), trouble_(std::move(trouble)) {}

std::shared_ptr<SqliteBook> SqliteBook::Open(const std::string& path, std::string& why,
                                             TroubleListener trouble) {
  auto book = std::make_shared<SqliteBook>(path, std::move(trouble));
  if (book->database_.Open(path) != SQLITE_OK) {
    why = FileTrouble(Words("%s: the contacts file cannot be opened: %s"), path, book->database_);
    return nullptr;
  }
  bool ours = false;
  if (IsContactsFile(book->database_, ours) != SQLITE_OK) {
    why = FileTrouble(Words("%s: the contacts file cannot be read: %s"), path, book->database_);
    return nullptr;
  }
  if (!ours) {
    why = platform::Say(
        "%s: another file has taken the place of the contacts file. Put that back and try again",
        {path});
    return nullptr;
  }
  return book;
}

ComResult SqliteBook::Finish(Statement& statement) {
  if (statement.Step() == SQLITE_DONE) {
    return ComResult::kOk;
  }
  return Fail(kCannotChange);
}

ComResult SqliteBook::Fail(std::string_view english) {
  trouble_.Add(FileTrouble(english, path_, database_));
  return ComResult::kFail;
}

ComResult SqliteBook::Numbers(std::vector<std::int32_t>& numbers) {
  // Named by the table, for the index would have to be sorted.
  if (!numbers_.Prepare(database_,
                        "SELECT oid FROM contact NOT INDEXED "
                        "WHERE oid BETWEEN 1 AND 2147483647 ORDER BY oid")) {
    return Fail(kCannotRead);
  }
  const StatementRun run(numbers_);
  numbers.clear();
  int result = SQLITE_ROW;
  while ((result = numbers_.Step()) == SQLITE_ROW) {
    numbers.push_back(static_cast<std::int32_t>(numbers_.Integer(0)));
  }
  return result == SQLITE_DONE ? ComResult::kOk : Fail(kCannotRead);
}

ComResult SqliteBook::Read(std::span<const std::int32_t> numbers,
                           std::vector<std::optional<ContactRecord>>& records) {
  records.assign(numbers.size(), std::nullopt);
  if (numbers.empty()) {
    return ComResult::kOk;
  }
  if (!read_.Prepare(database_, "SELECT oid," + TextColumnList() +
                                    " FROM contact WHERE oid BETWEEN ?1 AND ?2 ORDER BY oid")) {
    return Fail(kCannotRead);
  }
  const StatementRun run(read_);
  read_.Bind(1, std::int64_t{numbers.front()});
  read_.Bind(2, std::int64_t{numbers.back()});
  int result = SQLITE_ROW;
  auto place = numbers.begin();
  while ((result = read_.Step()) == SQLITE_ROW) {
    place = std::lower_bound(place, numbers.end(), read_.Integer(0));
    if (place == numbers.end() || *place != read_.Integer(0)) {
      continue;
    }
    ContactRecord record;
    for (std::size_t text = 0; text < kContactTextCount; ++text) {
      record[text] = read_.Text(static_cast<int>(text) + 1);
    }
    records[static_cast<std::size_t>(place - numbers.begin())] = std::move(record);
  }
  return result == SQLITE_DONE ? ComResult::kOk : Fail(kCannotRead);
}

std::int64_t SqliteBook::DataVersion() {
  if (!version_.Prepare(database_, "PRAGMA data_version")) {
    return 0;
  }
  const StatementRun run(version_);
  return version_.Step() == SQLITE_ROW ? version_.Integer(0) : 0;
}

// Others' changes are seen with the next page, which is a moment later; asking for them each time
// would take longer than reading.
std::uint64_t SqliteBook::Version() {
  return static_cast<std::uint64_t>(sqlite3_total_changes64(database_.Handle()));
}

ComResult SqliteBook::Exists(std::int32_t number) {
  if (!exists_.Prepare(database_, "SELECT 1 FROM contact WHERE oid=?1")) {
    return Fail(kCannotRead);
  }
  const StatementRun run(exists_);
  exists_.Bind(1, std::int64_t{number});
  const int result = exists_.Step();
  return result == SQLITE_ROW    ? ComResult::kOk
         : result == SQLITE_DONE ? ComResult::kNotFound
                                 : Fail(kCannotRead);
}

ComResult SqliteBook::CompanyPhone(std::int32_t number, std::string& phone) {
  if (!companyPhone_.Prepare(database_, "SELECT company_phone FROM contact WHERE oid=?1")) {
    return Fail(kCannotRead);
  }
  const StatementRun run(companyPhone_);
  companyPhone_.Bind(1, std::int64_t{number});
  const int result = companyPhone_.Step();
  if (result != SQLITE_ROW) {
    return result == SQLITE_DONE ? ComResult::kNotFound : Fail(kCannotRead);
  }
  phone = companyPhone_.Text(0);
  return ComResult::kOk;
}

// Counting in the file would go through all of it each time.
ComResult SqliteBook::PositionOf(std::int32_t number, std::int32_t& position) {
  const std::int64_t version = DataVersion();
  if (knownAt_ != version) {
    const ComResult result = Numbers(known_);
    if (!Succeeded(result)) {
      knownAt_ = -1;
      return result;
    }
    knownAt_ = version;
  }
  const auto end = std::upper_bound(known_.begin(), known_.end(), number);
  position = static_cast<std::int32_t>(end - known_.begin());
  return ComResult::kOk;
}

ComResult SqliteBook::Find(std::string_view fileAs, std::int32_t& number, std::int32_t& position) {
  // The index leaves out the empty ones, and is used only where the question does so too.
  if (!find_.Prepare(database_,
                     "SELECT oid FROM contact WHERE file_as=?1 AND file_as<>'' ORDER BY oid "
                     "LIMIT 1")) {
    return Fail(kCannotRead);
  }
  const StatementRun run(find_);
  find_.Bind(1, fileAs);
  const int result = find_.Step();
  if (result != SQLITE_ROW) {
    return result == SQLITE_DONE ? ComResult::kFalse : Fail(kCannotRead);
  }
  number = static_cast<std::int32_t>(find_.Integer(0));
  find_.Reset();
  return PositionOf(number, position);
}

ComResult SqliteBook::Add(const ContactRecord& record, std::int32_t& number) {
  if (!add_.Prepare(database_, AddSql())) {
    return Fail(kCannotChange);
  }
  const StatementRun run(add_);
  for (std::size_t text = 0; text < kContactTextCount; ++text) {
    add_.Bind(static_cast<int>(text) + 1, std::string_view(record[text]));
  }
  const ComResult result = Finish(add_);
  if (Succeeded(result)) {
    number = static_cast<std::int32_t>(sqlite3_last_insert_rowid(database_.Handle()));
    known_.push_back(number);  // the highest; of no use when others have changed anything too
  }
  return result;
}

ComResult SqliteBook::AddAll(std::span<const ContactRecord> records) {
  bool good = database_.Run("BEGIN IMMEDIATE") == SQLITE_OK;
  std::int32_t number = 0;
  for (const ContactRecord& record : records) {
    good = good && Succeeded(Add(record, number));
  }
  if (good && database_.Run("COMMIT") == SQLITE_OK) {
    return ComResult::kOk;
  }
  const ComResult failed = Fail(kCannotChange);
  static_cast<void>(database_.Run("ROLLBACK"));
  return failed;
}

ComResult SqliteBook::Change(std::int32_t number, const ContactRecord& record,
                             const ContactTextSet& changed) {
  if (changed.none()) {
    return Exists(number);
  }
  std::string sql;
  for (std::size_t text = 0; text < kContactTextCount; ++text) {
    if (changed.test(text)) {
      sql += (sql.empty() ? "UPDATE contact SET " : ",") + std::string(kTextColumns[text]) + "=?";
    }
  }
  Statement change;
  if (!change.Prepare(database_, sql + " WHERE oid=?")) {
    return Fail(kCannotChange);
  }
  int parameter = 0;
  for (std::size_t text = 0; text < kContactTextCount; ++text) {
    if (changed.test(text)) {
      change.Bind(++parameter, std::string_view(record[text]));
    }
  }
  change.Bind(++parameter, std::int64_t{number});
  const ComResult result = Finish(change);
  if (!Succeeded(result)) {
    return result;
  }
  return sqlite3_changes(database_.Handle()) == 1 ? ComResult::kOk : ComResult::kNotFound;
}

ComResult SqliteBook::Delete(std::int32_t number) {
  if (!delete_.Prepare(database_, "DELETE FROM contact WHERE oid=?1")) {
    return Fail(kCannotChange);
  }
  const StatementRun run(delete_);
  delete_.Bind(1, std::int64_t{number});
  const ComResult result = Finish(delete_);
  if (!Succeeded(result)) {
    return result;
  }
  known_.erase(std::remove(known_.begin(), known_.end(), number), known_.end());
  return sqlite3_changes(database_.Handle()) == 1 ? ComResult::kOk : ComResult::kNotFound;
}

}  // namespace kelpin::device::contacts
