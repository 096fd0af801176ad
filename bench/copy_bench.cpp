#include "bench/copy_bench.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "bench/bare_store.h"
#include "bench/card_time.h"
#include "bench/counting_channel.h"
#include "contacts/contact_picker_fill.h"
#include "device/contacts/sqlite/sqlite_store.h"
#include "tests/card/ext_card.h"
#include "tests/device/scratch_folder.h"
#include "tests/flow/card_program.h"
#include "ui/list_view.h"

namespace kelpin::bench {
namespace {

using contacts::CardProgram;
using device::card::MemoryCard;
using device::contacts::ContactRecord;
using device::contacts::SqliteStore;
using device::contacts::TextIndex;
using platform::ContactProperty;
using sim::FieldSlot;

constexpr int kSaveCommand = 317;
constexpr int kCopyCommand = 318;
constexpr int kEmailEvery = 5;  // contacts: the card has places for 60 e-mail addresses

struct Person {
  std::u16string name;
  std::u16string number;
  std::u16string number2;
  std::u16string email;
};

std::u16string Wide(const std::string& text) {
  return {text.begin(), text.end()};
}

Person PersonAt(int number) {
  const std::string digits = std::to_string(1000 + number);
  return {Wide("Person " + digits), Wide("+4917139" + digits), Wide("030231" + digits),
          number % kEmailEvery == 0 ? Wide(digits + "@mail.example") : u""};
}

ContactRecord RecordOf(const Person& person) {
  const auto narrow = [](const std::u16string& text) {
    return std::string(text.begin(), text.end());
  };
  ContactRecord record;
  record[TextIndex(ContactProperty::kLastName)] = narrow(person.name);
  record[TextIndex(ContactProperty::kFileAs)] = narrow(person.name);
  record[TextIndex(ContactProperty::kMobileTelephoneNumber)] = narrow(person.number);
  record[TextIndex(ContactProperty::kHomeTelephoneNumber)] = narrow(person.number2);
  record[TextIndex(ContactProperty::kEmail1Address)] = narrow(person.email);
  return record;
}

std::unique_ptr<SqliteStore> OpenStore(const std::string& path, int contacts) {
  std::string why;
  auto store = SqliteStore::Open(path, why);
  std::vector<ContactRecord> people;
  for (int number = 0; number < contacts; ++number) people.push_back(RecordOf(PersonAt(number)));
  if (store == nullptr || !store->AddAll(people, why)) {
    std::fprintf(stderr, "%s\n", why.c_str());
    return nullptr;
  }
  return store;
}

struct Cost {
  double ms = -1;
  std::uint64_t commands = 0;
  std::uint64_t bytes = 0;
};

// What the work costs of time and of the card.
Cost Measure(const CountingChannel& channel, const std::function<bool()>& work) {
  const std::uint64_t commands = channel.commands;
  const std::uint64_t bytes = channel.bytes;
  Cost cost;
  cost.ms = Milliseconds(work);
  cost.commands = channel.commands - commands;
  cost.bytes = channel.bytes - bytes;
  return cost;
}

// The copy behind the picker's left key, with all that the store has.
Cost CopyToCard(MemoryCard& card, SqliteStore& store, bool fields) {
  CountingChannel channel(card);
  CardProgram program(channel, store);
  program.SetSwitch(u"CToSim_Type", fields ? 2 : 0);
  program.Open();
  Cost cost;
  program.screen.ScriptDialog(205, [&](ui::Dialog& picker) {
    program.RunThreads();
    cost = Measure(channel, [&] {
      picker.PressSoftKey(0);
      program.RunThreads();
      return picker.Ended();
    });
  });
  program.state.dialog->Command(kCopyCommand);
  program.screen.RunPending();
  if (program.List().ItemCount() != kCopied) cost.ms = -1;
  return cost;
}

Cost WriteToCard(MemoryCard& card, SqliteStore& store, bool fields) {
  CountingChannel channel(card);
  CardProgram program(channel, store);
  program.Open();
  sim::RilExtPhonebook& book = program.state.extPhonebook;
  return Measure(channel, [&] {
    bool good = true;
    for (int number = 0; number < kCopied && good; ++number) {
      const Person person = PersonAt(number);
      const auto index = static_cast<std::uint32_t>(number) + 1;
      good = Succeeded(
          program.state.simPhonebook.WriteEntry(index, person.name.c_str(), person.number.c_str()));
      std::uint32_t existing = sim::kNoRecord;
      if (good && fields) {
        good = book.WriteNumberField(FieldSlot::kSecondNumber, index, {person.number2, 0}, false,
                                     existing) == sim::kFieldWritten;
      }
      existing = sim::kNoRecord;
      if (good && fields && !person.email.empty()) {
        good = book.WriteTextField(FieldSlot::kEmail, index, person.email, existing) ==
               sim::kFieldWritten;
      }
    }
    return good;
  });
}

// Save to Contacts with every row selected.
Cost CopyToContacts(MemoryCard& card, SqliteStore& store) {
  CountingChannel channel(card);
  CardProgram program(channel, store);
  program.Open();
  program.List().SetItemState(-1, ui::kItemSelected, ui::kItemSelected);
  const Cost cost = Measure(channel, [&] {
    program.state.dialog->Command(kSaveCommand);
    program.RunThreads();
    return true;
  });
  contacts::ContactsConnection connection(store);
  const bool all =
      connection.Open() != 0 && connection.OpenContactsFolder() != 0 && connection.count == kCopied;
  return all ? cost : Cost{-1, cost.commands, cost.bytes};
}

// The entries and their fields read through the door to the card, and as many contacts inserted.
Cost ReadAndInsert(MemoryCard& card, SqliteStore& store, const std::string& path) {
  CountingChannel channel(card);
  CardProgram program(channel, store);
  program.Open();
  sim::RilExtPhonebook& book = program.state.extPhonebook;
  return Measure(channel, [&] {
    for (std::uint32_t index = 1; index <= kCopied; ++index) {
      std::u16string name;
      std::u16string number;
      if (!Succeeded(program.state.simPhonebook.ReadEntry(index, &name, &number))) return false;
      std::uint32_t existing = sim::kNoRecord;
      sim::NumberField field;
      static_cast<void>(book.ReadNumberField(FieldSlot::kSecondNumber, index, existing, field));
      static_cast<void>(book.ReadTextField(FieldSlot::kEmail, index, false, existing, name));
    }
    return BareCopy(path);
  });
}

void Print(const char* what, const Cost& whole, const Cost& bare) {
  std::printf("%-26s %8.1f %8.1f %9ju %6ju %10.1f s %12.1f s\n", what, whole.ms, bare.ms,
              static_cast<std::uintmax_t>(whole.commands),
              static_cast<std::uintmax_t>(bare.commands),
              static_cast<double>(whole.bytes) * kSecondsPerByte,
              static_cast<double>(whole.commands) * kSecondsPerCommand);
}

bool CopyBothWays(bool fields) {
  const test::ScratchFolder folder;
  const auto full = OpenStore(folder / "full.db", kCopied);
  const auto empty = OpenStore(folder / "empty.db", 0);
  const std::string barePath = folder / "bare.db";
  const auto bare = OpenStore(barePath, 0);
  if (full == nullptr || empty == nullptr || bare == nullptr) return false;
  MemoryCard card("usim-empty");
  MemoryCard bareCard("usim-empty");
  const Cost copied = CopyToCard(card, *full, fields);
  const Cost written = WriteToCard(bareCard, *full, fields);
  Print(fields ? "to the card, with fields" : "to the card", copied, written);
  const Cost saved = CopyToContacts(card, *empty);
  const Cost inserted = ReadAndInsert(bareCard, *bare, barePath);
  Print(fields ? "to Contacts, with fields" : "to Contacts", saved, inserted);
  return copied.ms >= 0 && written.ms >= 0 && saved.ms >= 0 && inserted.ms >= 0;
}

// What the picker's own thread does, rows included.
double MillisecondsToFill(CardProgram& program, SqliteStore& store, bool fields, int contacts) {
  program.state.settings.CToSim_Type = fields ? 2 : 0;
  program.state.settings.Enable_Sort = fields ? 1 : 0;
  const contacts::PickRules rules(program.state);
  const std::atomic<bool> stop = false;
  ui::ListView list;
  list.SetExtendedStyle(ui::kListCheckBoxes);
  return Milliseconds([&] {
    contacts::FillPicker(store, rules, stop, list);
    return list.ItemCount() == contacts;
  });
}

bool FillPickers() {
  std::printf("The picker's fill, rows and check boxes included, in ms\n\n");
  std::printf("%8s %10s %12s %20s\n", "contacts", "bare loop", "each number",
              "each contact, sorted");
  MemoryCard card("usim-empty");
  for (const int contacts : {1000, 10000, 100000}) {
    const test::ScratchFolder folder;
    const std::string path = folder / "contacts.db";
    const auto store = OpenStore(path, contacts);
    if (store == nullptr) return false;
    CardProgram program(card, *store);
    program.Open();
    std::size_t characters = 0;
    const double bare = Milliseconds([&] { return BareLoop(path, characters); });
    const double numbers = MillisecondsToFill(program, *store, false, contacts);
    const double whole = MillisecondsToFill(program, *store, true, contacts);
    std::printf("%8d %10.1f %12.1f %20.1f\n", contacts, bare, numbers, whole);
  }
  std::printf("\nbare loop: every text of every contact in the file, without our code.\n\n");
  return true;
}

}  // namespace

bool CopyCosts() {
  if (!FillPickers()) return false;
  std::printf("250 copied between a card in memory and Contacts in a file\n\n");
  std::printf("%-26s %8s %8s %9s %6s %12s %14s\n", "", "ms", "bare ms", "commands", "bare",
              "9600 bit/s", "20 ms/command");
  const bool good = CopyBothWays(false) && CopyBothWays(true);
  std::printf(
      "\nwith fields: a second number each, an e-mail address every fifth. bare: the same entries\n"
      "written to the card, or read and inserted into the file, in a loop. Each contact waits for\n"
      "the disk.\n\n");
  return good;
}

}  // namespace kelpin::bench
