#pragma once

#include <memory>
#include <span>
#include <string>

#include "device/contacts/object_store.h"
#include "device/contacts/sqlite/sqlite_book.h"

namespace kelpin::device::contacts {

// Contacts kept in a file of the user's own (an SQLite database, mode 0600). Several programs may
// use it at once. A save that succeeds is on the disk and stays, however the program ends.
class SqliteStore final : public ObjectStore {
 public:
  // Makes the file when it is missing. Null when it is not ours, damaged, made by a newer program
  // or cannot be written; it is left as it is then, and `why` says why and what to do. What goes
  // wrong later is told to `trouble`.
  static std::unique_ptr<SqliteStore> Open(const std::string& path, std::string& why,
                                           TroubleListener trouble = {});

  // Adds contacts, all or none.
  [[nodiscard]] bool AddAll(std::span<const ContactRecord> records, std::string& why);

  std::shared_ptr<ContactBook> OpenBook() override;

 private:
  SqliteStore(std::string path, TroubleListener trouble)
      : path_(std::move(path)), trouble_(std::move(trouble)) {}

  const std::string path_;
  const TroubleListener trouble_;
  std::shared_ptr<SqliteBook> held_;  // the last session to close tidies up, which takes long
};

}  // namespace kelpin::device::contacts
