#include "contacts/contact_enumeration.h"

namespace kelpin::contacts {

EnumerationEnd ForEachContact(
    platform::ContactsStore& store, const std::atomic<bool>& stop,
    const std::function<void(ContactsConnection&, const ContactHead&)>& visit) {
  ContactsConnection connection(store);
  if (connection.Open() == 0) {
    return EnumerationEnd::kNotOpened;
  }
  if (connection.OpenContactsFolder() == 0) {
    connection.Close();
    return EnumerationEnd::kNotOpened;
  }
  std::int32_t position = 1;
  for (; position <= connection.count && !stop; ++position) {
    if (connection.ContactAt(position) == 0) {
      break;
    }
    ContactHead head;
    head.oid = ContactOid(*connection.contact);
    platform::IContact& contact = *connection.contact;
    const int first = ReadContactText(contact, platform::ContactProperty::kFirstName, head.first);
    const int last = ReadContactText(contact, platform::ContactProperty::kLastName, head.last);
    head.whole = first != 0 && last != 0;
    visit(connection, head);
  }
  const bool all = position > connection.count;
  connection.Close();
  return all ? EnumerationEnd::kAll : EnumerationEnd::kCutShort;
}

}  // namespace kelpin::contacts
