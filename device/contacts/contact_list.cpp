#include "device/contacts/contact_list.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <nlohmann/json.hpp>

namespace kelpin::device::contacts {
namespace {

// In the order of a ContactRecord.
constexpr const char* kNames[kContactTextCount] = {
    "FirstName",
    "MiddleName",
    "LastName",
    "CompanyName",
    "FileAs",
    "MobileTelephoneNumber",
    "BusinessTelephoneNumber",
    "HomeTelephoneNumber",
    "Business2TelephoneNumber",
    "Home2TelephoneNumber",
    "RadioTelephoneNumber",
    "PagerNumber",
    "CarTelephoneNumber",
    "AssistantTelephoneNumber",
    "HomeFaxNumber",
    "BusinessFaxNumber",
    "Email1Address",
    "Email2Address",
    "Email3Address",
    "CompanyTelephoneNumber",
};

}  // namespace

bool ReadContactList(std::string_view json, std::vector<ContactRecord>& contacts,
                     std::string& why) {
  const nlohmann::json list = nlohmann::json::parse(json, nullptr, false);
  if (!list.is_array()) {
    why = "not a list of contacts";
    return false;
  }
  std::vector<ContactRecord> read;
  for (const nlohmann::json& contact : list) {
    const std::string place = "contact " + std::to_string(read.size() + 1);
    if (!contact.is_object()) {
      why = place + " is not an object";
      return false;
    }
    ContactRecord record;
    for (const auto& [name, value] : contact.items()) {
      const auto* const found = std::find(std::begin(kNames), std::end(kNames), name);
      if (found == std::end(kNames) || !value.is_string()) {
        why = place + ": \"" + name + "\" is no text of a contact";
        return false;
      }
      record[static_cast<std::size_t>(found - std::begin(kNames))] =
          value.get_ref<const std::string&>();
    }
    read.push_back(std::move(record));
  }
  contacts = std::move(read);
  return true;
}

}  // namespace kelpin::device::contacts
