#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace kelpin::platform {

// What the store's calls return: below 0 is a failure.
enum class [[nodiscard]] ComResult : std::int32_t{
    kOk = 0,
    kFalse = 1,  // no failure, and nothing found
    kFail = static_cast<std::int32_t>(0x80004005),
    kNoInterface = static_cast<std::int32_t>(0x80004002),
    kInvalidArgument = static_cast<std::int32_t>(0x80070057),
    kNotFound = static_cast<std::int32_t>(0x80070490),
    kBufferTooSmall = static_cast<std::int32_t>(0x8007007A),
    kNotInitialized = static_cast<std::int32_t>(0x800401F0),
};

constexpr bool Succeeded(ComResult result) {
  return static_cast<std::int32_t>(result) >= 0;
}

inline constexpr std::string_view kOutlookApplicationClass = "05058F23-20BE-11D2-8F18-0000F87A4335";
inline constexpr std::string_view kIPOutlookApp = "05058F22-20BE-11D2-8F18-0000F87A4335";
inline constexpr std::string_view kIContact = "7F804E40-2010-11D2-8F18-0000F87A4335";

inline constexpr std::uint32_t kComMultithreaded = 0;
inline constexpr std::uint32_t kClsctxInprocServer = 1;
inline constexpr int kOlFolderContacts = 10;
inline constexpr std::uint32_t kFmcfFindFileAs = 4;  // match the whole File-As name, exactly
inline constexpr std::uint32_t kCompanyPhoneProperty = 0x00A0001F;  // a text

// A contact's texts that the program reads or writes.
enum class ContactProperty {
  kFirstName,
  kMiddleName,
  kLastName,
  kCompanyName,
  kFileAs,
  kMobileTelephoneNumber,
  kBusinessTelephoneNumber,
  kHomeTelephoneNumber,
  kBusiness2TelephoneNumber,
  kHome2TelephoneNumber,
  kRadioTelephoneNumber,
  kPagerNumber,
  kCarTelephoneNumber,
  kAssistantTelephoneNumber,
  kHomeFaxNumber,
  kBusinessFaxNumber,
  kEmail1Address,
  kEmail2Address,
  kEmail3Address,
};
inline constexpr int kContactPropertyCount = 19;

// The start of GetProps' reply. The text follows at once, in UTF-16 with its terminator; a property
// that the contact does not have has the header alone.
struct PropertyHeader {
  std::uint32_t property = 0;
  std::uint16_t length = 0;
  std::uint16_t flags = 0;
  std::uint64_t value = 0;  // where the text begins, in bytes from the reply's start
};
static_assert(sizeof(PropertyHeader) == 16);

// A contact. Changes are kept by Save alone. An object that is let go of is released.
class IContact {
 public:
  virtual ~IContact() = default;

  // The contact's number in the store: never 0, never given to another contact. kNotFound before a
  // new contact's first Save.
  virtual ComResult get_Oid(std::int32_t& oid) = 0;
  // A text that was never set is empty. On failure `text` is left as it was.
  virtual ComResult Get(ContactProperty property, std::u16string& text) = 0;
  virtual ComResult Put(ContactProperty property, std::u16string_view text) = 0;
  // What was put since, all or nothing, and no other text; when it succeeds it is on the disk.
  virtual ComResult Save() = 0;
};

// An item of the store whose kind is not looked at yet.
class IItem {
 public:
  virtual ~IItem() = default;

  // `interfaceId`: kIContact, else kNoInterface. On failure `contact` becomes null.
  virtual ComResult QueryInterface(std::string_view interfaceId,
                                   std::shared_ptr<IContact>& contact) = 0;
  // One property by its number, flags 0. When the reply does not fit in `reply`, kBufferTooSmall,
  // nothing written. `size` becomes the reply's size in bytes in both cases.
  virtual ComResult GetProps(std::uint32_t property, std::uint32_t flags,
                             std::span<std::byte> reply, std::uint32_t& size) = 0;
  // For good, at once. kNotFound when it is gone already.
  virtual ComResult Delete() = 0;
};

// A folder's contacts in the order they were made, as they were at the first call but Add.
class IPOutlookItemCollection {
 public:
  virtual ~IPOutlookItemCollection() = default;

  virtual ComResult get_Count(std::int32_t& count) = 0;
  // `position` runs from 1 to the count. kNotFound when the contact has gone since.
  virtual ComResult Item(std::int32_t position, std::shared_ptr<IContact>& contact) = 0;
  // A new contact, in the store after its Save.
  virtual ComResult Add(std::shared_ptr<IContact>& contact) = 0;
};

class IFolder {
 public:
  virtual ~IFolder() = default;
  virtual ComResult get_Items(std::shared_ptr<IPOutlookItemCollection>& items) = 0;
};

class IPOutlookApp {
 public:
  virtual ~IPOutlookApp() = default;

  // Everything but Logoff fails before it.
  virtual ComResult Logon(std::uint32_t window) = 0;
  virtual ComResult Logoff() = 0;
  // kOlFolderContacts is the one there is.
  virtual ComResult GetDefaultFolder(int folder, std::shared_ptr<IFolder>& found) = 0;
  // kNotFound, and `item` null, when there is no such item (any more).
  virtual ComResult GetItemFromOidEx(std::int32_t oid, std::uint32_t flags,
                                     std::shared_ptr<IItem>& item) = 0;
};

// The device's Contacts. Any thread; what one thread makes is used by that thread alone and let go
// of before its CoUninitialize. Several threads and programs may be at it at once.
class ContactsStore {
 public:
  virtual ~ContactsStore() = default;

  // Before anything else of a thread; each that succeeds is paired with one CoUninitialize.
  virtual ComResult CoInitializeEx(std::uint32_t flags) = 0;
  virtual void CoUninitialize() = 0;
  // On failure `app` becomes null.
  virtual ComResult CoCreateInstance(std::string_view classId, std::uint32_t context,
                                     std::string_view interfaceId,
                                     std::shared_ptr<IPOutlookApp>& app) = 0;
  // The first contact, in the order they were made, whose File-As is `name` to the letter
  // (`flags`: kFmcfFindFileAs). An empty name matches none. kOk alone means found; kFalse, with
  // `item` null, that there is none. `index` becomes its position.
  virtual ComResult FindMatchingContact(IPOutlookApp& app, std::u16string_view name,
                                        std::uint32_t flags, std::shared_ptr<IItem>& item,
                                        std::int32_t& index) = 0;
};

}  // namespace kelpin::platform
