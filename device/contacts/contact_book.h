#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "device/contacts/contact_record.h"
#include "platform/contacts_store.h"

namespace kelpin::device::contacts {

// One session on an address book, of one thread. Contacts have numbers above 0 that rise in the
// order the contacts were made or first seen, and that no other contact ever gets.
class ContactBook {
 public:
  virtual ~ContactBook() = default;

  // The numbers of all contacts, ascending.
  virtual platform::ComResult Numbers(std::vector<std::int32_t>& numbers) = 0;
  // `numbers` ascend and are some of the above; what has gone since is nullopt.
  virtual platform::ComResult Read(std::span<const std::int32_t> numbers,
                                   std::vector<std::optional<ContactRecord>>& records) = 0;
  // Another value than before when this session has changed what Read gave.
  virtual std::uint64_t Version() = 0;
  // kNotFound when there is no such contact.
  virtual platform::ComResult Exists(std::int32_t number) = 0;
  virtual platform::ComResult CompanyPhone(std::int32_t number, std::string& phone) = 0;
  // The first contact whose File-As is `fileAs`, byte for byte, and its position among all;
  // `fileAs` is not empty. kFalse when there is none.
  virtual platform::ComResult Find(std::string_view fileAs, std::int32_t& number,
                                   std::int32_t& position) = 0;
  // What succeeds of these is on the disk. kNotFound when the contact has gone.
  virtual platform::ComResult Add(const ContactRecord& record, std::int32_t& number) = 0;
  virtual platform::ComResult Change(std::int32_t number, const ContactRecord& record,
                                     const ContactTextSet& changed) = 0;
  virtual platform::ComResult Delete(std::int32_t number) = 0;
};

}  // namespace kelpin::device::contacts
