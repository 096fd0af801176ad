#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <string>

#include "platform/contacts_store.h"

namespace kelpin::device::contacts {

// Besides the properties, in their order, a contact's main number at its company.
inline constexpr std::size_t kCompanyPhoneText = platform::kContactPropertyCount;
inline constexpr std::size_t kContactTextCount = kCompanyPhoneText + 1;

// A contact's texts in UTF-8, as an address book keeps them; empty is absent.
using ContactRecord = std::array<std::string, kContactTextCount>;

// Which of a record's texts are meant.
using ContactTextSet = std::bitset<kContactTextCount>;

constexpr std::size_t TextIndex(platform::ContactProperty property) {
  return static_cast<std::size_t>(property);
}

}  // namespace kelpin::device::contacts
