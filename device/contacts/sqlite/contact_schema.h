#pragma once

#include <string>

#include "device/contacts/sqlite/database.h"

namespace kelpin::device::contacts {

// "KelC": what tells our contacts files from other databases.
inline constexpr int kApplicationId = 0x4B656C43;
inline constexpr int kSchemaVersion = 1;

// The columns of a contact's texts, in the order of a ContactRecord.
extern const char* const kTextColumns[];

// Makes the file (0600) when it is missing and the tables when it is empty. What is there and is
// not ours, is damaged or was made by a newer program is refused and left as it is; `why` names
// the file, the reason and what to do.
[[nodiscard]] bool PrepareContactsFile(const std::string& path, std::string& why);

// Whether the database, found at a path that was prepared, is what was prepared there. SQLITE_OK or
// why that cannot be seen.
[[nodiscard]] int IsContactsFile(Database& database, bool& ours);

}  // namespace kelpin::device::contacts
