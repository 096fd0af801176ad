#pragma once

#include <algorithm>
#include <thread>

#include "tests/contract/contacts/contacts_contract.h"

namespace kelpin::contract {

inline std::u16string Numbered(int number) {
  return u"Name" + std::u16string(1, static_cast<char16_t>(u'0' + number));
}

// The objects of a contacts store and the life of a contact.
template <class Maker>
class ContactsObjectContract : public ContactsContract<Maker> {};

TYPED_TEST_SUITE_P(ContactsObjectContract);

TYPED_TEST_P(ContactsObjectContract, NothingIsMadeBeforeTheSessionStarts) {
  std::shared_ptr<platform::IPOutlookApp> app;
  EXPECT_EQ(
      this->Port().CoCreateInstance(platform::kOutlookApplicationClass,
                                    platform::kClsctxInprocServer, platform::kIPOutlookApp, app),
      platform::ComResult::kNotInitialized);
  EXPECT_EQ(app, nullptr);
}

TYPED_TEST_P(ContactsObjectContract, OnlyTheApplicationCanBeMade) {
  platform::ContactsStore& store = this->Port();
  ASSERT_EQ(store.CoInitializeEx(platform::kComMultithreaded), platform::ComResult::kOk);
  std::shared_ptr<platform::IPOutlookApp> app;
  EXPECT_EQ(store.CoCreateInstance(platform::kIContact, platform::kClsctxInprocServer,
                                   platform::kIPOutlookApp, app),
            platform::ComResult::kNoInterface);
  EXPECT_EQ(store.CoCreateInstance(platform::kOutlookApplicationClass,
                                   platform::kClsctxInprocServer, platform::kIContact, app),
            platform::ComResult::kNoInterface);
  EXPECT_EQ(app, nullptr);
  store.CoUninitialize();
}

TYPED_TEST_P(ContactsObjectContract, TheApplicationAnswersOnlyWhileItIsLoggedOn) {
  platform::ContactsStore& store = this->Port();
  ASSERT_EQ(store.CoInitializeEx(platform::kComMultithreaded), platform::ComResult::kOk);
  std::shared_ptr<platform::IPOutlookApp> app;
  ASSERT_EQ(store.CoCreateInstance(platform::kOutlookApplicationClass,
                                   platform::kClsctxInprocServer, platform::kIPOutlookApp, app),
            platform::ComResult::kOk);
  for (const bool loggedOnBefore : {false, true}) {
    if (loggedOnBefore) {
      ASSERT_EQ(app->Logon(0), platform::ComResult::kOk);
      ASSERT_EQ(app->Logoff(), platform::ComResult::kOk);
    }
    std::shared_ptr<platform::IFolder> folder;
    std::shared_ptr<platform::IItem> item;
    std::int32_t index = 0;
    EXPECT_FALSE(Succeeded(app->GetDefaultFolder(platform::kOlFolderContacts, folder)));
    EXPECT_FALSE(Succeeded(app->GetItemFromOidEx(1, 0, item)));
    EXPECT_FALSE(
        Succeeded(store.FindMatchingContact(*app, u"Ann", platform::kFmcfFindFileAs, item, index)));
    EXPECT_EQ(folder, nullptr);
    EXPECT_EQ(item, nullptr);
  }
  app = nullptr;
  store.CoUninitialize();
}

TYPED_TEST_P(ContactsObjectContract, ContactsIsTheOnlyFolder) {
  ContactsSession session(this->Port());
  std::shared_ptr<platform::IFolder> folder;
  EXPECT_EQ(session.app->GetDefaultFolder(9, folder), platform::ComResult::kInvalidArgument);
  EXPECT_EQ(folder, nullptr);
}

TYPED_TEST_P(ContactsObjectContract, AnEmptyFolderHasNoneAndNoPosition) {
  ContactsSession session(this->Port());
  EXPECT_EQ(session.Count(), 0);
  std::shared_ptr<platform::IContact> contact;
  EXPECT_FALSE(Succeeded(session.items->Item(1, contact)));
  EXPECT_EQ(contact, nullptr);
}

TYPED_TEST_P(ContactsObjectContract, ANewContactIsInTheStoreAfterItsSaveAlone) {
  ContactsSession session(this->Port());
  std::shared_ptr<platform::IContact> contact;
  ASSERT_EQ(session.items->Add(contact), platform::ComResult::kOk);
  EXPECT_EQ(contact->Put(platform::ContactProperty::kFileAs, u"Ann"), platform::ComResult::kOk);
  std::int32_t oid = 77;
  EXPECT_EQ(contact->get_Oid(oid), platform::ComResult::kNotFound);
  EXPECT_EQ(oid, 77);
  session.Refresh();
  EXPECT_EQ(session.Count(), 0);
  EXPECT_EQ(contact->Save(), platform::ComResult::kOk);
  EXPECT_EQ(contact->get_Oid(oid), platform::ComResult::kOk);
  EXPECT_GT(oid, 0);
  session.Refresh();
  EXPECT_EQ(session.Count(), 1);
  EXPECT_EQ(session.Stored(oid, platform::ContactProperty::kFileAs), u"Ann");
}

TYPED_TEST_P(ContactsObjectContract, AContactSavedTwiceIsOneContact) {
  ContactsSession session(this->Port());
  std::shared_ptr<platform::IContact> contact;
  ASSERT_EQ(session.items->Add(contact), platform::ComResult::kOk);
  ASSERT_EQ(contact->Put(platform::ContactProperty::kFileAs, u"Ann"), platform::ComResult::kOk);
  ASSERT_EQ(contact->Save(), platform::ComResult::kOk);
  ASSERT_EQ(contact->Put(platform::ContactProperty::kLastName, u"B"), platform::ComResult::kOk);
  ASSERT_EQ(contact->Save(), platform::ComResult::kOk);
  const std::vector<std::int32_t> numbers = session.Numbers();
  ASSERT_EQ(numbers.size(), 1u);
  EXPECT_EQ(session.Stored(numbers[0], platform::ContactProperty::kFileAs), u"Ann");
  EXPECT_EQ(session.Stored(numbers[0], platform::ContactProperty::kLastName), u"B");
}

TYPED_TEST_P(ContactsObjectContract, PositionsFollowTheOrderContactsWereMadeIn) {
  ContactsSession session(this->Port());
  std::vector<std::int32_t> made;
  for (const char16_t* name : {u"Zoe", u"Ann", u"Mia"}) made.push_back(session.AddNamed(name));
  EXPECT_EQ(session.Numbers(), made);
  EXPECT_TRUE(std::is_sorted(made.begin(), made.end()));
}

TYPED_TEST_P(ContactsObjectContract, PositionsCanBeAskedForInAnyOrder) {
  ContactsSession session(this->Port());
  std::vector<std::int32_t> made;
  for (int i = 0; i < 10; ++i) made.push_back(session.AddNamed(Numbered(i)));
  session.Refresh();
  for (const std::int32_t position : {1, 2, 3, 2, 2, 9, 10, 4, 5, 1}) {
    std::shared_ptr<platform::IContact> contact;
    ASSERT_EQ(session.items->Item(position, contact), platform::ComResult::kOk) << position;
    std::int32_t oid = 0;
    ASSERT_EQ(contact->get_Oid(oid), platform::ComResult::kOk);
    EXPECT_EQ(oid, made[static_cast<std::size_t>(position) - 1]);
    std::u16string name;
    ASSERT_EQ(contact->Get(platform::ContactProperty::kFileAs, name), platform::ComResult::kOk);
    EXPECT_EQ(name, Numbered(position - 1));
  }
  std::shared_ptr<platform::IContact> contact;
  for (const std::int32_t position : {0, -1, 11}) {
    EXPECT_FALSE(Succeeded(session.items->Item(position, contact))) << position;
    EXPECT_EQ(contact, nullptr);
  }
}

TYPED_TEST_P(ContactsObjectContract, ACollectionStaysWhatItWasWhenItWasCounted) {
  ContactsSession session(this->Port());
  const std::int32_t ann = session.AddNamed(u"Ann");
  const std::int32_t bob = session.AddNamed(u"Bob");
  const std::int32_t cid = session.AddNamed(u"Cid");
  session.Refresh();
  ASSERT_EQ(session.Count(), 3);
  session.AddNamed(u"Dan");
  EXPECT_EQ(session.Count(), 3);
  std::shared_ptr<platform::IContact> contact;
  std::int32_t oid = 0;
  ASSERT_EQ(session.items->Item(1, contact), platform::ComResult::kOk);
  ASSERT_EQ(contact->get_Oid(oid), platform::ComResult::kOk);
  EXPECT_EQ(oid, ann);
  session.Delete(bob);
  EXPECT_EQ(session.items->Item(2, contact), platform::ComResult::kNotFound);
  EXPECT_EQ(contact, nullptr);
  ASSERT_EQ(session.items->Item(3, contact), platform::ComResult::kOk);
  ASSERT_EQ(contact->get_Oid(oid), platform::ComResult::kOk);
  EXPECT_EQ(oid, cid);
}

TYPED_TEST_P(ContactsObjectContract, AContactReadAfterAChangeHasTheChange) {
  ContactsSession session(this->Port());
  std::vector<std::int32_t> made;
  for (int i = 0; i < 8; ++i) made.push_back(session.AddNamed(u"Ann"));
  session.Refresh();
  std::shared_ptr<platform::IContact> contact;
  for (const std::int32_t position : {1, 2, 3}) {
    ASSERT_EQ(session.items->Item(position, contact), platform::ComResult::kOk);
  }
  session.Change(made[4], {{platform::ContactProperty::kFileAs, u"Bob"}});
  ASSERT_EQ(session.items->Item(4, contact), platform::ComResult::kOk);
  ASSERT_EQ(session.items->Item(5, contact), platform::ComResult::kOk);
  std::u16string name;
  ASSERT_EQ(contact->Get(platform::ContactProperty::kFileAs, name), platform::ComResult::kOk);
  EXPECT_EQ(name, u"Bob");
}

TYPED_TEST_P(ContactsObjectContract, ADeletedContactIsGoneForGood) {
  ContactsSession session(this->Port());
  const std::int32_t oid = session.AddNamed(u"Ann");
  const auto contact = session.ContactOf(oid);
  const auto item = session.ItemOf(oid);
  EXPECT_EQ(item->Delete(), platform::ComResult::kOk);
  EXPECT_EQ(item->Delete(), platform::ComResult::kNotFound);
  std::shared_ptr<platform::IContact> again;
  EXPECT_EQ(item->QueryInterface(platform::kIContact, again), platform::ComResult::kNotFound);
  EXPECT_EQ(again, nullptr);
  std::shared_ptr<platform::IItem> other;
  EXPECT_EQ(session.app->GetItemFromOidEx(oid, 0, other), platform::ComResult::kNotFound);
  EXPECT_EQ(other, nullptr);
  std::uint32_t size = 0;
  EXPECT_EQ(item->GetProps(platform::kCompanyPhoneProperty, 0, {}, size),
            platform::ComResult::kNotFound);
  EXPECT_EQ(contact->Put(platform::ContactProperty::kLastName, u"x"), platform::ComResult::kOk);
  EXPECT_EQ(contact->Save(), platform::ComResult::kNotFound);
  session.Refresh();
  EXPECT_EQ(session.Count(), 0);
}

TYPED_TEST_P(ContactsObjectContract, AContactReadByItsPositionAndThenDeletedIsGoneToo) {
  const std::int32_t oid = this->maker_.AddWithCompanyPhone(u"5");
  ContactsSession session(this->Port());
  std::shared_ptr<platform::IContact> contact;
  ASSERT_EQ(session.items->Item(1, contact), platform::ComResult::kOk);
  const auto item = session.ItemOf(oid);
  std::uint32_t size = 0;
  EXPECT_EQ(session.CompanyPhone(oid, size), std::u16string(u"5\0", 2));
  EXPECT_EQ(session.ItemOf(oid)->Delete(), platform::ComResult::kOk);
  EXPECT_EQ(item->GetProps(platform::kCompanyPhoneProperty, 0, {}, size),
            platform::ComResult::kNotFound);
  std::shared_ptr<platform::IItem> other;
  EXPECT_EQ(session.app->GetItemFromOidEx(oid, 0, other), platform::ComResult::kNotFound);
}

TYPED_TEST_P(ContactsObjectContract, ANumberIsNeverGivenToAnotherContact) {
  std::int32_t last = 0;
  for (int round = 0; round < 3; ++round) {
    ContactsSession session(this->Port());
    const std::int32_t oid = session.AddNamed(u"Ann");
    EXPECT_GT(oid, last);
    last = oid;
    session.Delete(oid);
  }
}

TYPED_TEST_P(ContactsObjectContract, ANumberMeansTheSameContactInAnotherSessionAndProgram) {
  std::int32_t ann = 0;
  std::int32_t bob = 0;
  {
    ContactsSession session(this->Port());
    ann = session.AddNamed(u"Ann");
    bob = session.AddNamed(u"Bob");
  }
  {
    ContactsSession session(this->Port());
    EXPECT_EQ(session.Stored(ann, platform::ContactProperty::kFileAs), u"Ann");
    session.Delete(ann);
  }
  ContactsSession session(this->maker_.Other());
  EXPECT_THAT(session.Numbers(), ::testing::ElementsAre(bob));
  EXPECT_EQ(session.Stored(bob, platform::ContactProperty::kFileAs), u"Bob");
  std::shared_ptr<platform::IItem> item;
  EXPECT_EQ(session.app->GetItemFromOidEx(ann, 0, item), platform::ComResult::kNotFound);
}

TYPED_TEST_P(ContactsObjectContract, AnItemIsAContactAndNothingElse) {
  ContactsSession session(this->Port());
  const auto item = session.ItemOf(session.AddNamed(u"Ann"));
  std::shared_ptr<platform::IContact> contact;
  EXPECT_EQ(item->QueryInterface(platform::kIPOutlookApp, contact),
            platform::ComResult::kNoInterface);
  EXPECT_EQ(contact, nullptr);
}

TYPED_TEST_P(ContactsObjectContract, SessionsOfSeveralThreadsLoseNothing) {
  constexpr int kThreads = 4;
  constexpr int kContacts = 10;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([this, thread] {
      ContactsSession session(this->Port());
      for (int i = 0; i < kContacts; ++i) {
        session.AddNamed(std::u16string(1, static_cast<char16_t>(u'A' + thread)));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  ContactsSession session(this->Port());
  EXPECT_EQ(session.Numbers().size(), static_cast<std::size_t>(kThreads * kContacts));
}

REGISTER_TYPED_TEST_SUITE_P(
    ContactsObjectContract, NothingIsMadeBeforeTheSessionStarts, OnlyTheApplicationCanBeMade,
    TheApplicationAnswersOnlyWhileItIsLoggedOn, ContactsIsTheOnlyFolder,
    AnEmptyFolderHasNoneAndNoPosition, ANewContactIsInTheStoreAfterItsSaveAlone,
    AContactSavedTwiceIsOneContact, PositionsFollowTheOrderContactsWereMadeIn,
    PositionsCanBeAskedForInAnyOrder, ACollectionStaysWhatItWasWhenItWasCounted,
    AContactReadAfterAChangeHasTheChange, ADeletedContactIsGoneForGood,
    AContactReadByItsPositionAndThenDeletedIsGoneToo, ANumberIsNeverGivenToAnotherContact,
    ANumberMeansTheSameContactInAnotherSessionAndProgram, AnItemIsAContactAndNothingElse,
    SessionsOfSeveralThreadsLoseNothing);

}  // namespace kelpin::contract
