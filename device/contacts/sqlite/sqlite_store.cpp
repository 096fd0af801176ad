#include "device/contacts/sqlite/sqlite_store.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "device/contacts/sqlite/contact_schema.h"
#include "platform/system_trouble.h"

namespace kelpin::device::contacts {

std::unique_ptr<SqliteStore> SqliteStore::Open(const std::string& path, std::string& why,
                                               TroubleListener trouble) {
  // Whole, for some names that are not mean no file to SQLite.
  std::error_code error;
  const std::string whole = std::filesystem::absolute(path, error).string();
  if (error) {
    why = platform::Say("%s: the contacts file cannot be opened: %s",
                        {path, platform::SystemTrouble(error.value())});
    return nullptr;
  }
  if (!PrepareContactsFile(whole, why)) {
    return nullptr;
  }
  std::unique_ptr<SqliteStore> store(new SqliteStore(whole, std::move(trouble)));
  store->held_ = SqliteBook::Open(whole, why);
  return store->held_ != nullptr ? std::move(store) : nullptr;
}

bool SqliteStore::AddAll(std::span<const ContactRecord> records, std::string& why) {
  // Its trouble is told when it goes.
  std::shared_ptr<SqliteBook> book =
      SqliteBook::Open(path_, why, [&why](const std::string& trouble) { why = trouble; });
  return book != nullptr && Succeeded(book->AddAll(records));
}

std::shared_ptr<ContactBook> SqliteStore::OpenBook() {
  std::string why;
  std::shared_ptr<SqliteBook> book = SqliteBook::Open(path_, why, trouble_);
  if (book == nullptr && trouble_) {
    trouble_(why);
  }
  return book;
}

}  // namespace kelpin::device::contacts
