#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "contacts/contacts_connection.h"

namespace kelpin::contacts {

// A contact's e-mail addresses, in the order in which they are looked for.
inline constexpr platform::ContactProperty kEmailProperties[] = {
    platform::ContactProperty::kEmail1Address,
    platform::ContactProperty::kEmail2Address,
    platform::ContactProperty::kEmail3Address,
};

// The contact that the connection holds.
struct ContactHead {
  std::int32_t oid = 0;
  std::u16string first;
  std::u16string last;
  bool whole = true;  // false when something of it could not be read
};

enum class EnumerationEnd {
  kAll,        // every contact, perhaps none
  kCutShort,   // one could not be fetched, or `stop` was set
  kNotOpened,  // nothing was read
};

// Goes through the contacts in the store's order, with a connection of its own that is closed on
// return. Until `stop` is set.
EnumerationEnd ForEachContact(
    platform::ContactsStore& store, const std::atomic<bool>& stop,
    const std::function<void(ContactsConnection&, const ContactHead&)>& visit);

}  // namespace kelpin::contacts
