#include "device/contacts/sqlite/file_trouble.h"

#include <utility>

#include "platform/system_trouble.h"

namespace kelpin::device::contacts {

using platform::Say;

namespace {

// What the system said to SQLite, where it did.
std::string SystemReason(const Database& database, std::string otherwise) {
  const int error = sqlite3_system_errno(database.Handle());
  return error == 0 ? std::move(otherwise) : platform::SystemTrouble(error);
}

std::string Reason(const Database& database) {
  const int code = database.Handle() == nullptr ? SQLITE_NOMEM : sqlite3_errcode(database.Handle());
  switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return Say("another program keeps the file locked. End that program and try again");
    case SQLITE_FULL:
      return platform::SystemTrouble(ENOSPC);
    case SQLITE_READONLY:
      return Say("it cannot be written. See that neither it nor its folder is write-protected");
    case SQLITE_NOMEM:
      return platform::SystemTrouble(ENOMEM);
    case SQLITE_CANTOPEN:
      return SystemReason(database, platform::SystemTrouble(ENOENT));
    case SQLITE_IOERR:
      return SystemReason(
          database,
          Say("the disk did not do its work. See that it is neither full nor failing, and "
              "that files may grow there (\"ulimit -f\")"));
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      return Say("the file is damaged. Close Kelpin and put a copy of it back in its place");
    default:
      return Say("the database says \"%s\". Close Kelpin, and start it again",
                 {database.Problem()});
  }
}

}  // namespace

std::string FileTrouble(std::string_view english, const std::string& path,
                        const Database& database) {
  return Say(english, {path, Reason(database)});
}

}  // namespace kelpin::device::contacts
