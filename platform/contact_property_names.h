#pragma once

#include "platform/contacts_store.h"

namespace kelpin::platform {

// What the properties are called, in their order.
inline constexpr const char* kContactPropertyNames[kContactPropertyCount] = {
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
};

}  // namespace kelpin::platform
