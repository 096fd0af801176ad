#pragma once

#include <libebook/libebook.h>

#include <string>

#include "device/contacts/contact_record.h"

namespace kelpin::device::contacts {

// A contact as address books keep it (RFC 2426), read and written by attribute. A card tells the
// first number at work, the second and so on apart by their order alone, so that one that is
// removed would pass its place on to the next. Where the order does not tell, the attributes carry
// their place in a parameter of ours, X-KELPIN-PLACE; 0 is none of the places that we know.
//
// What has no File-As goes by its formatted name (FN), as programs show it.

ContactRecord ReadCard(EVCard* card);

// What the address book knows the contact by. Empty when the server has sent none, against its
// duty.
std::string UidOf(EContact* contact);

// Writes the texts of `changed`; what else the card has stays.
void WriteCard(EVCard* card, const ContactRecord& record, const ContactTextSet& changed);

}  // namespace kelpin::device::contacts
