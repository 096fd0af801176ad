#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>

#include "device/contacts/contact_book.h"
#include "platform/contacts_store.h"

namespace kelpin::device::contacts {

// The store's objects over any address book: one session on the book for each application object,
// opened when that logs on.
class ObjectStore : public platform::ContactsStore {
 public:
  ObjectStore();
  ~ObjectStore() override;

  platform::ComResult CoInitializeEx(std::uint32_t flags) override;
  void CoUninitialize() override;
  platform::ComResult CoCreateInstance(std::string_view classId, std::uint32_t context,
                                       std::string_view interfaceId,
                                       std::shared_ptr<platform::IPOutlookApp>& app) override;
  platform::ComResult FindMatchingContact(platform::IPOutlookApp& app, std::u16string_view name,
                                          std::uint32_t flags,
                                          std::shared_ptr<platform::IItem>& item,
                                          std::int32_t& index) override;

  // A session for the calling thread; null when the book cannot be opened. Any thread.
  virtual std::shared_ptr<ContactBook> OpenBook() = 0;

 private:
  std::atomic<int> initialised_ = 0;
};

}  // namespace kelpin::device::contacts
