#pragma once

#include <string>

#include "device/contacts/sqlite/database.h"

namespace kelpin::device::contacts {

// Why the database's last call failed and what to do, behind the file's name. `what` the call was
// for: "the contacts file cannot be opened".
std::string FileTrouble(const std::string& path, const std::string& what, const Database& database);

}  // namespace kelpin::device::contacts
