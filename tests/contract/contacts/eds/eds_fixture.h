#pragma once

#include <gtest/gtest.h>
#include <libebook/libebook.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>

#include "device/contacts/eds/eds_store.h"
#include "device/contacts/eds/glib_pointers.h"
#include "tests/contract/contacts/contacts_contract.h"

namespace kelpin::contract {

// The user's address book as another program has it.
class OtherProgram {
 public:
  OtherProgram() {
    device::contacts::ErrorHolder error;
    const device::contacts::ObjectPointer<ESourceRegistry> registry(
        e_source_registry_new_sync(nullptr, &error.taken));
    const device::contacts::ObjectPointer<ESource> source(
        e_source_registry_ref_default_address_book(registry.get()));
    client_.reset(reinterpret_cast<EBookClient*>(
        e_book_client_connect_sync(source.get(), static_cast<guint32>(-1), nullptr, &error.taken)));
    EXPECT_NE(client_, nullptr) << error.Message();
  }

  using Fields = std::initializer_list<std::pair<EContactField, const char*>>;

  // Its uid.
  std::string Add(const Fields& fields) {
    const device::contacts::ObjectPointer<EContact> contact(e_contact_new());
    for (const auto& [field, text] : fields) e_contact_set(contact.get(), field, text);
    return Add(contact.get());
  }
  std::string AddCard(const char* vcard) {
    const device::contacts::ObjectPointer<EContact> contact(e_contact_new_from_vcard(vcard));
    return Add(contact.get());
  }

  std::string Get(const std::string& uid, EContactField field) {
    device::contacts::ErrorHolder error;
    EContact* contact = nullptr;
    if (!e_book_client_get_contact_sync(client_.get(), uid.c_str(), &contact, nullptr,
                                        &error.taken)) {
      return error.Message();
    }
    const device::contacts::ObjectPointer<EContact> found(contact);
    const auto* const text = static_cast<const gchar*>(e_contact_get_const(contact, field));
    return text == nullptr ? "" : text;
  }

  std::string OnlyUid() {
    GSList* uids = nullptr;
    e_book_client_get_contacts_uids_sync(client_.get(), "", &uids, nullptr, nullptr);
    const std::string uid =
        g_slist_length(uids) == 1 ? static_cast<const gchar*>(uids->data) : "not one contact";
    g_slist_free_full(uids, g_free);
    return uid;
  }

 private:
  std::string Add(EContact* contact) {
    device::contacts::ErrorHolder error;
    gchar* uid = nullptr;
    EXPECT_TRUE(e_book_client_add_contact_sync(client_.get(), contact, E_BOOK_OPERATION_FLAG_NONE,
                                               &uid, nullptr, &error.taken))
        << error.Message();
    const device::contacts::TextPointer added(uid);
    return added == nullptr ? "" : added.get();
  }

  device::contacts::ObjectPointer<EBookClient> client_;
};

inline std::unique_ptr<device::contacts::EdsStore> OpenEds(const std::string& book = "") {
  std::string why;
  auto store = device::contacts::EdsStore::Open(book, why);
  if (store == nullptr) ADD_FAILURE() << why;
  return store;
}

// A store whose address book has been emptied.
class EdsMaker {
 public:
  EdsMaker() : store_(OpenEds()) {
    ContactsSession session(*store_);
    for (const std::int32_t number : session.Numbers()) session.Delete(number);
  }
  platform::ContactsStore& Port() { return *store_; }
  // Numbers are a store's own.
  platform::ContactsStore& Other() { return *store_; }
  std::int32_t AddWithCompanyPhone(const std::u16string& phone) {
    std::string bytes;
    for (const char16_t unit : phone) bytes.push_back(static_cast<char>(unit));
    OtherProgram().Add({{E_CONTACT_PHONE_COMPANY, bytes.c_str()}});
    ContactsSession session(*store_);
    return session.Numbers().back();
  }

 private:
  std::unique_ptr<device::contacts::EdsStore> store_;
};

}  // namespace kelpin::contract
