#include "device/contacts/eds/eds_book.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

#include "device/contacts/eds/card_fields.h"
#include "platform/wording.h"

namespace kelpin::device::contacts {

using platform::ComResult;
using platform::Say;
using platform::Words;

namespace {

// As long as it takes; every other value waits that long in a program without a running main loop.
constexpr guint32 kNoWaitForConnection = std::numeric_limits<guint32>::max();
constexpr int kOwnPatience = -1;      // what the bus has for a call
constexpr int kConflictPatience = 5;  // saves in a row that others may be faster with

constexpr std::string_view kCannotRead =
    Words("the address book %s: its contacts cannot be read: %s");
constexpr std::string_view kCannotChange =
    Words("the address book %s: its contacts cannot be changed: %s");

bool IsGone(const ErrorHolder& error) {
  return g_error_matches(error.taken, E_BOOK_CLIENT_ERROR, E_BOOK_CLIENT_ERROR_CONTACT_NOT_FOUND);
}

// Why a call failed, for the user, and what to do.
std::string Reason(const ErrorHolder& error) {
  const auto is = [&error](EClientError code) {
    return g_error_matches(error.taken, E_CLIENT_ERROR, code) != FALSE;
  };
  if (is(E_CLIENT_ERROR_PERMISSION_DENIED)) {
    // A book of an account that was not reached yet looks like one that may only be read.
    return Say(
        "it can only be read. If it belongs to an online account, open the desktop's contacts "
        "program, see that the network is there and the account has its password, and try again");
  }
  if (is(E_CLIENT_ERROR_AUTHENTICATION_REQUIRED) || is(E_CLIENT_ERROR_AUTHENTICATION_FAILED)) {
    return Say("it needs its password. Give it in the desktop's contacts program and try again");
  }
  if (is(E_CLIENT_ERROR_REPOSITORY_OFFLINE) || is(E_CLIENT_ERROR_OFFLINE_UNAVAILABLE)) {
    return Say("it is offline. See that the network is there and try again");
  }
  if (error.taken != nullptr) {
    g_dbus_error_strip_remote_error(error.taken);
  }
  std::string message = error.Message();
  if (message.ends_with('.')) {
    message.pop_back();
  }
  return Say("%s. See in the desktop's contacts program that the address book works", {message});
}

bool IsConflict(const ErrorHolder& error) {
  return g_error_matches(error.taken, E_CLIENT_ERROR, E_CLIENT_ERROR_OUT_OF_SYNC);
}

// The address books there are, for a message.
std::string BookList(ESourceRegistry* registry) {
  std::string list;
  GList* const sources = e_source_registry_list_enabled(registry, E_SOURCE_EXTENSION_ADDRESS_BOOK);
  for (ESource* source : Each<ESource>(sources)) {
    list += (list.empty() ? "" : ", ") + std::string(e_source_get_uid(source)) + " (" +
            e_source_get_display_name(source) + ")";
  }
  g_list_free_full(sources, g_object_unref);
  return list;
}

ObjectPointer<ESource> FindBook(ESourceRegistry* registry, const std::string& book) {
  if (book.empty()) {
    return ObjectPointer<ESource>(e_source_registry_ref_default_address_book(registry));
  }
  ObjectPointer<ESource> found;
  GList* const sources = e_source_registry_list_enabled(registry, E_SOURCE_EXTENSION_ADDRESS_BOOK);
  // A uid before a name.
  for (const bool byUid : {true, false}) {
    for (ESource* source : Each<ESource>(sources)) {
      const char* const text = byUid ? e_source_get_uid(source) : e_source_get_display_name(source);
      if (found == nullptr && book == text) {
        found.reset(static_cast<ESource*>(g_object_ref(source)));
      }
    }
  }
  g_list_free_full(sources, g_object_unref);
  return found;
}

constexpr const char* kSourceInterface = "org.gnome.evolution.dataserver.Source";

// A server goes on taking contacts for a book that was taken away, and they go with the book.
bool IsStillThere(ESource* source) {
  const ObjectPointer<GDBusObject> object(e_source_ref_dbus_object(source));
  if (object == nullptr) {
    return false;
  }
  const ObjectPointer<GDBusInterface> proxy(
      g_dbus_object_get_interface(object.get(), kSourceInterface));
  if (proxy == nullptr) {
    return false;
  }
  GVariant* const reply = g_dbus_proxy_call_sync(
      reinterpret_cast<GDBusProxy*>(proxy.get()), "org.freedesktop.DBus.Properties.Get",
      g_variant_new("(ss)", kSourceInterface, "UID"), G_DBUS_CALL_FLAGS_NONE, kOwnPatience, nullptr,
      nullptr);
  if (reply == nullptr) {
    return false;
  }
  GVariant* value = nullptr;
  g_variant_get(reply, "(v)", &value);
  const bool same =
      g_variant_is_of_type(value, G_VARIANT_TYPE_STRING) != FALSE &&
      std::string_view(g_variant_get_string(value, nullptr)) == e_source_get_uid(source);
  g_variant_unref(value);
  g_variant_unref(reply);
  return same;
}

// The server compares without letter case and accents, and loses some blanks.
bool MayBeMissed(std::string_view text) {
  bool blankBefore = true;
  for (const char letter : text) {
    const auto byte = static_cast<unsigned char>(letter);
    const bool blank = byte == ' ';
    if ((blank && blankBefore) || byte < 0x20 || byte == 0x7F) {
      return true;
    }
    blankBefore = blank;
  }
  return blankBefore;
}

std::string QueryText(EBookQuery* query) {
  const TextPointer text(e_book_query_to_string(query));
  e_book_query_unref(query);
  return text.get();
}

// What may have the File-As; names stand in for one that is missing.
std::string FileAsQuery(const std::string& fileAs) {
  return QueryText(e_book_query_orv(
      e_book_query_field_test(E_CONTACT_FILE_AS, E_BOOK_QUERY_IS, fileAs.c_str()),
      e_book_query_field_test(E_CONTACT_FULL_NAME, E_BOOK_QUERY_IS, fileAs.c_str()), nullptr));
}

}  // namespace

std::shared_ptr<EdsBook> EdsBook::Open(const std::string& book, std::shared_ptr<EdsShared> shared,
                                       std::string& why, TroubleListener trouble) {
  ErrorHolder error;
  const ObjectPointer<ESourceRegistry> registry(e_source_registry_new_sync(nullptr, &error.taken));
  if (registry == nullptr) {
    why =
        Say("the Evolution Data Server cannot be reached: %s. Install the package "
            "evolution-data-server, and start Kelpin in a desktop session",
            {error.Message()});
    return nullptr;
  }
  const ObjectPointer<ESource> source = FindBook(registry.get(), book);
  if (source == nullptr) {
    why = Say("no address book \"%s\"; there are: %s. Write one of them behind --contacts eds:",
              {book, BookList(registry.get())});
    return nullptr;
  }
  ObjectPointer<EBookClient> client(reinterpret_cast<EBookClient*>(
      e_book_client_connect_sync(source.get(), kNoWaitForConnection, nullptr, &error.taken)));
  if (client == nullptr) {
    why = Say("the address book %s cannot be opened: %s",
              {e_source_get_display_name(source.get()), Reason(error)});
    return nullptr;
  }
  return std::make_shared<EdsBook>(std::move(client), std::move(shared),
                                   e_source_get_display_name(source.get()), std::move(trouble));
}

ComResult EdsBook::Fail(std::string_view english, const ErrorHolder& error) {
  if (IsGone(error)) {
    return ComResult::kNotFound;
  }
  trouble_.Add(Say(english, {name_, Reason(error)}));
  return ComResult::kFail;
}

ComResult EdsBook::EndSave() {
  if (IsStillThere(e_client_get_source(E_CLIENT(client_.get())))) {
    return ComResult::kOk;
  }
  trouble_.Add(
      Say("the address book %s was taken away. Choose another one: start Kelpin with --contacts "
          "eds:BOOK",
          {name_}));
  return ComResult::kFail;
}

ComResult EdsBook::Numbers(std::vector<std::int32_t>& numbers) {
  ErrorHolder error;
  GSList* uids = nullptr;
  const std::uint32_t membership = shared_->membership;
  if (!e_book_client_get_contacts_uids_sync(client_.get(), "", &uids, nullptr, &error.taken)) {
    return Fail(kCannotRead, error);
  }
  numbers.clear();
  for (const gchar* uid : Each<gchar>(uids)) {
    numbers.push_back(shared_->numbers.NumberOf(uid));
  }
  g_slist_free_full(uids, g_free);
  if (numbers.empty() && e_client_is_readonly(E_CLIENT(client_.get())) != FALSE) {
    trouble_.Add(Say(
        "the address book %s shows no contacts and can only be read. If it belongs to an online "
        "account, open the desktop's contacts program, see that the network is there and the "
        "account has its password, and try again",
        {name_}));
  }
  std::sort(numbers.begin(), numbers.end());
  known_ = numbers;
  knownAt_ = membership;
  return ComResult::kOk;
}

ComResult EdsBook::Fetch(std::int32_t number, ObjectPointer<EContact>& contact) {
  const std::string uid = shared_->numbers.UidOf(number);
  if (uid.empty()) {
    return ComResult::kNotFound;
  }
  ErrorHolder error;
  EContact* found = nullptr;
  if (!e_book_client_get_contact_sync(client_.get(), uid.c_str(), &found, nullptr, &error.taken)) {
    return Fail(kCannotRead, error);
  }
  contact.reset(found);
  return ComResult::kOk;
}

bool EdsBook::Query(const std::string& query, std::vector<ObjectPointer<EContact>>& contacts) {
  ErrorHolder error;
  GSList* found = nullptr;
  if (!e_book_client_get_contacts_sync(client_.get(), query.c_str(), &found, nullptr,
                                       &error.taken)) {
    static_cast<void>(Fail(kCannotRead, error));
    return false;
  }
  for (EContact* contact : Each<EContact>(found)) {
    contacts.emplace_back(contact);
  }
  g_slist_free(found);
  return true;
}

ComResult EdsBook::Read(std::span<const std::int32_t> numbers,
                        std::vector<std::optional<ContactRecord>>& records) {
  records.assign(numbers.size(), std::nullopt);
  if (numbers.size() == 1) {
    ObjectPointer<EContact> contact;
    const ComResult result = Fetch(numbers.front(), contact);
    if (result == ComResult::kOk) {
      records.front() = ReadCard(E_VCARD(contact.get()));
    }
    return result == ComResult::kNotFound ? ComResult::kOk : result;
  }
  std::vector<EBookQuery*> wanted;
  for (const std::int32_t number : numbers) {
    wanted.push_back(e_book_query_field_test(E_CONTACT_UID, E_BOOK_QUERY_IS,
                                             shared_->numbers.UidOf(number).c_str()));
  }
  std::vector<ObjectPointer<EContact>> contacts;
  if (wanted.empty() ||
      !Query(QueryText(e_book_query_or(static_cast<int>(wanted.size()), wanted.data(), TRUE)),
             contacts)) {
    return wanted.empty() ? ComResult::kOk : ComResult::kFail;
  }
  for (const ObjectPointer<EContact>& contact : contacts) {
    const std::string uid = UidOf(contact.get());
    if (uid.empty()) {
      continue;
    }
    const std::int32_t number = shared_->numbers.NumberOf(uid);
    const auto place = std::lower_bound(numbers.begin(), numbers.end(), number);
    if (place != numbers.end() && *place == number) {
      records[static_cast<std::size_t>(place - numbers.begin())] = ReadCard(E_VCARD(contact.get()));
    }
  }
  return ComResult::kOk;
}

ComResult EdsBook::Exists(std::int32_t number) {
  ObjectPointer<EContact> contact;
  return Fetch(number, contact);
}

ComResult EdsBook::CompanyPhone(std::int32_t number, std::string& phone) {
  ObjectPointer<EContact> contact;
  const ComResult result = Fetch(number, contact);
  if (Succeeded(result)) {
    phone = ReadCard(E_VCARD(contact.get()))[kCompanyPhoneText];
  }
  return result;
}

// The lowest number of those whose File-As it is; 0 when there is none.
std::int32_t EdsBook::LowestMatch(const std::vector<ObjectPointer<EContact>>& contacts,
                                  std::string_view fileAs) {
  std::int32_t lowest = 0;
  for (const ObjectPointer<EContact>& contact : contacts) {
    const std::string uid = UidOf(contact.get());
    if (uid.empty() ||
        ReadCard(E_VCARD(contact.get()))[TextIndex(platform::ContactProperty::kFileAs)] != fileAs) {
      continue;
    }
    const std::int32_t number = shared_->numbers.NumberOf(uid);
    lowest = lowest == 0 ? number : std::min(lowest, number);
  }
  return lowest;
}

ComResult EdsBook::PositionOf(std::int32_t number, std::int32_t& position) {
  if (knownAt_ != shared_->membership.load() ||
      !std::binary_search(known_.begin(), known_.end(), number)) {
    std::vector<std::int32_t> numbers;
    const ComResult result = Numbers(numbers);
    if (!Succeeded(result)) {
      return result;
    }
  }
  const auto end = std::upper_bound(known_.begin(), known_.end(), number);
  position = static_cast<std::int32_t>(end - known_.begin());
  return ComResult::kOk;
}

ComResult EdsBook::Find(std::string_view fileAs, std::int32_t& number, std::int32_t& position) {
  std::vector<ObjectPointer<EContact>> contacts;
  const std::string query = MayBeMissed(fileAs) ? "" : FileAsQuery(std::string(fileAs));
  if (!Query(query, contacts)) {
    return ComResult::kFail;
  }
  const std::int32_t found = LowestMatch(contacts, fileAs);
  if (found == 0) {
    return ComResult::kFalse;
  }
  const ComResult result = PositionOf(found, position);
  if (Succeeded(result)) {
    number = found;
  }
  return result;
}

ComResult EdsBook::Add(const ContactRecord& record, std::int32_t& number) {
  const ObjectPointer<EContact> contact(e_contact_new());
  ContactTextSet all;
  WriteCard(E_VCARD(contact.get()), record, all.set());
  ErrorHolder error;
  gchar* uid = nullptr;
  if (!e_book_client_add_contact_sync(client_.get(), contact.get(), E_BOOK_OPERATION_FLAG_NONE,
                                      &uid, nullptr, &error.taken)) {
    return Fail(kCannotChange, error);
  }
  const TextPointer added(uid);
  number = shared_->numbers.NumberOf(added.get());
  ++shared_->membership;
  ++shared_->changes;
  return EndSave();
}

ComResult EdsBook::Change(std::int32_t number, const ContactRecord& record,
                          const ContactTextSet& changed) {
  for (int attempt = 1;; ++attempt) {
    ObjectPointer<EContact> contact;
    const ComResult result = Fetch(number, contact);
    if (!Succeeded(result) || changed.none()) {
      return result;
    }
    WriteCard(E_VCARD(contact.get()), record, changed);
    ErrorHolder error;
    if (e_book_client_modify_contact_sync(client_.get(), contact.get(),
                                          E_BOOK_OPERATION_FLAG_CONFLICT_FAIL, nullptr,
                                          &error.taken)) {
      ++shared_->changes;
      return EndSave();
    }
    if (!IsConflict(error) || attempt == kConflictPatience) {
      return Fail(kCannotChange, error);
    }
  }
}

ComResult EdsBook::Delete(std::int32_t number) {
  // The server is content when there is nothing to delete.
  const ComResult result = Exists(number);
  if (!Succeeded(result)) {
    return result;
  }
  ErrorHolder error;
  if (!e_book_client_remove_contact_by_uid_sync(
          client_.get(), shared_->numbers.UidOf(number).c_str(), E_BOOK_OPERATION_FLAG_NONE,
          nullptr, &error.taken)) {
    return Fail(kCannotChange, error);
  }
  ++shared_->membership;
  ++shared_->changes;
  return ComResult::kOk;
}

}  // namespace kelpin::device::contacts
