// What contacts cost: a picker's fill through the connection that the flows use, beside a bare loop
// over the file, and copies to Contacts. Prints tables; judges nothing.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "bench/bare_store.h"
#include "bench/copy_bench.h"
#include "contacts/contacts_connection.h"
#include "device/contacts/sqlite/sqlite_store.h"
#include "tests/device/scratch_folder.h"
#include "ui/list_view.h"

namespace kelpin::bench {
namespace {

using contacts::ContactOid;
using contacts::ContactsConnection;
using contacts::ContactText;
using device::contacts::ContactRecord;
using device::contacts::SqliteStore;
using platform::ContactProperty;

// What a fill reads of each contact.
constexpr ContactProperty kRead[] = {
    ContactProperty::kLastName,
    ContactProperty::kFirstName,
    ContactProperty::kMobileTelephoneNumber,
    ContactProperty::kRadioTelephoneNumber,
    ContactProperty::kHomeTelephoneNumber,
    ContactProperty::kHome2TelephoneNumber,
    ContactProperty::kBusinessTelephoneNumber,
    ContactProperty::kBusiness2TelephoneNumber,
    ContactProperty::kAssistantTelephoneNumber,
    ContactProperty::kCarTelephoneNumber,
    ContactProperty::kPagerNumber,
    ContactProperty::kEmail1Address,
};

ContactRecord Person(int number) {
  const std::string digits = std::to_string(1000000 + number);
  ContactRecord record;
  record[device::contacts::TextIndex(ContactProperty::kFirstName)] = "First " + digits;
  record[device::contacts::TextIndex(ContactProperty::kLastName)] = "Last " + digits;
  record[device::contacts::TextIndex(ContactProperty::kFileAs)] = "Last, First " + digits;
  record[device::contacts::TextIndex(ContactProperty::kMobileTelephoneNumber)] = "+49171" + digits;
  record[device::contacts::TextIndex(ContactProperty::kHomeTelephoneNumber)] = "+4930" + digits;
  record[device::contacts::TextIndex(ContactProperty::kEmail1Address)] = digits + "@mail.example";
  record[device::contacts::kCompanyPhoneText] = "+4989" + digits;
  return record;
}

bool Fill(SqliteStore& store, bool companyPhones, std::size_t& characters) {
  ContactsConnection connection(store);
  if (connection.Open() == 0 || connection.OpenContactsFolder() == 0) return false;
  for (std::int32_t position = 1; position <= connection.count; ++position) {
    if (connection.ContactAt(position) == 0) return false;
    const std::int32_t oid = ContactOid(*connection.contact);
    for (const ContactProperty property : kRead) {
      characters += ContactText(*connection.contact, property).size();
    }
    std::u16string phone;
    if (companyPhones && connection.ReadCompanyPhone(oid, phone) == 0) return false;
    characters += phone.size();
  }
  connection.Close();
  return true;
}

bool Copy(SqliteStore& store, bool overwrite) {
  ContactsConnection connection(store);
  if (connection.Open() == 0) return false;
  for (int i = 0; i < kCopied; ++i) {
    const std::string digits = "Card " + std::to_string(i);
    const std::u16string name(digits.begin(), digits.end());
    const auto result = connection.AddOrOverwriteContact(
        overwrite ? 1 : 0, {.name = name, .number = u"+4917139200", .number2 = u"", .email = u""});
    if (result != (overwrite ? contacts::AddOrOverwriteResult::kOverwritten
                             : contacts::AddOrOverwriteResult::kCreated)) {
      return false;
    }
  }
  connection.Close();
  return true;
}

// Checks every row of a picker's list and counts them from the notices, as its counter does.
bool CheckAll(ui::ListView& list) {
  int checked = 0;
  list.SetSink({[&checked](const ui::Notification& notice) {
                  const std::uint32_t changed = notice.newState ^ notice.oldState;
                  checked += (changed & ui::kItemStateImageMask) != 0 ? 1 : 0;
                },
                [] {}});
  list.SetCheck(-1, true);
  list.SetSink({});
  return checked == list.ItemCount();
}

double MillisecondsToCheckAll(int rows) {
  ui::ListView list;
  list.SetExtendedStyle(ui::kListCheckBoxes);
  for (int row = 0; row < rows; ++row) list.InsertRow(row, {u"Last, First", u"+49171"}, nullptr);
  return Milliseconds([&] { return CheckAll(list); });
}

bool Run() {
  std::printf("Contacts in a file, in ms\n\n");
  std::printf("%8s %10s %8s %12s %9s %9s %9s %9s %9s %10s\n", "contacts", "bare loop", "fill",
              "with company", "check all", "open", "250 bare", "250 new", "again", "file");
  for (const int contacts : {1000, 10000, 100000}) {
    const test::ScratchFolder folder;
    const std::string path = folder / "contacts.db";
    std::string why;
    auto store = SqliteStore::Open(path, why);
    std::vector<ContactRecord> people;
    for (int i = 0; i < contacts; ++i) people.push_back(Person(i));
    if (store == nullptr || !store->AddAll(people, why)) {
      std::fprintf(stderr, "%s\n", why.c_str());
      return false;
    }
    store.reset();
    const double open = Milliseconds([&] {
      store = SqliteStore::Open(path, why);
      return store != nullptr;
    });
    std::size_t characters = 0;
    const double bare = Milliseconds([&] { return BareLoop(path, characters); });
    const double fill = Milliseconds([&] { return Fill(*store, false, characters); });
    const double company = Milliseconds([&] { return Fill(*store, true, characters); });
    const double checkAll = MillisecondsToCheckAll(contacts);
    const double bareCopy = Milliseconds([&] { return BareCopy(path); });
    const double made = Milliseconds([&] { return Copy(*store, false); });
    const double again = Milliseconds([&] { return Copy(*store, true); });
    std::printf("%8d %10.1f %8.1f %12.1f %9.1f %9.1f %9.1f %9.1f %9.1f %7ju kB\n", contacts, bare,
                fill, company, checkAll, open, bareCopy, made, again,
                static_cast<std::uintmax_t>(std::filesystem::file_size(path)) / 1024);
  }
  std::printf(
      "\nfill: what a picker reads of each contact, through the connection; with company: and the\n"
      "company's number of each. check all: of a picker with as many rows. open: until the store "
      "is\n"
      "ready. 250 bare: so many contacts inserted without our code; 250 new, again: entries "
      "copied\n"
      "to contacts, then over them. Each save waits for the disk.\n\n");
  return true;
}

}  // namespace
}  // namespace kelpin::bench

int main() {
  return kelpin::bench::Run() && kelpin::bench::CopyCosts() ? 0 : 1;
}
