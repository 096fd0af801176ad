#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "app/settings.h"
#include "contacts/contacts_connection.h"
#include "res/ids.h"

namespace kelpin::contacts {

// A kind of number that a contact has. The company's is the one that the store keeps apart from the
// contact's own texts.
struct PhoneTypeInfo {
  app::PhoneType type = app::PhoneType::kMobile;
  int label = 0;  // a string's id
  platform::ContactProperty property = platform::ContactProperty::kMobileTelephoneNumber;
  bool company = false;  // `property` does not count
};

// In the order in which they are offered, which is that of the flags and marks of the settings.
inline constexpr std::array<PhoneTypeInfo, app::kPhoneTypeCount> kPhoneTypes = {{
    {app::PhoneType::kMobile, res::kStringMobileTel,
     platform::ContactProperty::kMobileTelephoneNumber},
    {app::PhoneType::kWork, res::kStringWorkTel,
     platform::ContactProperty::kBusinessTelephoneNumber},
    {app::PhoneType::kHome, res::kStringHomeTel, platform::ContactProperty::kHomeTelephoneNumber},
    {app::PhoneType::kCompany, res::kStringCompanyTel, {}, true},
    {app::PhoneType::kWork2, res::kStringWork2Tel,
     platform::ContactProperty::kBusiness2TelephoneNumber},
    {app::PhoneType::kHome2, res::kStringHome2Tel,
     platform::ContactProperty::kHome2TelephoneNumber},
    {app::PhoneType::kRadio, res::kStringRadioTel,
     platform::ContactProperty::kRadioTelephoneNumber},
    {app::PhoneType::kPager, res::kStringPager, platform::ContactProperty::kPagerNumber},
    {app::PhoneType::kCar, res::kStringCarTel, platform::ContactProperty::kCarTelephoneNumber},
    {app::PhoneType::kAssistant, res::kStringAssistantTel,
     platform::ContactProperty::kAssistantTelephoneNumber},
}};

// The number of this type of the contact that `connection` holds, whose number is `oid`; empty when
// there is none.
std::u16string ReadPhone(ContactsConnection& connection, std::int32_t oid,
                         const PhoneTypeInfo& type);

}  // namespace kelpin::contacts
