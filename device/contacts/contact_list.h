#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "device/contacts/contact_record.h"

namespace kelpin::device::contacts {

// Reads contacts from JSON: a list of objects whose names are those of the properties
// ("MobileTelephoneNumber") and "CompanyTelephoneNumber", whose values are texts. False when it is
// anything else: `why` says what.
[[nodiscard]] bool ReadContactList(std::string_view json, std::vector<ContactRecord>& contacts,
                                   std::string& why);

}  // namespace kelpin::device::contacts
