#include "device/contacts/sqlite/file_trouble.h"

namespace kelpin::device::contacts {

std::string FileTrouble(const std::string& path, const std::string& what,
                        const Database& database) {
  const int code = database.Handle() == nullptr ? SQLITE_NOMEM : sqlite3_errcode(database.Handle());
  switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return path + ": " + what +
             ": another program keeps the file locked. End that program and try again";
    case SQLITE_FULL:
      return path + ": " + what + ": the disk is full. Make room and try again";
    case SQLITE_READONLY:
      return path + ": " + what + "; is it or its folder write-protected?";
    default:
      return path + ": " + what + ": " + database.Problem();
  }
}

}  // namespace kelpin::device::contacts
