#include <gtest/gtest.h>
#include <libebook/libebook.h>

#include "device/contacts/eds/card_fields.h"
#include "device/contacts/eds/glib_pointers.h"

namespace kelpin::contract {
namespace {

using device::contacts::ObjectPointer;
using device::contacts::UidOf;

TEST(EdsUid, IsEmptyWhereTheServerSentNone) {
  const ObjectPointer<EContact> named(
      e_contact_new_from_vcard("BEGIN:VCARD\r\nVERSION:3.0\r\nUID:one\r\nFN:One\r\nEND:VCARD"));
  EXPECT_EQ(UidOf(named.get()), "one");
  const ObjectPointer<EContact> nameless(
      e_contact_new_from_vcard("BEGIN:VCARD\r\nVERSION:3.0\r\nFN:None\r\nEND:VCARD"));
  EXPECT_EQ(UidOf(nameless.get()), "");
}

}  // namespace
}  // namespace kelpin::contract
