#include "contacts/contacts_connection.h"

#include <cstring>
#include <new>
#include <span>

namespace kelpin::contacts {

using platform::ComResult;
using platform::ContactProperty;
using platform::Succeeded;

namespace {

std::u16string_view UpToNul(std::u16string_view text) {
  return text.substr(0, text.find(u'\0'));
}

// Cuts the text at a NUL and where it gets too long, between characters.
void Limit(std::u16string& text) {
  text.resize(UpToNul(text).size());
  if (text.size() <= kContactTextLimit) {
    return;
  }
  const char16_t last = text[kContactTextLimit - 1];
  const bool firstOfPair = last >= 0xD800 && last <= 0xDBFF;
  text.resize(firstOfPair ? kContactTextLimit - 1 : kContactTextLimit);
}

// The text of a GetProps reply that is longer than its header.
std::u16string TextOfReply(std::span<const std::byte> reply) {
  platform::PropertyHeader header;
  std::memcpy(&header, reply.data(), sizeof header);
  if (header.value < sizeof header || header.value > reply.size()) {
    return {};
  }
  const std::span<const std::byte> value = reply.subspan(static_cast<std::size_t>(header.value));
  std::u16string text(value.size() / sizeof(char16_t), u'\0');
  std::memcpy(text.data(), value.data(), text.size() * sizeof(char16_t));
  Limit(text);
  return text;
}

}  // namespace

ContactsConnection::~ContactsConnection() {
  if (app != nullptr) {
    Close();
  }
}

int ContactsConnection::Open() {
  if (!Succeeded(store.CoInitializeEx(platform::kComMultithreaded))) {
    return 0;
  }
  if (!Succeeded(store.CoCreateInstance(platform::kOutlookApplicationClass,
                                        platform::kClsctxInprocServer, platform::kIPOutlookApp,
                                        app)) ||
      app == nullptr || !Succeeded(app->Logon(0))) {
    app = nullptr;
    store.CoUninitialize();
    return 0;
  }
  contact = nullptr;
  items = nullptr;
  folder = nullptr;
  return 1;
}

void ContactsConnection::Close() {
  contact = nullptr;
  items = nullptr;
  folder = nullptr;
  if (app != nullptr) {
    static_cast<void>(app->Logoff());
    app = nullptr;
  }
  store.CoUninitialize();
}

bool ContactsConnection::OpenItems() {
  items = nullptr;
  folder = nullptr;
  if (app == nullptr || !Succeeded(app->GetDefaultFolder(platform::kOlFolderContacts, folder)) ||
      folder == nullptr) {
    return false;
  }
  return Succeeded(folder->get_Items(items)) && items != nullptr;
}

int ContactsConnection::OpenContactsFolder() {
  count = 0;
  if (!OpenItems()) {
    return 0;
  }
  if (!Succeeded(items->get_Count(count))) {
    count = 0;
  }
  return 1;
}

int ContactsConnection::ContactAt(std::int32_t position) {
  contact = nullptr;
  return items != nullptr && Succeeded(items->Item(position, contact)) && contact != nullptr ? 1
                                                                                             : 0;
}

int ContactsConnection::ReadCompanyPhone(std::int32_t oid, std::u16string& text) {
  text.clear();
  std::shared_ptr<platform::IItem> item;
  if (app == nullptr || !Succeeded(app->GetItemFromOidEx(oid, 0, item)) || item == nullptr) {
    return 0;
  }
  std::uint32_t size = 0;
  if (item->GetProps(platform::kCompanyPhoneProperty, 0, {}, size) != ComResult::kBufferTooSmall) {
    return 0;
  }
  const std::unique_ptr<std::byte[]> buffer(new (std::nothrow) std::byte[size]);
  if (buffer == nullptr) {
    return 0;
  }
  const std::span<std::byte> reply(buffer.get(), size);
  if (!Succeeded(item->GetProps(platform::kCompanyPhoneProperty, 0, reply, size))) {
    return 0;
  }
  if (size > sizeof(platform::PropertyHeader) && size <= reply.size()) {
    text = TextOfReply(reply.first(size));
  }
  return 1;
}

int ContactsConnection::DeleteContactByOid(std::int32_t oid) {
  std::shared_ptr<platform::IItem> item;
  return app != nullptr && Succeeded(app->GetItemFromOidEx(oid, 0, item)) && item != nullptr &&
                 Succeeded(item->Delete())
             ? 1
             : 0;
}

// Null when no contact has the name, and also when the store cannot tell.
std::shared_ptr<platform::IItem> ContactsConnection::FindByName(const ContactTexts& texts) {
  std::shared_ptr<platform::IItem> item;
  std::int32_t index = 0;
  const ComResult result = store.FindMatchingContact(*app, UpToNul(texts.name.value_or(u"")),
                                                     platform::kFmcfFindFileAs, item, index);
  return result == ComResult::kOk ? item : nullptr;
}

bool ContactsConnection::HoldNewContact() {
  contact = nullptr;
  return Succeeded(items->Add(contact)) && contact != nullptr;
}

bool ContactsConnection::SaveNewContact(const ContactTexts& texts) {
  const std::u16string_view name = UpToNul(texts.name.value_or(u""));
  PutContactText(*contact, ContactProperty::kFirstName, u"");
  PutContactText(*contact, ContactProperty::kMiddleName, u"");
  PutContactText(*contact, ContactProperty::kLastName, name);
  PutContactText(*contact, ContactProperty::kCompanyName, u"");
  if (!name.empty()) {
    PutContactText(*contact, ContactProperty::kFileAs, name);
  }
  PutContactText(*contact, ContactProperty::kMobileTelephoneNumber, texts.number.value_or(u""));
  PutContactText(*contact, ContactProperty::kBusinessTelephoneNumber, texts.number2.value_or(u""));
  PutContactText(*contact, ContactProperty::kHomeTelephoneNumber, texts.number3.value_or(u""));
  PutContactText(*contact, ContactProperty::kEmail1Address, texts.email.value_or(u""));
  return Succeeded(contact->Save());
}

// The contact's first, middle and company names and all else that the card has no place for stay.
bool ContactsConnection::SaveOverContact(const ContactTexts& texts) {
  if (texts.name.has_value()) {
    const std::u16string_view name = UpToNul(*texts.name);
    PutContactText(*contact, ContactProperty::kLastName, name);
    if (!name.empty()) {
      PutContactText(*contact, ContactProperty::kFileAs, name);
    }
  }
  const auto putGiven = [this](ContactProperty property,
                               const std::optional<std::u16string_view>& text) {
    if (text.has_value()) {
      PutContactText(*contact, property, *text);
    }
  };
  putGiven(ContactProperty::kMobileTelephoneNumber, texts.number);
  putGiven(ContactProperty::kBusinessTelephoneNumber, texts.number2);
  putGiven(ContactProperty::kHomeTelephoneNumber, texts.number3);
  putGiven(ContactProperty::kEmail1Address, texts.email);
  return Succeeded(contact->Save());
}

int ContactsConnection::AddContact(const ContactTexts& texts) {
  if (!OpenItems() || FindByName(texts) != nullptr || !HoldNewContact()) {
    return 0;
  }
  return SaveNewContact(texts) ? 1 : 0;
}

AddOrOverwriteResult ContactsConnection::AddOrOverwriteContact(int overwrite,
                                                               const ContactTexts& texts) {
  if (!OpenItems()) {
    return AddOrOverwriteResult::kFailed;
  }
  const std::shared_ptr<platform::IItem> found = FindByName(texts);
  if (found == nullptr) {
    return HoldNewContact() && SaveNewContact(texts) ? AddOrOverwriteResult::kCreated
                                                     : AddOrOverwriteResult::kFailed;
  }
  if (overwrite == 0) {
    return AddOrOverwriteResult::kExists;
  }
  contact = nullptr;
  if (!Succeeded(found->QueryInterface(platform::kIContact, contact)) || contact == nullptr) {
    return AddOrOverwriteResult::kFailed;
  }
  return SaveOverContact(texts) ? AddOrOverwriteResult::kOverwritten
                                : AddOrOverwriteResult::kFailed;
}

int ReadContactText(platform::IContact& contact, ContactProperty property, std::u16string& text) {
  text.clear();
  if (!Succeeded(contact.Get(property, text))) {
    text.clear();
    return 0;
  }
  Limit(text);
  return 1;
}

std::u16string ContactText(platform::IContact& contact, ContactProperty property) {
  std::u16string text;
  static_cast<void>(ReadContactText(contact, property, text));
  return text;
}

void PutContactText(platform::IContact& contact, ContactProperty property,
                    std::u16string_view text) {
  static_cast<void>(contact.Put(property, UpToNul(text)));
}

std::int32_t ContactOid(platform::IContact& contact) {
  std::int32_t oid = 0;
  return Succeeded(contact.get_Oid(oid)) ? oid : 0;
}

}  // namespace kelpin::contacts
