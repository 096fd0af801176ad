#pragma once

#include <string>
#include <string_view>

#include "device/contacts/sqlite/database.h"

namespace kelpin::device::contacts {

// `english`, which takes the file's name and the reason, with why the database's last call failed
// and what to do about it: "%s: the contacts file cannot be opened: %s".
std::string FileTrouble(std::string_view english, const std::string& path,
                        const Database& database);

}  // namespace kelpin::device::contacts
