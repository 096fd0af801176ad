#include "contacts/contacts_connection.h"

#include "tests/contacts/connection_fixture.h"

namespace kelpin::contacts {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(ConnectionTest, OpenStartsTheSessionMakesTheApplicationAndLogsOnWithoutAWindow) {
  EXPECT_EQ(connection.Open(), 1);
  EXPECT_THAT(journal.Entries(),
              ElementsAre("CoInitializeEx(0)",
                          "CoCreateInstance(05058F23-20BE-11D2-8F18-0000F87A4335, 1, "
                          "05058F22-20BE-11D2-8F18-0000F87A4335)",
                          "Logon(0)"));
  EXPECT_NE(connection.app, nullptr);
  EXPECT_EQ(connection.count, 0);
  EXPECT_EQ(connection.contact, nullptr);
  EXPECT_EQ(connection.items, nullptr);
  EXPECT_EQ(connection.folder, nullptr);
}

TEST_F(ConnectionTest, AnOpenThatFailsTakesBackItsStepsAndNeedsNoClose) {
  const int kSteps = 3;  // start the session, make the application, log on
  for (std::uint32_t call = 1; call <= kSteps; ++call) {
    failures.FailCall(call);
    journal.Clear();
    EXPECT_EQ(connection.Open(), 0);
    EXPECT_TRUE(failures.Failed());
    EXPECT_EQ(connection.app, nullptr);
    EXPECT_EQ(store.OpenUses(), 0) << "call " << call << " failed";
    EXPECT_EQ(journal.Count("CoUninitialize"), call == 1 ? 0u : 1u);
    EXPECT_EQ(journal.Count("Logoff"), 0u);
  }
  failures.FailCall(kSteps + 1);
  EXPECT_EQ(connection.Open(), 1);
}

// A store whose calls succeed and hand over nothing.
class EmptyHanded final : public platform::ContactsStore {
 public:
  platform::ComResult CoInitializeEx(std::uint32_t /*flags*/) override {
    ++sessions;
    return platform::ComResult::kOk;
  }
  void CoUninitialize() override { --sessions; }
  platform::ComResult CoCreateInstance(std::string_view /*classId*/, std::uint32_t /*context*/,
                                       std::string_view /*interfaceId*/,
                                       std::shared_ptr<platform::IPOutlookApp>& app) override {
    app = nullptr;
    return platform::ComResult::kOk;
  }
  platform::ComResult FindMatchingContact(platform::IPOutlookApp& /*app*/,
                                          std::u16string_view /*name*/, std::uint32_t /*flags*/,
                                          std::shared_ptr<platform::IItem>& item,
                                          std::int32_t& /*index*/) override {
    item = nullptr;
    return platform::ComResult::kOk;
  }

  int sessions = 0;
};

TEST_F(ConnectionTest, OpenFailsWhenNoApplicationComesBack) {
  EmptyHanded emptyHanded;
  ContactsConnection other(emptyHanded);
  EXPECT_EQ(other.Open(), 0);
  EXPECT_EQ(emptyHanded.sessions, 0);
}

TEST_F(ConnectionTest, CloseLetsGoOfEverythingLogsOffAndEndsTheSessionLast) {
  store.Insert(Known(u"Ann"));
  Open();
  ASSERT_EQ(connection.OpenContactsFolder(), 1);
  ASSERT_EQ(connection.ContactAt(1), 1);
  journal.Clear();
  connection.Close();
  EXPECT_THAT(journal.Entries(), ElementsAre("Logoff()", "CoUninitialize()"));
  EXPECT_EQ(connection.contact, nullptr);
  EXPECT_EQ(connection.items, nullptr);
  EXPECT_EQ(connection.folder, nullptr);
  EXPECT_EQ(connection.app, nullptr);
  EXPECT_EQ(store.OpenUses(), 0);
}

TEST_F(ConnectionTest, CloseLetsGoOfTheApplicationAlsoWhenLogoffFails) {
  Open();
  failures.FailCallOf("Logoff", 1);
  connection.Close();
  EXPECT_TRUE(failures.Failed());
  EXPECT_EQ(store.OpenUses(), 0);
}

TEST_F(ConnectionTest, ACloseOfAConnectionWithoutAnApplicationEndsTheSessionAlone) {
  ASSERT_TRUE(Succeeded(store.CoInitializeEx(0)));
  journal.Clear();
  connection.Close();
  EXPECT_THAT(journal.Entries(), ElementsAre("CoUninitialize()"));
}

TEST_F(ConnectionTest, AFlowThatLeavesWithoutCloseLeavesNothingOpen) {
  {
    ContactsConnection left(store);
    ASSERT_EQ(left.Open(), 1);
    ASSERT_EQ(left.OpenContactsFolder(), 1);
  }
  EXPECT_EQ(store.OpenUses(), 0);
  EXPECT_EQ(journal.Count("CoUninitialize"), 1u);
}

TEST_F(ConnectionTest, AConnectionThatWasClosedCanBeOpenedAnew) {
  Open();
  connection.Close();
  EXPECT_EQ(connection.Open(), 1);
  connection.Close();
  EXPECT_EQ(store.OpenUses(), 0);
}

TEST_F(ConnectionTest, TheContactsFolderIsNumberTenAndIsCounted) {
  store.Insert(Known(u"Ann"));
  store.Insert(Known(u"Bob"));
  Open();
  EXPECT_EQ(connection.OpenContactsFolder(), 1);
  EXPECT_THAT(journal.Entries(), ElementsAre("GetDefaultFolder(10)", "get_Items()", "get_Count()"));
  EXPECT_EQ(connection.count, 2);
  EXPECT_NE(connection.folder, nullptr);
  EXPECT_NE(connection.items, nullptr);
}

TEST_F(ConnectionTest, AnEmptyFolderIsASuccess) {
  Open();
  EXPECT_EQ(connection.OpenContactsFolder(), 1);
  EXPECT_EQ(connection.count, 0);
}

TEST_F(ConnectionTest, WithoutTheFolderOrItsItemsTheFolderCannotBeOpened) {
  store.Insert(Known(u"Ann"));
  Open();
  for (const char* call : {"GetDefaultFolder", "get_Items"}) {
    failures.FailCallOf(call, 1);
    EXPECT_EQ(connection.OpenContactsFolder(), 0) << call;
    EXPECT_TRUE(failures.Failed());
    EXPECT_EQ(connection.count, 0);
    EXPECT_EQ(connection.items, nullptr);
  }
  ContactsConnection closed(store);
  EXPECT_EQ(closed.OpenContactsFolder(), 0);
}

TEST_F(ConnectionTest, AFolderThatCannotBeCountedIsOpenAndHasNone) {
  store.Insert(Known(u"Ann"));
  Open();
  failures.FailCallOf("get_Count", 1);
  EXPECT_EQ(connection.OpenContactsFolder(), 1);
  EXPECT_EQ(connection.count, 0);
}

TEST_F(ConnectionTest, EachContactReplacesTheOneThatWasHeld) {
  store.Insert(Known(u"Ann"));
  store.Insert(Known(u"Bob"));
  Open();
  ASSERT_EQ(connection.OpenContactsFolder(), 1);
  const int open = store.OpenUses();
  ASSERT_EQ(connection.ContactAt(1), 1);
  EXPECT_EQ(ContactText(*connection.contact, ContactProperty::kFileAs), u"Ann");
  ASSERT_EQ(connection.ContactAt(2), 1);
  EXPECT_EQ(ContactText(*connection.contact, ContactProperty::kFileAs), u"Bob");
  EXPECT_EQ(store.OpenUses(), open + 1);
}

TEST_F(ConnectionTest, AContactThatCannotBeHadLeavesNoneHeld) {
  store.Insert(Known(u"Ann"));
  Open();
  ASSERT_EQ(connection.OpenContactsFolder(), 1);
  for (const std::int32_t position : {0, 2, -1}) {
    ASSERT_EQ(connection.ContactAt(1), 1);
    EXPECT_EQ(connection.ContactAt(position), 0) << position;
    EXPECT_EQ(connection.contact, nullptr);
  }
  ASSERT_EQ(connection.ContactAt(1), 1);
  failures.FailCallOf("Item", 1);
  EXPECT_EQ(connection.ContactAt(1), 0);
  EXPECT_EQ(connection.contact, nullptr);
}

TEST_F(ConnectionTest, WithoutAnOpenFolderThereIsNoContact) {
  store.Insert(Known(u"Ann"));
  Open();
  EXPECT_EQ(connection.ContactAt(1), 0);
  EXPECT_THAT(journal.Entries(), IsEmpty());
}

TEST_F(ConnectionTest, AnEnumerationSeesEveryContactOnceInTheStoresOrder) {
  const std::int32_t ann = store.Insert(Known(u"Ann"));
  const std::int32_t bob = store.Insert(Known(u"Bob"));
  Open();
  ASSERT_EQ(connection.OpenContactsFolder(), 1);
  std::vector<std::int32_t> seen;
  for (std::int32_t position = 1; position <= connection.count; ++position) {
    ASSERT_EQ(connection.ContactAt(position), 1);
    seen.push_back(ContactOid(*connection.contact));
  }
  EXPECT_THAT(seen, ElementsAre(ann, bob));
}

TEST_F(ConnectionTest, ATextIsReadUpTo256CharactersAndNoPairIsCut) {
  test::FakeContact contact;
  contact[ContactProperty::kLastName] = std::u16string(300, u'x');
  contact[ContactProperty::kFirstName] = std::u16string(255, u'x') + u"\U0001F600";
  contact[ContactProperty::kMiddleName] = std::u16string(254, u'x') + u"\U0001F600yz";
  contact[ContactProperty::kCompanyName] = std::u16string(256, u'x');
  contact[ContactProperty::kFileAs] = std::u16string(u"ab\0cd", 5);
  store.Insert(contact);
  Open();
  ASSERT_EQ(connection.OpenContactsFolder(), 1);
  ASSERT_EQ(connection.ContactAt(1), 1);
  platform::IContact& held = *connection.contact;
  EXPECT_EQ(ContactText(held, ContactProperty::kLastName), std::u16string(256, u'x'));
  EXPECT_EQ(ContactText(held, ContactProperty::kFirstName), std::u16string(255, u'x'));
  EXPECT_EQ(ContactText(held, ContactProperty::kMiddleName),
            std::u16string(254, u'x') + u"\U0001F600");
  EXPECT_EQ(ContactText(held, ContactProperty::kCompanyName), std::u16string(256, u'x'));
  EXPECT_EQ(ContactText(held, ContactProperty::kFileAs), u"ab");
}

TEST_F(ConnectionTest, WhatCannotBeReadOfAContactIsEmptyOrZero) {
  store.Insert(Known(u"Ann"));
  Open();
  ASSERT_EQ(connection.OpenContactsFolder(), 1);
  ASSERT_EQ(connection.ContactAt(1), 1);
  failures.FailCallOf("Get", 1);
  EXPECT_EQ(ContactText(*connection.contact, ContactProperty::kFileAs), u"");
  failures.FailCallOf("get_Oid", 1);
  EXPECT_EQ(ContactOid(*connection.contact), 0);
}

TEST_F(ConnectionTest, TheCompanyNumberIsAskedForItsSizeFirst) {
  const std::int32_t oid = store.Insert(Known(u"Ann"));
  Open();
  std::u16string text = u"before";
  EXPECT_EQ(connection.ReadCompanyPhone(oid, text), 1);
  EXPECT_EQ(text, u"5");
  // No flags; a header of 16 bytes, the digit and its terminator make 20.
  EXPECT_THAT(journal.Entries(), ElementsAre("GetItemFromOidEx(1, 0)", "GetProps(0xA0001F, 0, 0)",
                                             "GetProps(0xA0001F, 0, 20)"));
  EXPECT_EQ(Held(), 0);
}

TEST_F(ConnectionTest, ACompanyNumberThatIsAbsentYieldsNoTextAndIsASuccess) {
  test::FakeContact contact = Known(u"Ann");
  contact.companyPhone.clear();
  const std::int32_t oid = store.Insert(contact);
  Open();
  std::u16string text = u"before";
  EXPECT_EQ(connection.ReadCompanyPhone(oid, text), 1);
  EXPECT_EQ(text, u"");
  EXPECT_EQ(journal.Count("GetProps(0xA0001F, 0, 16)"), 1u);
}

TEST_F(ConnectionTest, ALongCompanyNumberIsCutLikeAnyOtherText) {
  test::FakeContact contact = Known(u"Ann");
  contact.companyPhone = std::u16string(300, u'7');
  const std::int32_t oid = store.Insert(contact);
  Open();
  std::u16string text;
  EXPECT_EQ(connection.ReadCompanyPhone(oid, text), 1);
  EXPECT_EQ(text, std::u16string(256, u'7'));
}

TEST_F(ConnectionTest, ACompanyNumberThatCannotBeReadIsAFailureWithoutText) {
  const std::int32_t oid = store.Insert(Known(u"Ann"));
  Open();
  std::u16string text;
  for (std::uint32_t call = 1; call <= 3; ++call) {  // the item, the size, the value
    failures.FailCall(call);
    text = u"before";
    EXPECT_EQ(connection.ReadCompanyPhone(oid, text), 0) << "call " << call << " failed";
    EXPECT_EQ(text, u"");
    EXPECT_EQ(Held(), 0);
  }
  failures.FailCall(0);
  text = u"before";
  EXPECT_EQ(connection.ReadCompanyPhone(oid + 1, text), 0);
  EXPECT_EQ(text, u"");
  ContactsConnection closed(store);
  EXPECT_EQ(closed.ReadCompanyPhone(oid, text), 0);
}

TEST_F(ConnectionTest, AContactIsDeletedByItsNumber) {
  const std::int32_t ann = store.Insert(Known(u"Ann"));
  const std::int32_t bob = store.Insert(Known(u"Bob"));
  Open();
  EXPECT_EQ(connection.DeleteContactByOid(ann), 1);
  EXPECT_THAT(journal.Entries(), ElementsAre("GetItemFromOidEx(1, 0)", "Delete(1)"));
  EXPECT_EQ(Held(), 0);
  const auto left = store.Contacts();
  ASSERT_EQ(left.size(), 1u);
  EXPECT_EQ(left.begin()->first, bob);
}

TEST_F(ConnectionTest, AContactThatCannotBeHadOrDeletedIsAFailure) {
  const std::int32_t oid = store.Insert(Known(u"Ann"));
  Open();
  for (const char* call : {"GetItemFromOidEx", "Delete"}) {
    failures.FailCallOf(call, 1);
    EXPECT_EQ(connection.DeleteContactByOid(oid), 0) << call;
    EXPECT_EQ(Held(), 0);
  }
  EXPECT_EQ(connection.DeleteContactByOid(oid + 1), 0);
  EXPECT_EQ(store.Contacts().size(), 1u);
  ContactsConnection closed(store);
  EXPECT_EQ(closed.DeleteContactByOid(oid), 0);
}

}  // namespace
}  // namespace kelpin::contacts
