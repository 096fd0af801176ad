#include "tests/contract/contacts/contacts_contract.h"

#include <memory>
#include <string>
#include <utility>

#include "device/contacts/sqlite/sqlite_store.h"
#include "device/contacts/text_form.h"
#include "tests/contract/contacts/contacts_object_contract.h"
#include "tests/contract/contacts/contacts_text_contract.h"
#include "tests/device/contacts/memory_disk.h"
#include "tests/device/scratch_folder.h"
#include "tests/support/fail_plan.h"
#include "tests/support/fake_contacts.h"
#include "tests/support/journal.h"

namespace kelpin::contract {
namespace {

class FakeMaker {
 public:
  platform::ContactsStore& Port() { return contacts_; }
  platform::ContactsStore& Other() { return contacts_; }
  std::int32_t AddWithCompanyPhone(std::u16string phone) {
    test::FakeContact contact;
    contact.companyPhone = std::move(phone);
    return contacts_.Insert(contact);
  }

 private:
  test::Journal journal_;
  test::FailPlan failures_;
  test::FakeContacts contacts_{journal_, failures_};
};

class SqliteMaker {
 public:
  SqliteMaker() : store_(OpenFile()), other_(OpenFile()) {}
  platform::ContactsStore& Port() { return *store_; }
  platform::ContactsStore& Other() { return *other_; }
  std::int32_t AddWithCompanyPhone(std::u16string phone) {
    std::string why;
    device::contacts::ContactRecord record;
    record[device::contacts::kCompanyPhoneText] = device::contacts::ToUtf8(phone);
    EXPECT_TRUE(store_->AddAll(std::span(&record, 1), why)) << why;
    ContactsSession session(*store_);
    return session.Numbers().back();
  }

 private:
  std::unique_ptr<device::contacts::SqliteStore> OpenFile() {
    std::string why;
    auto store = device::contacts::SqliteStore::Open(folder_ / "contacts.db", why);
    if (store == nullptr) ADD_FAILURE() << why;
    return store;
  }

  test::ScratchFolder folder_;
  std::unique_ptr<device::contacts::SqliteStore> store_;
  std::unique_ptr<device::contacts::SqliteStore> other_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ContactsObjectContract, FakeMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ContactsTextContract, FakeMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(Sqlite, ContactsObjectContract, SqliteMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(Sqlite, ContactsTextContract, SqliteMaker);

}  // namespace
}  // namespace kelpin::contract
