#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

#include "contacts/contacts_connection.h"
#include "tests/support/fail_plan.h"
#include "tests/support/fake_contacts.h"
#include "tests/support/journal.h"

namespace kelpin::contacts {

using platform::ContactProperty;

// A fake store that a connection is opened on.
class ConnectionTest : public ::testing::Test {
 protected:
  // A contact whose File-As name is `name`, with a value in all that an overwrite may touch and in
  // some of what it may not.
  static test::FakeContact Known(std::u16string name) {
    test::FakeContact contact;
    contact[ContactProperty::kFirstName] = u"Grace";
    contact[ContactProperty::kMiddleName] = u"Brewster";
    contact[ContactProperty::kLastName] = u"Hopper";
    contact[ContactProperty::kCompanyName] = u"Navy";
    contact[ContactProperty::kFileAs] = std::move(name);
    contact[ContactProperty::kMobileTelephoneNumber] = u"1";
    contact[ContactProperty::kBusinessTelephoneNumber] = u"2";
    contact[ContactProperty::kHomeTelephoneNumber] = u"3";
    contact[ContactProperty::kBusiness2TelephoneNumber] = u"4";
    contact[ContactProperty::kEmail1Address] = u"a@b";
    contact[ContactProperty::kEmail2Address] = u"c@d";
    contact.companyPhone = u"5";
    return contact;
  }

  static ContactTexts Ann() {
    return {.name = u"Ann", .number = u"11", .number2 = u"22", .number3 = u"33", .email = u"x@y"};
  }

  // Opens the connection; what that calls is not in the journal.
  void Open() {
    ASSERT_EQ(connection.Open(), 1);
    journal.Clear();
  }

  // What is in use of the store beyond the session and the application object.
  int Held() const { return store.OpenUses() - 2; }

  test::Journal journal;
  test::FailPlan failures;
  test::FakeContacts store{journal, failures};
  ContactsConnection connection{store};
};

}  // namespace kelpin::contacts
