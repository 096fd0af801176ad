#pragma once

#include <libebook/libebook.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "device/contacts/contact_book.h"
#include "device/contacts/eds/glib_pointers.h"
#include "device/contacts/eds/number_table.h"
#include "device/contacts/trouble.h"

namespace kelpin::device::contacts {

// What the sessions of one store share.
struct EdsShared {
  NumberTable numbers;
  std::atomic<std::uint32_t> changes = 0;     // of contacts, by this program
  std::atomic<std::uint32_t> membership = 0;  // contacts added or deleted by this program
};

// A session on an address book of the Evolution Data Server.
class EdsBook final : public ContactBook {
 public:
  // `book` is the uid or the name of an address book; the user's default one when it is empty. What
  // cannot be read or saved later is told to `trouble`.
  static std::shared_ptr<EdsBook> Open(const std::string& book, std::shared_ptr<EdsShared> shared,
                                       std::string& why, TroubleListener trouble = {});
  EdsBook(ObjectPointer<EBookClient> client, std::shared_ptr<EdsShared> shared, std::string name,
          TroubleListener trouble)
      : client_(std::move(client)),
        shared_(std::move(shared)),
        name_(std::move(name)),
        trouble_(std::move(trouble)) {}

  platform::ComResult Numbers(std::vector<std::int32_t>& numbers) override;
  platform::ComResult Read(std::span<const std::int32_t> numbers,
                           std::vector<std::optional<ContactRecord>>& records) override;
  std::uint64_t Version() override { return shared_->changes; }
  platform::ComResult Exists(std::int32_t number) override;
  platform::ComResult CompanyPhone(std::int32_t number, std::string& phone) override;
  platform::ComResult Find(std::string_view fileAs, std::int32_t& number,
                           std::int32_t& position) override;
  platform::ComResult Add(const ContactRecord& record, std::int32_t& number) override;
  platform::ComResult Change(std::int32_t number, const ContactRecord& record,
                             const ContactTextSet& changed) override;
  platform::ComResult Delete(std::int32_t number) override;

 private:
  platform::ComResult Fetch(std::int32_t number, ObjectPointer<EContact>& contact);
  bool Query(const std::string& query, std::vector<ObjectPointer<EContact>>& contacts);
  std::int32_t LowestMatch(const std::vector<ObjectPointer<EContact>>& contacts,
                           std::string_view fileAs);
  platform::ComResult PositionOf(std::int32_t number, std::int32_t& position);
  // What a save that the server took comes to.
  platform::ComResult EndSave();
  // What a call ended with; notes what is worth telling.
  platform::ComResult Fail(std::string_view english, const ErrorHolder& error);

  ObjectPointer<EBookClient> client_;
  std::shared_ptr<EdsShared> shared_;
  const std::string name_;  // the address book's, as programs show it
  TroubleNote trouble_;
  // The numbers as they were at a count of `membership`, for positions.
  std::vector<std::int32_t> known_;
  std::optional<std::uint32_t> knownAt_;
};

}  // namespace kelpin::device::contacts
