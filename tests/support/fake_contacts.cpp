#include "tests/support/fake_contacts.h"

#include <cstddef>
#include <cstring>
#include <set>
#include <span>
#include <utility>

#include "platform/contact_property_names.h"
#include "tests/support/call_text.h"

namespace kelpin::test {

using platform::ComResult;
using platform::ContactProperty;

struct FakeContacts::Shared {
  Shared(Journal& theJournal, FailPlan& theFailures) : journal(theJournal), failures(theFailures) {}

  // Whether a call of this name is to fail.
  template <typename... Arguments>
  bool Fails(std::string_view name, const Arguments&... arguments) {
    journal.Add(CallText(name, arguments...));
    return failures.Fails(name);
  }

  Journal& journal;
  FailPlan& failures;
  Mutex lock;
  std::map<std::int32_t, FakeContact> contacts GUARDED_BY(lock);
  std::int32_t lastOid GUARDED_BY(lock) = 0;
  int initialised GUARDED_BY(lock) = 0;
  int objects GUARDED_BY(lock) = 0;
};

namespace {

using Shared = FakeContacts::Shared;
using Store = std::shared_ptr<Shared>;

// One object that somebody holds.
class Held {
 public:
  explicit Held(Store store) : store_(std::move(store)) {
    MutexLock lock(store_->lock);
    ++store_->objects;
  }
  ~Held() {
    MutexLock lock(store_->lock);
    --store_->objects;
  }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  Shared& operator*() const { return *store_; }
  Shared* operator->() const { return store_.get(); }
  const Store& Get() const { return store_; }

 private:
  Store store_;
};

class Contact : public platform::IContact {
 public:
  Contact(Store store, std::int32_t oid, FakeContact texts)
      : store_(std::move(store)), oid_(oid), texts_(std::move(texts)) {}

  ComResult get_Oid(std::int32_t& oid) override {
    if (store_->Fails("get_Oid")) return ComResult::kFail;
    if (oid_ == 0) return ComResult::kNotFound;
    oid = oid_;
    return ComResult::kOk;
  }
  ComResult Get(ContactProperty property, std::u16string& text) override {
    if (store_->Fails("Get", PropertyName(property))) return ComResult::kFail;
    text = texts_[property];
    return ComResult::kOk;
  }
  ComResult Put(ContactProperty property, std::u16string_view text) override {
    if (store_->Fails("Put", PropertyName(property), text)) return ComResult::kFail;
    texts_[property] = text;
    changed_.insert(property);
    return ComResult::kOk;
  }
  ComResult Save() override {
    if (store_->Fails("Save")) return ComResult::kFail;
    MutexLock lock(store_->lock);
    if (oid_ == 0) {
      oid_ = ++store_->lastOid;
    } else if (!store_->contacts.contains(oid_)) {
      return ComResult::kNotFound;
    }
    FakeContact& stored = store_->contacts[oid_];
    for (const ContactProperty property : changed_) stored[property] = texts_[property];
    changed_.clear();
    return ComResult::kOk;
  }

 private:
  Held store_;
  std::int32_t oid_;
  FakeContact texts_;
  std::set<ContactProperty> changed_;  // since the contact was read or saved
};

class Item : public platform::IItem {
 public:
  Item(Store store, std::int32_t oid) : store_(std::move(store)), oid_(oid) {}

  ComResult QueryInterface(std::string_view interfaceId,
                           std::shared_ptr<platform::IContact>& contact) override {
    contact = nullptr;
    if (store_->Fails("QueryInterface", std::string(interfaceId))) return ComResult::kFail;
    if (interfaceId != platform::kIContact) return ComResult::kNoInterface;
    FakeContact found;
    {
      MutexLock lock(store_->lock);
      const auto entry = store_->contacts.find(oid_);
      if (entry == store_->contacts.end()) return ComResult::kNotFound;
      found = entry->second;
    }
    contact = std::make_shared<Contact>(store_.Get(), oid_, std::move(found));
    return ComResult::kOk;
  }
  ComResult GetProps(std::uint32_t property, std::uint32_t flags, std::span<std::byte> reply,
                     std::uint32_t& size) override {
    if (store_->Fails("GetProps", Hex(property), flags, reply.size())) return ComResult::kFail;
    if (property != platform::kCompanyPhoneProperty || flags != 0) {
      return ComResult::kInvalidArgument;
    }
    std::u16string text;
    {
      MutexLock lock(store_->lock);
      const auto entry = store_->contacts.find(oid_);
      if (entry == store_->contacts.end()) return ComResult::kNotFound;
      text = entry->second.companyPhone;
    }
    platform::PropertyHeader header;
    header.property = property;
    const std::size_t bytes = text.empty() ? 0 : (text.size() + 1) * sizeof(char16_t);
    size = static_cast<std::uint32_t>(sizeof header + bytes);
    if (reply.size() < size) return ComResult::kBufferTooSmall;
    header.length = static_cast<std::uint16_t>(bytes);
    header.value = bytes == 0 ? 0 : sizeof header;
    std::memcpy(reply.data(), &header, sizeof header);
    if (bytes != 0) std::memcpy(reply.data() + sizeof header, text.c_str(), bytes);
    return ComResult::kOk;
  }
  ComResult Delete() override {
    if (store_->Fails("Delete", oid_)) return ComResult::kFail;
    MutexLock lock(store_->lock);
    return store_->contacts.erase(oid_) == 1 ? ComResult::kOk : ComResult::kNotFound;
  }

 private:
  Held store_;
  std::int32_t oid_;
};

class Items : public platform::IPOutlookItemCollection {
 public:
  explicit Items(Store store) : store_(std::move(store)) {
    MutexLock lock(store_->lock);
    for (const auto& [oid, contact] : store_->contacts) oids_.push_back(oid);
  }

  ComResult get_Count(std::int32_t& count) override {
    if (store_->Fails("get_Count")) return ComResult::kFail;
    count = static_cast<std::int32_t>(oids_.size());
    return ComResult::kOk;
  }
  ComResult Item(std::int32_t position, std::shared_ptr<platform::IContact>& contact) override {
    contact = nullptr;
    if (store_->Fails("Item", position)) return ComResult::kFail;
    if (position < 1 || static_cast<std::size_t>(position) > oids_.size()) {
      return ComResult::kInvalidArgument;
    }
    const std::int32_t oid = oids_[static_cast<std::size_t>(position) - 1];
    FakeContact found;
    {
      MutexLock lock(store_->lock);
      const auto entry = store_->contacts.find(oid);
      if (entry == store_->contacts.end()) return ComResult::kNotFound;
      found = entry->second;
    }
    contact = std::make_shared<Contact>(store_.Get(), oid, std::move(found));
    return ComResult::kOk;
  }
  ComResult Add(std::shared_ptr<platform::IContact>& contact) override {
    contact = nullptr;
    if (store_->Fails("Add")) return ComResult::kFail;
    contact = std::make_shared<Contact>(store_.Get(), 0, FakeContact());
    return ComResult::kOk;
  }

 private:
  Held store_;
  std::vector<std::int32_t> oids_;
};

class Folder : public platform::IFolder {
 public:
  explicit Folder(Store store) : store_(std::move(store)) {}
  ComResult get_Items(std::shared_ptr<platform::IPOutlookItemCollection>& items) override {
    items = nullptr;
    if (store_->Fails("get_Items")) return ComResult::kFail;
    items = std::make_shared<Items>(store_.Get());
    return ComResult::kOk;
  }

 private:
  Held store_;
};

class App : public platform::IPOutlookApp {
 public:
  explicit App(Store store) : store_(std::move(store)) {}

  ComResult Logon(std::uint32_t window) override {
    if (store_->Fails("Logon", window)) return ComResult::kFail;
    loggedOn_ = true;
    return ComResult::kOk;
  }
  ComResult Logoff() override {
    loggedOn_ = false;
    return store_->Fails("Logoff") ? ComResult::kFail : ComResult::kOk;
  }
  ComResult GetDefaultFolder(int folder, std::shared_ptr<platform::IFolder>& found) override {
    found = nullptr;
    if (store_->Fails("GetDefaultFolder", folder) || !loggedOn_) return ComResult::kFail;
    if (folder != platform::kOlFolderContacts) return ComResult::kInvalidArgument;
    found = std::make_shared<Folder>(store_.Get());
    return ComResult::kOk;
  }
  ComResult GetItemFromOidEx(std::int32_t oid, std::uint32_t flags,
                             std::shared_ptr<platform::IItem>& item) override {
    item = nullptr;
    if (store_->Fails("GetItemFromOidEx", oid, flags) || !loggedOn_) return ComResult::kFail;
    {
      MutexLock lock(store_->lock);
      if (!store_->contacts.contains(oid)) return ComResult::kNotFound;
    }
    item = std::make_shared<Item>(store_.Get(), oid);
    return ComResult::kOk;
  }

  bool LoggedOn() const { return loggedOn_; }

 private:
  Held store_;
  bool loggedOn_ = false;
};

}  // namespace

const char* PropertyName(ContactProperty property) {
  return platform::kContactPropertyNames[static_cast<std::size_t>(property)];
}

FakeContacts::FakeContacts(Journal& journal, FailPlan& failures)
    : shared_(std::make_shared<Shared>(journal, failures)) {}

FakeContacts::~FakeContacts() = default;

ComResult FakeContacts::CoInitializeEx(std::uint32_t flags) {
  if (shared_->Fails("CoInitializeEx", flags)) return ComResult::kFail;
  MutexLock lock(shared_->lock);
  ++shared_->initialised;
  return ComResult::kOk;
}

void FakeContacts::CoUninitialize() {
  shared_->journal.Add("CoUninitialize()");
  MutexLock lock(shared_->lock);
  --shared_->initialised;
}

ComResult FakeContacts::CoCreateInstance(std::string_view classId, std::uint32_t context,
                                         std::string_view interfaceId,
                                         std::shared_ptr<platform::IPOutlookApp>& app) {
  app = nullptr;
  if (shared_->Fails("CoCreateInstance", std::string(classId), context, std::string(interfaceId))) {
    return ComResult::kFail;
  }
  {
    MutexLock lock(shared_->lock);
    if (shared_->initialised <= 0) return ComResult::kNotInitialized;
  }
  if (classId != platform::kOutlookApplicationClass || context != platform::kClsctxInprocServer ||
      interfaceId != platform::kIPOutlookApp) {
    return ComResult::kNoInterface;
  }
  app = std::make_shared<App>(shared_);
  return ComResult::kOk;
}

ComResult FakeContacts::FindMatchingContact(platform::IPOutlookApp& app, std::u16string_view name,
                                            std::uint32_t flags,
                                            std::shared_ptr<platform::IItem>& item,
                                            std::int32_t& index) {
  item = nullptr;
  if (shared_->Fails("FindMatchingContact", name, flags)) return ComResult::kFail;
  if (!static_cast<App&>(app).LoggedOn()) return ComResult::kFail;
  if (flags != platform::kFmcfFindFileAs) return ComResult::kInvalidArgument;
  std::int32_t found = 0;
  {
    MutexLock lock(shared_->lock);
    std::int32_t position = 0;
    for (const auto& [oid, contact] : shared_->contacts) {
      ++position;
      if (!name.empty() && contact[ContactProperty::kFileAs] == name) {
        found = oid;
        index = position;
        break;
      }
    }
  }
  if (found == 0) return ComResult::kFalse;
  item = std::make_shared<Item>(shared_, found);
  return ComResult::kOk;
}

std::int32_t FakeContacts::Insert(FakeContact contact) {
  MutexLock lock(shared_->lock);
  shared_->contacts[++shared_->lastOid] = std::move(contact);
  return shared_->lastOid;
}

std::map<std::int32_t, FakeContact> FakeContacts::Contacts() const {
  MutexLock lock(shared_->lock);
  return shared_->contacts;
}

int FakeContacts::OpenUses() const {
  MutexLock lock(shared_->lock);
  return shared_->initialised + shared_->objects;
}

}  // namespace kelpin::test
