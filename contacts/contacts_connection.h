#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/contacts_store.h"

namespace kelpin::contacts {

// As much of a contact's text is read, in UTF-16 units.
inline constexpr std::size_t kContactTextLimit = 256;

// The texts of a card's entry that go to a contact. One that is not given stays what it is in a
// contact that is overwritten; an empty one that is given clears the contact's.
struct ContactTexts {
  std::optional<std::u16string_view> name = {};     // LastName and FileAs
  std::optional<std::u16string_view> number = {};   // MobileTelephoneNumber
  std::optional<std::u16string_view> number2 = {};  // BusinessTelephoneNumber
  std::optional<std::u16string_view> number3 = {};  // HomeTelephoneNumber
  std::optional<std::u16string_view> email = {};    // Email1Address
};

enum class [[nodiscard]] AddOrOverwriteResult : int{
    kCreated = 0,
    kOverwritten = 1,
    kExists = 2,  // and was not to be overwritten: nothing is written
    kFailed = 3,
};

// One flow's way to the Contacts store, opened by the flow, used on its thread alone and closed
// when it is through. It shows no message. Results are 1 for success and 0 for failure.
//
//   ContactsConnection connection(store);
//   if (connection.Open() == 0) return;
//   …
//   connection.Close();
struct ContactsConnection {
  explicit ContactsConnection(platform::ContactsStore& contactsStore) : store(contactsStore) {}
  // Closes what is open still, so that no way out of a flow leaves it open.
  ~ContactsConnection();
  ContactsConnection(const ContactsConnection&) = delete;
  ContactsConnection& operator=(const ContactsConnection&) = delete;

  // A call that fails takes back its own steps: no Close then.
  [[nodiscard]] int Open();
  void Close();

  // An empty folder is a success.
  [[nodiscard]] int OpenContactsFolder();
  // Holds the contact at `position`, 1 to `count`, in place of the one held before.
  [[nodiscard]] int ContactAt(std::int32_t position);

  // `text` becomes empty when the contact has no such number; no longer than ContactText's.
  [[nodiscard]] int ReadCompanyPhone(std::int32_t oid, std::u16string& text);
  [[nodiscard]] int DeleteContactByOid(std::int32_t oid);

  // 0 also, and nothing is written, when there is a contact of this name already.
  [[nodiscard]] int AddContact(const ContactTexts& texts);
  // A contact of this name is overwritten when `overwrite` is not 0.
  AddOrOverwriteResult AddOrOverwriteContact(int overwrite, const ContactTexts& texts);

  std::int32_t count = 0;                                    // set by OpenContactsFolder
  std::shared_ptr<platform::IContact> contact;               // the one that is held
  std::shared_ptr<platform::IPOutlookApp> app;               // there while the connection is open
  std::shared_ptr<platform::IPOutlookItemCollection> items;  // of the Contacts folder
  std::shared_ptr<platform::IFolder> folder;

  platform::ContactsStore& store;

 private:
  bool OpenItems();
  std::shared_ptr<platform::IItem> FindByName(const ContactTexts& texts);
  bool HoldNewContact();
  bool SaveNewContact(const ContactTexts& texts);
  bool SaveOverContact(const ContactTexts& texts);
};

// A text of the contact, up to a NUL and at most kContactTextLimit units of it, no surrogate pair
// cut in two; empty when it cannot be read.
std::u16string ContactText(platform::IContact& contact, platform::ContactProperty property);
// The same for a caller who has to know whether it could be read. 1 or 0.
[[nodiscard]] int ReadContactText(platform::IContact& contact, platform::ContactProperty property,
                                  std::u16string& text);

// Writes a text up to a NUL. Whether it could be written shows when the contact is saved.
void PutContactText(platform::IContact& contact, platform::ContactProperty property,
                    std::u16string_view text);

// The contact's number in the store; 0 when it cannot be read.
std::int32_t ContactOid(platform::IContact& contact);

}  // namespace kelpin::contacts
