#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/contacts_store.h"

namespace kelpin::contract {

// A session on a contacts store, with its Contacts folder open.
class ContactsSession {
 public:
  using ComResult = platform::ComResult;
  using Property = platform::ContactProperty;

  explicit ContactsSession(platform::ContactsStore& store) : store_(store) {
    EXPECT_EQ(store.CoInitializeEx(platform::kComMultithreaded), ComResult::kOk);
    EXPECT_EQ(store.CoCreateInstance(platform::kOutlookApplicationClass,
                                     platform::kClsctxInprocServer, platform::kIPOutlookApp, app),
              ComResult::kOk);
    EXPECT_EQ(app->Logon(0), ComResult::kOk);
    Refresh();
  }
  ~ContactsSession() {
    items = nullptr;
    EXPECT_EQ(app->Logoff(), ComResult::kOk);
    app = nullptr;
    store_.CoUninitialize();
  }
  ContactsSession(const ContactsSession&) = delete;
  ContactsSession& operator=(const ContactsSession&) = delete;

  // Takes the collection anew.
  void Refresh() {
    std::shared_ptr<platform::IFolder> folder;
    ASSERT_EQ(app->GetDefaultFolder(platform::kOlFolderContacts, folder), ComResult::kOk);
    ASSERT_EQ(folder->get_Items(items), ComResult::kOk);
  }

  using Texts = std::vector<std::pair<Property, std::u16string>>;

  // Saves a new contact; its number.
  std::int32_t Add(const Texts& texts) {
    std::shared_ptr<platform::IContact> contact;
    EXPECT_EQ(items->Add(contact), ComResult::kOk);
    for (const auto& [property, text] : texts) {
      EXPECT_EQ(contact->Put(property, text), ComResult::kOk);
    }
    EXPECT_EQ(contact->Save(), ComResult::kOk);
    std::int32_t oid = 0;
    EXPECT_EQ(contact->get_Oid(oid), ComResult::kOk);
    return oid;
  }
  std::int32_t AddNamed(std::u16string name) { return Add({{Property::kFileAs, std::move(name)}}); }

  std::shared_ptr<platform::IItem> ItemOf(std::int32_t oid) {
    std::shared_ptr<platform::IItem> item;
    EXPECT_EQ(app->GetItemFromOidEx(oid, 0, item), ComResult::kOk) << oid;
    return item;
  }

  std::shared_ptr<platform::IContact> ContactOf(std::int32_t oid) {
    std::shared_ptr<platform::IContact> contact;
    const auto item = ItemOf(oid);
    if (item != nullptr) {
      EXPECT_EQ(item->QueryInterface(platform::kIContact, contact), ComResult::kOk);
    }
    return contact;
  }

  // What the store has now.
  std::u16string Stored(std::int32_t oid, Property property) {
    std::u16string text = u"(none)";
    const auto contact = ContactOf(oid);
    if (contact != nullptr) {
      EXPECT_EQ(contact->Get(property, text), ComResult::kOk);
    }
    return text;
  }

  void Change(std::int32_t oid, const Texts& texts) {
    const auto contact = ContactOf(oid);
    ASSERT_NE(contact, nullptr);
    for (const auto& [property, text] : texts) {
      EXPECT_EQ(contact->Put(property, text), ComResult::kOk);
    }
    EXPECT_EQ(contact->Save(), ComResult::kOk);
  }

  void Delete(std::int32_t oid) { EXPECT_EQ(ItemOf(oid)->Delete(), ComResult::kOk); }

  int Count() {
    std::int32_t count = -1;
    EXPECT_EQ(items->get_Count(count), ComResult::kOk);
    return count;
  }

  // The numbers of all contacts by position, from a collection taken now.
  std::vector<std::int32_t> Numbers() {
    Refresh();
    std::vector<std::int32_t> numbers;
    for (std::int32_t position = 1; position <= Count(); ++position) {
      std::shared_ptr<platform::IContact> contact;
      EXPECT_EQ(items->Item(position, contact), ComResult::kOk);
      std::int32_t oid = 0;
      EXPECT_EQ(contact->get_Oid(oid), ComResult::kOk);
      numbers.push_back(oid);
    }
    return numbers;
  }

  // The number of the contact that matches; 0 when none does.
  std::int32_t Find(std::u16string_view name) {
    std::shared_ptr<platform::IItem> item;
    index = 0;
    const ComResult result =
        store_.FindMatchingContact(*app, name, platform::kFmcfFindFileAs, item, index);
    if (result == ComResult::kFalse) {
      EXPECT_EQ(item, nullptr);
      return 0;
    }
    EXPECT_EQ(result, ComResult::kOk);
    std::shared_ptr<platform::IContact> contact;
    std::int32_t oid = 0;
    EXPECT_EQ(item->QueryInterface(platform::kIContact, contact), ComResult::kOk);
    EXPECT_EQ(contact->get_Oid(oid), ComResult::kOk);
    return oid;
  }

  // The company number; `size` is that of the reply.
  std::u16string CompanyPhone(std::int32_t oid, std::uint32_t& size) {
    const auto item = ItemOf(oid);
    EXPECT_EQ(item->GetProps(platform::kCompanyPhoneProperty, 0, {}, size),
              ComResult::kBufferTooSmall);
    std::vector<std::byte> reply(size);
    EXPECT_EQ(item->GetProps(platform::kCompanyPhoneProperty, 0, reply, size), ComResult::kOk);
    EXPECT_EQ(size, reply.size());
    platform::PropertyHeader header;
    std::memcpy(&header, reply.data(), sizeof header);
    EXPECT_EQ(header.property, platform::kCompanyPhoneProperty);
    EXPECT_EQ(header.length, size - sizeof header);
    std::u16string text(header.length / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), reply.data() + header.value, text.size() * sizeof(char16_t));
    return text;
  }

  std::shared_ptr<platform::IPOutlookApp> app;
  std::shared_ptr<platform::IPOutlookItemCollection> items;
  std::int32_t index = 0;  // what the last Find told

 private:
  platform::ContactsStore& store_;
};

// What every contacts store does. `Maker` is default-constructed for each test and has
// `platform::ContactsStore& Port()`: a store without a contact; `platform::ContactsStore& Other()`:
// the same contacts as another program has them, where there can be one; and
// `std::int32_t AddWithCompanyPhone(std::u16string phone)`.
template <class Maker>
class ContactsContract : public ::testing::Test {
 protected:
  using ComResult = platform::ComResult;
  using Property = platform::ContactProperty;
  using Session = ContactsSession;

  platform::ContactsStore& Port() { return maker_.Port(); }

  Maker maker_;
};

}  // namespace kelpin::contract
