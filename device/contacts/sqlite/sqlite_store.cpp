#include "device/contacts/sqlite/sqlite_store.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "device/contacts/sqlite/contact_schema.h"

namespace kelpin::device::contacts {

std::unique_ptr<SqliteStore> SqliteStore::Open(const std::string& path, std::string& why) {
  // Whole, for some names that are not mean no file to SQLite.
  std::error_code error;
  const std::string whole = std::filesystem::absolute(path, error).string();
  if (error) {
    why = path + ": " + error.message();
    return nullptr;
  }
  if (!PrepareContactsFile(whole, why)) {
    return nullptr;
  }
  std::unique_ptr<SqliteStore> store(new SqliteStore(whole));
  store->held_ = SqliteBook::Open(whole);
  if (store->held_ == nullptr) {
    why = path + ": the contacts file was taken away while it was being opened; start again";
    return nullptr;
  }
  return store;
}

bool SqliteStore::AddAll(std::span<const ContactRecord> records, std::string& why) {
  const std::shared_ptr<SqliteBook> book = SqliteBook::Open(path_);
  if (book != nullptr && Succeeded(book->AddAll(records))) {
    return true;
  }
  why = path_ + ": the contacts cannot be written; is the disk full?";
  return false;
}

std::shared_ptr<ContactBook> SqliteStore::OpenBook() {
  return SqliteBook::Open(path_);
}

}  // namespace kelpin::device::contacts
