#include "device/contacts/object_store.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "device/contacts/text_form.h"

namespace kelpin::device::contacts {

using platform::ComResult;
using platform::ContactProperty;

namespace {

// A session on the book, shared by the objects that came of it. Whoever goes through the contacts
// asks for the company's number of the one just read, which then need not be read again.
class Session {
 public:
  explicit Session(std::shared_ptr<ContactBook> book) : book_(std::move(book)) {}

  ContactBook* operator->() const { return book_.get(); }
  ContactBook& operator*() const { return *book_; }

  // A contact that was read when the book had this version.
  void Remember(std::int32_t number, const std::string& companyPhone, std::uint64_t version) {
    number_ = number;
    companyPhone_ = companyPhone;
    version_ = version;
  }
  // Null when the contact is another one, or may have changed.
  const std::string* CompanyPhone(std::int32_t number) const {
    return number == number_ && book_->Version() == version_ ? &companyPhone_ : nullptr;
  }

 private:
  std::shared_ptr<ContactBook> book_;
  std::int32_t number_ = 0;
  std::string companyPhone_;
  std::uint64_t version_ = 0;
};

using Book = std::shared_ptr<Session>;

// As many contacts are read at once when they are asked for one after the other.
constexpr std::size_t kLargestPage = 256;
// A GetProps reply tells its length in 16 bits.
constexpr std::size_t kLongestProperty = 32000;  // UTF-16 units

ComResult ReadOne(ContactBook& book, std::int32_t number, ContactRecord& record) {
  std::vector<std::optional<ContactRecord>> records;
  const ComResult result = book.Read(std::span(&number, 1), records);
  if (!Succeeded(result)) return result;
  if (records.empty() || !records.front().has_value()) return ComResult::kNotFound;
  record = *std::move(records.front());
  return ComResult::kOk;
}

class Contact : public platform::IContact {
 public:
  Contact(Book book, std::int32_t number, ContactRecord record)
      : book_(std::move(book)), number_(number), record_(std::move(record)) {}

  ComResult get_Oid(std::int32_t& oid) override {
    if (number_ == 0) return ComResult::kNotFound;
    oid = number_;
    return ComResult::kOk;
  }
  ComResult Get(ContactProperty property, std::u16string& text) override {
    text = ToUtf16(record_[TextIndex(property)]);
    return ComResult::kOk;
  }
  ComResult Put(ContactProperty property, std::u16string_view text) override {
    record_[TextIndex(property)] = ToUtf8(text);
    changed_.set(TextIndex(property));
    return ComResult::kOk;
  }
  ComResult Save() override {
    const ComResult result = number_ == 0 ? (*book_)->Add(record_, number_)
                                          : (*book_)->Change(number_, record_, changed_);
    if (Succeeded(result)) changed_.reset();
    return result;
  }

 private:
  Book book_;
  std::int32_t number_;
  ContactRecord record_;
  ContactTextSet changed_;  // since the contact was read or saved
};

class Item : public platform::IItem {
 public:
  Item(Book book, std::int32_t number) : book_(std::move(book)), number_(number) {}

  ComResult QueryInterface(std::string_view interfaceId,
                           std::shared_ptr<platform::IContact>& contact) override {
    contact = nullptr;
    if (interfaceId != platform::kIContact) return ComResult::kNoInterface;
    ContactRecord record;
    const ComResult result = ReadOne(**book_, number_, record);
    if (Succeeded(result)) contact = std::make_shared<Contact>(book_, number_, std::move(record));
    return result;
  }
  ComResult GetProps(std::uint32_t property, std::uint32_t flags, std::span<std::byte> reply,
                     std::uint32_t& size) override {
    if (property != platform::kCompanyPhoneProperty || flags != 0) {
      return ComResult::kInvalidArgument;
    }
    std::string phone;
    if (const std::string* const known = book_->CompanyPhone(number_)) {
      phone = *known;
    } else {
      const ComResult result = (*book_)->CompanyPhone(number_, phone);
      if (!Succeeded(result)) return result;
    }
    std::u16string text = ToUtf16(phone);
    text.resize(std::min(text.size(), kLongestProperty));
    const std::size_t bytes = text.empty() ? 0 : (text.size() + 1) * sizeof(char16_t);
    platform::PropertyHeader header;
    header.property = property;
    header.length = static_cast<std::uint16_t>(bytes);
    header.value = bytes == 0 ? 0 : sizeof header;
    size = static_cast<std::uint32_t>(sizeof header + bytes);
    if (reply.size() < size) return ComResult::kBufferTooSmall;
    std::memcpy(reply.data(), &header, sizeof header);
    if (bytes != 0) std::memcpy(reply.data() + sizeof header, text.c_str(), bytes);
    return ComResult::kOk;
  }
  ComResult Delete() override { return (*book_)->Delete(number_); }

 private:
  Book book_;
  std::int32_t number_;
};

// Contacts are asked for mostly from first to last: then they are read in pages that grow, and read
// anew, from one contact on, when anything has changed meanwhile.
class Items : public platform::IPOutlookItemCollection {
 public:
  explicit Items(Book book) : book_(std::move(book)) {}

  ComResult get_Count(std::int32_t& count) override {
    const ComResult result = TakeNumbers();
    if (Succeeded(result)) count = static_cast<std::int32_t>(numbers_.size());
    return result;
  }
  ComResult Item(std::int32_t position, std::shared_ptr<platform::IContact>& contact) override {
    contact = nullptr;
    ComResult result = TakeNumbers();
    if (!Succeeded(result)) return result;
    if (position < 1 || static_cast<std::size_t>(position) > numbers_.size()) {
      return ComResult::kInvalidArgument;
    }
    const std::size_t index = static_cast<std::size_t>(position) - 1;
    result = FetchPage(index);
    if (!Succeeded(result)) return result;
    next_ = index + 1;
    std::optional<ContactRecord>& record = page_[index - pageStart_];
    if (!record.has_value()) return ComResult::kNotFound;
    book_->Remember(numbers_[index], (*record)[kCompanyPhoneText], version_);
    contact = std::make_shared<Contact>(book_, numbers_[index], *std::move(record));
    record.reset();
    return ComResult::kOk;
  }
  ComResult Add(std::shared_ptr<platform::IContact>& contact) override {
    contact = std::make_shared<Contact>(book_, 0, ContactRecord());
    return ComResult::kOk;
  }

 private:
  // Late, because a collection that is only added to needs none of them.
  ComResult TakeNumbers() {
    if (taken_) return ComResult::kOk;
    const ComResult result = (*book_)->Numbers(numbers_);
    taken_ = Succeeded(result);
    return result;
  }

  ComResult FetchPage(std::size_t index) {
    const std::uint64_t version = (*book_)->Version();
    const bool forward = index == next_;
    if (forward && version == version_ && index < pageStart_ + page_.size()) {
      return ComResult::kOk;
    }
    const std::size_t wanted =
        forward && version == version_ ? std::min(page_.size() * 2, kLargestPage) : 1;
    const std::size_t length = std::min(std::max<std::size_t>(wanted, 1), numbers_.size() - index);
    pageStart_ = index;
    version_ = version;
    const ComResult result = (*book_)->Read(std::span(numbers_).subspan(index, length), page_);
    if (Succeeded(result) && page_.size() == length) return ComResult::kOk;
    page_.clear();
    return Succeeded(result) ? ComResult::kFail : result;
  }

  Book book_;
  bool taken_ = false;
  std::vector<std::int32_t> numbers_;
  std::vector<std::optional<ContactRecord>> page_;  // given out ones are nullopt
  std::size_t pageStart_ = 0;                       // index of the page's first contact
  std::size_t next_ = 0;                            // index of the one after that given out last
  std::uint64_t version_ = 0;
};

class Folder : public platform::IFolder {
 public:
  explicit Folder(Book book) : book_(std::move(book)) {}
  ComResult get_Items(std::shared_ptr<platform::IPOutlookItemCollection>& items) override {
    items = std::make_shared<Items>(book_);
    return ComResult::kOk;
  }

 private:
  Book book_;
};

class App : public platform::IPOutlookApp {
 public:
  explicit App(ObjectStore& store) : store_(store) {}

  ComResult Logon(std::uint32_t /*window*/) override {
    if (book_ == nullptr) {
      std::shared_ptr<ContactBook> book = store_.OpenBook();
      if (book != nullptr) book_ = std::make_shared<Session>(std::move(book));
    }
    return book_ != nullptr ? ComResult::kOk : ComResult::kFail;
  }
  ComResult Logoff() override {
    book_ = nullptr;
    return ComResult::kOk;
  }
  ComResult GetDefaultFolder(int folder, std::shared_ptr<platform::IFolder>& found) override {
    found = nullptr;
    if (book_ == nullptr) return ComResult::kFail;
    if (folder != platform::kOlFolderContacts) return ComResult::kInvalidArgument;
    found = std::make_shared<Folder>(book_);
    return ComResult::kOk;
  }
  ComResult GetItemFromOidEx(std::int32_t oid, std::uint32_t /*flags*/,
                             std::shared_ptr<platform::IItem>& item) override {
    item = nullptr;
    if (book_ == nullptr) return ComResult::kFail;
    const bool known = book_->CompanyPhone(oid) != nullptr;
    const ComResult result = known ? ComResult::kOk : (*book_)->Exists(oid);
    if (Succeeded(result)) item = std::make_shared<Item>(book_, oid);
    return result;
  }

  const Book& OpenedBook() const { return book_; }

 private:
  ObjectStore& store_;
  Book book_;
};

}  // namespace

ObjectStore::ObjectStore() = default;
ObjectStore::~ObjectStore() = default;

ComResult ObjectStore::CoInitializeEx(std::uint32_t flags) {
  if (flags != platform::kComMultithreaded) return ComResult::kInvalidArgument;
  ++initialised_;
  return ComResult::kOk;
}

void ObjectStore::CoUninitialize() {
  --initialised_;
}

ComResult ObjectStore::CoCreateInstance(std::string_view classId, std::uint32_t context,
                                        std::string_view interfaceId,
                                        std::shared_ptr<platform::IPOutlookApp>& app) {
  app = nullptr;
  if (initialised_ <= 0) return ComResult::kNotInitialized;
  if (classId != platform::kOutlookApplicationClass || context != platform::kClsctxInprocServer ||
      interfaceId != platform::kIPOutlookApp) {
    return ComResult::kNoInterface;
  }
  app = std::make_shared<App>(*this);
  return ComResult::kOk;
}

ComResult ObjectStore::FindMatchingContact(platform::IPOutlookApp& app, std::u16string_view name,
                                           std::uint32_t flags,
                                           std::shared_ptr<platform::IItem>& item,
                                           std::int32_t& index) {
  item = nullptr;
  const Book book = static_cast<App&>(app).OpenedBook();
  if (book == nullptr) return ComResult::kFail;
  if (flags != platform::kFmcfFindFileAs) return ComResult::kInvalidArgument;
  const std::string fileAs = ToUtf8(name);
  if (fileAs.empty()) return ComResult::kFalse;
  std::int32_t number = 0;
  const ComResult result = (*book)->Find(fileAs, number, index);
  if (result == ComResult::kOk) item = std::make_shared<Item>(book, number);
  return result;
}

}  // namespace kelpin::device::contacts
