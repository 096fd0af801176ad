#include "contacts/contacts_connection.h"
#include "tests/contacts/connection_fixture.h"

namespace kelpin::contacts {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto kCreated = AddOrOverwriteResult::kCreated;
constexpr auto kOverwritten = AddOrOverwriteResult::kOverwritten;
constexpr auto kExists = AddOrOverwriteResult::kExists;
constexpr auto kFailed = AddOrOverwriteResult::kFailed;

// What a new contact made of Ann() is.
test::FakeContact NewAnn() {
  test::FakeContact contact;
  contact[ContactProperty::kLastName] = u"Ann";
  contact[ContactProperty::kFileAs] = u"Ann";
  contact[ContactProperty::kMobileTelephoneNumber] = u"11";
  contact[ContactProperty::kBusinessTelephoneNumber] = u"22";
  contact[ContactProperty::kHomeTelephoneNumber] = u"33";
  contact[ContactProperty::kEmail1Address] = u"x@y";
  return contact;
}

TEST(AddOrOverwriteResult, TheCodesAreThoseTheFlowsCountBy) {
  EXPECT_EQ(static_cast<int>(kCreated), 0);
  EXPECT_EQ(static_cast<int>(kOverwritten), 1);
  EXPECT_EQ(static_cast<int>(kExists), 2);
  EXPECT_EQ(static_cast<int>(kFailed), 3);
}

TEST_F(ConnectionTest, ANewContactIsLookedForAndThenWrittenInOrder) {
  Open();
  EXPECT_EQ(connection.AddContact(Ann()), 1);
  EXPECT_THAT(journal.Entries(),
              ElementsAre("GetDefaultFolder(10)", "get_Items()", "FindMatchingContact(Ann, 4)",
                          "Add()", "Put(FirstName, )", "Put(MiddleName, )", "Put(LastName, Ann)",
                          "Put(CompanyName, )", "Put(FileAs, Ann)",
                          "Put(MobileTelephoneNumber, 11)", "Put(BusinessTelephoneNumber, 22)",
                          "Put(HomeTelephoneNumber, 33)", "Put(Email1Address, x@y)", "Save()"));
  const auto contacts = store.Contacts();
  ASSERT_EQ(contacts.size(), 1u);
  EXPECT_EQ(contacts.begin()->second, NewAnn());
  EXPECT_NE(connection.contact, nullptr);  // the one that was made is held
}

TEST_F(ConnectionTest, ANewContactWithoutANameHasNoFileAs) {
  Open();
  EXPECT_EQ(connection.AddContact({.name = u"", .number = u"11"}), 1);
  EXPECT_EQ(journal.Count("Put(FileAs"), 0u);
  EXPECT_EQ(journal.Count("Put(LastName, )"), 1u);
  journal.Clear();
  EXPECT_EQ(connection.AddOrOverwriteContact(1, {.name = u"", .number = u"12"}), kCreated);
  EXPECT_EQ(journal.Count("Put(FileAs"), 0u);
  EXPECT_EQ(store.Contacts().size(), 2u);
}

TEST_F(ConnectionTest, AnAddOfANameThatExistsWritesNothing) {
  store.Insert(Known(u"Ann"));
  const auto before = store.Contacts();
  Open();
  EXPECT_EQ(connection.AddContact(Ann()), 0);
  EXPECT_THAT(journal.Entries("Put"), IsEmpty());
  EXPECT_THAT(journal.Entries("Save"), IsEmpty());
  EXPECT_EQ(journal.Count("Add()"), 0u);
  EXPECT_EQ(store.Contacts(), before);
  EXPECT_EQ(Held(), 2) << "the folder and its items, not the contact that was found";
}

TEST_F(ConnectionTest, TheSameEntryAddedTwiceIsADuplicateWhateverItsNumber) {
  Open();
  EXPECT_EQ(connection.AddContact(Ann()), 1);
  EXPECT_EQ(connection.AddContact({.name = u"Ann", .number = u"99"}), 0);
  EXPECT_EQ(connection.AddOrOverwriteContact(0, {.name = u"Ann", .number = u"99"}), kExists);
  EXPECT_EQ(connection.AddOrOverwriteContact(0, {.name = u"ann", .number = u"11"}), kCreated);
  EXPECT_EQ(store.Contacts().size(), 2u);
}

TEST_F(ConnectionTest, AnAddFailsWithoutFolderItemsNewContactOrSave) {
  Open();
  for (const char* call : {"GetDefaultFolder", "get_Items", "Add", "Save"}) {
    failures.FailCallOf(call, 1);
    EXPECT_EQ(connection.AddContact(Ann()), 0) << call;
    EXPECT_TRUE(failures.Failed());
    failures.FailCallOf(call, 1);
    EXPECT_EQ(connection.AddOrOverwriteContact(1, Ann()), kFailed) << call;
    EXPECT_TRUE(failures.Failed());
  }
  EXPECT_THAT(store.Contacts(), IsEmpty());
  ContactsConnection closed(store);
  EXPECT_EQ(closed.AddContact(Ann()), 0);
  EXPECT_EQ(closed.AddOrOverwriteContact(1, Ann()), kFailed);
}

TEST_F(ConnectionTest, ALookUpThatFailsIsTakenForNoMatch) {
  store.Insert(Known(u"Ann"));
  Open();
  failures.FailCallOf("FindMatchingContact", 1);
  EXPECT_EQ(connection.AddContact(Ann()), 1);
  failures.FailCallOf("FindMatchingContact", 1);
  EXPECT_EQ(connection.AddOrOverwriteContact(0, Ann()), kCreated);
  EXPECT_EQ(store.Contacts().size(), 3u);
}

TEST_F(ConnectionTest, APropertyThatCannotBeWrittenDoesNotStopTheSave) {
  Open();
  failures.FailCallOf("Put", 6);  // the mobile number
  EXPECT_EQ(connection.AddContact(Ann()), 1);
  EXPECT_TRUE(failures.Failed());
  test::FakeContact expected = NewAnn();
  expected[ContactProperty::kMobileTelephoneNumber].clear();
  EXPECT_EQ(store.Contacts().begin()->second, expected);
  failures.FailCallOf("Put", 1);  // the last name
  EXPECT_EQ(connection.AddOrOverwriteContact(1, Ann()), kOverwritten);
  EXPECT_EQ(store.Contacts().begin()->second, NewAnn());
}

TEST_F(ConnectionTest, AContactThatDoesNotExistIsCreatedWhetherOrNotToOverwrite) {
  for (const int overwrite : {0, 1}) {
    test::FakeContacts empty(journal, failures);
    ContactsConnection other(empty);
    ASSERT_EQ(other.Open(), 1);
    EXPECT_EQ(other.AddOrOverwriteContact(overwrite, Ann()), kCreated);
    ASSERT_EQ(empty.Contacts().size(), 1u);
    EXPECT_EQ(empty.Contacts().begin()->second, NewAnn());
  }
}

TEST_F(ConnectionTest, AContactThatExistsIsLeftAloneUnlessToOverwrite) {
  store.Insert(Known(u"Ann"));
  const auto before = store.Contacts();
  Open();
  EXPECT_EQ(connection.AddOrOverwriteContact(0, Ann()), kExists);
  EXPECT_THAT(journal.Entries(),
              ElementsAre("GetDefaultFolder(10)", "get_Items()", "FindMatchingContact(Ann, 4)"));
  EXPECT_EQ(store.Contacts(), before);
  EXPECT_EQ(Held(), 2);
}

TEST_F(ConnectionTest, AnOverwriteReplacesWhatTheCardHasAndKeepsTheRest) {
  store.Insert(Known(u"Ann"));
  Open();
  EXPECT_EQ(connection.AddOrOverwriteContact(1, Ann()), kOverwritten);
  EXPECT_THAT(journal.Entries(),
              ElementsAre("GetDefaultFolder(10)", "get_Items()", "FindMatchingContact(Ann, 4)",
                          "QueryInterface(7F804E40-2010-11D2-8F18-0000F87A4335)",
                          "Put(LastName, Ann)", "Put(FileAs, Ann)",
                          "Put(MobileTelephoneNumber, 11)", "Put(BusinessTelephoneNumber, 22)",
                          "Put(HomeTelephoneNumber, 33)", "Put(Email1Address, x@y)", "Save()"));
  test::FakeContact expected = Known(u"Ann");
  expected[ContactProperty::kLastName] = u"Ann";
  expected[ContactProperty::kMobileTelephoneNumber] = u"11";
  expected[ContactProperty::kBusinessTelephoneNumber] = u"22";
  expected[ContactProperty::kHomeTelephoneNumber] = u"33";
  expected[ContactProperty::kEmail1Address] = u"x@y";
  ASSERT_EQ(store.Contacts().size(), 1u);
  EXPECT_EQ(store.Contacts().begin()->second, expected);
  EXPECT_EQ(Held(), 3) << "the folder, its items and the contact";
}

TEST_F(ConnectionTest, AnOverwriteWithAnEmptyTextClearsTheOldOneAndWithNoneKeepsIt) {
  store.Insert(Known(u"Ann"));
  Open();
  EXPECT_EQ(connection.AddOrOverwriteContact(1, {.name = u"Ann", .number = u"11", .number2 = u""}),
            kOverwritten);
  test::FakeContact expected = Known(u"Ann");
  expected[ContactProperty::kLastName] = u"Ann";
  expected[ContactProperty::kMobileTelephoneNumber] = u"11";
  expected[ContactProperty::kBusinessTelephoneNumber].clear();
  EXPECT_EQ(store.Contacts().begin()->second, expected);
  EXPECT_EQ(journal.Count("Put(HomeTelephoneNumber"), 0u);
  EXPECT_EQ(journal.Count("Put(Email1Address"), 0u);
}

TEST_F(ConnectionTest, AnOverwriteFailsWithoutTheContactOrItsSaveAndChangesNothing) {
  store.Insert(Known(u"Ann"));
  const auto before = store.Contacts();
  Open();
  for (const char* call : {"QueryInterface", "Save"}) {
    failures.FailCallOf(call, 1);
    EXPECT_EQ(connection.AddOrOverwriteContact(1, Ann()), kFailed) << call;
    EXPECT_TRUE(failures.Failed());
    EXPECT_EQ(store.Contacts(), before);
  }
  connection.Close();
  EXPECT_EQ(store.OpenUses(), 0);
}

TEST_F(ConnectionTest, WhateverCallFailsNothingIsLeftInUseAfterClose) {
  std::uint32_t call = 1;
  for (;; ++call) {
    ASSERT_LT(call, 100u);
    test::FakeContacts one(journal, failures);
    one.Insert(Known(u"Ann"));
    failures.FailCall(call);
    ContactsConnection other(one);
    if (other.Open() != 0) {
      std::u16string text;
      static_cast<void>(other.OpenContactsFolder());
      static_cast<void>(other.ContactAt(1));
      static_cast<void>(other.ReadCompanyPhone(1, text));
      static_cast<void>(other.AddOrOverwriteContact(1, Ann()));
      static_cast<void>(other.AddContact({.name = u"Bob"}));
      static_cast<void>(other.DeleteContactByOid(2));
      other.Close();
    }
    EXPECT_EQ(one.OpenUses(), 0) << "call " << call << ", " << failures.FailedKind();
    if (!failures.Failed()) break;
  }
  // 3 to open, 3 for the folder, 1 for the contact, 3 for its company number, 11 to overwrite, 14
  // to add, 2 to delete, 1 to close.
  EXPECT_EQ(call, 39u);
}

}  // namespace
}  // namespace kelpin::contacts
