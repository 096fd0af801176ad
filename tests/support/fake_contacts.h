#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/contacts_store.h"
#include "platform/mutex.h"
#include "tests/support/fail_plan.h"
#include "tests/support/journal.h"

namespace kelpin::test {

// What one contact of the fake store holds.
struct FakeContact {
  std::array<std::u16string, platform::kContactPropertyCount> texts;
  std::u16string companyPhone;  // empty: the property is absent

  std::u16string& operator[](platform::ContactProperty property) {
    return texts[static_cast<std::size_t>(property)];
  }
  const std::u16string& operator[](platform::ContactProperty property) const {
    return texts[static_cast<std::size_t>(property)];
  }
  bool operator==(const FakeContact&) const = default;
};

// A contacts store in memory. Any thread, as the port says; every call is in the journal under its
// name ("Put(kLastName, Ann)") and can be failed by it. Objects that are in use are counted, so
// that a test sees what was not let go of.
class FakeContacts : public platform::ContactsStore {
 public:
  FakeContacts(Journal& journal, FailPlan& failures);
  ~FakeContacts() override;

  platform::ComResult CoInitializeEx(std::uint32_t flags) override;
  void CoUninitialize() override;
  platform::ComResult CoCreateInstance(std::string_view classId, std::uint32_t context,
                                       std::string_view interfaceId,
                                       std::shared_ptr<platform::IPOutlookApp>& app) override;
  platform::ComResult FindMatchingContact(platform::IPOutlookApp& app, std::u16string_view name,
                                          std::uint32_t flags,
                                          std::shared_ptr<platform::IItem>& item,
                                          std::int32_t& index) override;

  // Puts a contact straight into the store; its number.
  std::int32_t Insert(FakeContact contact);
  // The contacts by their numbers, which is the order they were made in.
  std::map<std::int32_t, FakeContact> Contacts() const;
  // Pairs of CoInitializeEx that are open, and objects that were not let go of.
  int OpenUses() const;

  struct Shared;  // what the objects work on

 private:
  std::shared_ptr<Shared> shared_;
};

// The name of a property as the journal has it.
const char* PropertyName(platform::ContactProperty property);

}  // namespace kelpin::test
