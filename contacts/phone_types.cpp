#include "contacts/phone_types.h"

namespace kelpin::contacts {

std::u16string ReadPhone(ContactsConnection& connection, std::int32_t oid,
                         const PhoneTypeInfo& type) {
  if (!type.company) {
    return ContactText(*connection.contact, type.property);
  }
  std::u16string number;
  return connection.ReadCompanyPhone(oid, number) != 0 ? number : std::u16string();
}

}  // namespace kelpin::contacts
