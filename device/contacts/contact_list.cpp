#include "device/contacts/contact_list.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <nlohmann/json.hpp>

#include "platform/contact_property_names.h"

namespace kelpin::device::contacts {
namespace {

constexpr std::string_view kCompanyPhoneName = "CompanyTelephoneNumber";

// Where a contact has the text of this name; kContactTextCount when it has none.
std::size_t TextNamed(std::string_view name) {
  if (name == kCompanyPhoneName) {
    return kCompanyPhoneText;
  }
  const auto* const found = std::find(std::begin(platform::kContactPropertyNames),
                                      std::end(platform::kContactPropertyNames), name);
  return found == std::end(platform::kContactPropertyNames)
             ? kContactTextCount
             : static_cast<std::size_t>(found - std::begin(platform::kContactPropertyNames));
}

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
      const std::size_t text = TextNamed(name);
      if (text == kContactTextCount || !value.is_string()) {
        why = place + ": \"" + name + "\" is no text of a contact";
        return false;
      }
      record[text] = value.get_ref<const std::string&>();
    }
    read.push_back(std::move(record));
  }
  contacts = std::move(read);
  return true;
}

}  // namespace kelpin::device::contacts
