#include "bench/extended_bench.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/card_time.h"
#include "bench/counting_channel.h"
#include "device/card/sim_service.h"
#include "sim/ril_ext_phonebook.h"
#include "tests/card/ext_card.h"
#include "tests/card/sim_client.h"
#include "tests/support/fake_devices.h"
#include "tests/support/fake_kernel.h"

namespace kelpin::bench {
namespace {

using device::card::MemoryCard;
using device::card::SimClient;
using sim::FieldSlot;
using sim::kAllFieldSlots;

constexpr std::uint32_t kDeletions = 100;

bool IsNumber(FieldSlot slot) {
  return slot == FieldSlot::kSecondNumber || slot == FieldSlot::kThirdNumber;
}

struct Cost {
  std::uint64_t commands = 0;
  std::uint64_t bytes = 0;
};

// The program's side of the card, started anew over it.
class Program {
 public:
  explicit Program(MemoryCard& card)
      : channel_(card), service_(channel_), sim_(service_), book_(service_, kernel_, devices_) {
    static_cast<void>(book_.Open(0));
  }

  // What the main list asks for at start: every entry, then the layout. The used locations.
  std::uint32_t List() {
    std::uint32_t used = 0;
    total_ = 0;
    static_cast<void>(sim_.Status(used, total_));
    std::vector<std::uint8_t> entries;
    static_cast<void>(book_.ReadPhonebookEntriesEx(1, total_, entries));
    extended_ = book_.LoadLayout({false, false, false, true});
    return used;
  }
  std::uint32_t Total() const { return total_; }
  bool InUse(std::uint32_t location) { return sim_.Text(location)[0] != u'!'; }

  // Reads every field of an entry, as an editor that opens. Those that hold something.
  std::uint32_t Open(std::uint32_t location) {
    std::uint32_t filled = 0;
    for (const FieldSlot slot : kAllFieldSlots) {
      std::uint32_t existing = 0;
      if (!Read(slot, location, existing).empty()) ++filled;
    }
    std::vector<std::uint8_t> groups;
    static_cast<void>(book_.ReadGroup(location, groups));
    return filled + (groups.empty() ? 0 : 1);
  }
  // A save of a new entry with every field the card has room for. How many it has.
  std::uint32_t Save(std::uint32_t location) {
    static_cast<void>(sim_.Write(location, u"Name", u"+493012345") == platform::SimResult::kOk);
    return 1 + Fill(location, true);
  }
  std::uint32_t Fill(std::uint32_t location, bool isNew) {
    std::uint32_t written = 0;
    if (!extended_) return 0;
    for (const FieldSlot slot : kAllFieldSlots) {
      std::uint32_t existing = sim::kNoRecord;
      if (!isNew) Read(slot, location, existing);
      if (HasFile(slot, location) && Write(slot, location, u"493012345", existing)) ++written;
    }
    const bool groups = book_.GroupRecordLength(SetOf(location)) > 0;
    if (groups && book_.WriteGroup(location, std::vector<std::uint8_t>{1})) ++written;
    return written;
  }
  void Delete(std::uint32_t location) {
    static_cast<void>(sim_.Delete(location) == platform::SimResult::kOk);
    if (!extended_) return;
    for (const FieldSlot slot : kAllFieldSlots) {
      std::uint32_t existing = sim::kNoRecord;
      Read(slot, location, existing);
      Write(slot, location, u"", existing);
    }
    static_cast<void>(book_.WriteGroup(location, {}));
  }
  // Records in use of the type-2 files.
  std::uint32_t UsedRecords() const {
    std::uint32_t used = 0;
    const sim::PhonebookLayout layout = book_.Layout();
    for (const sim::SetLayout& set : layout.sets) {
      for (const FieldSlot slot : kAllFieldSlots) used += set.Slot(slot).usedCount;
    }
    return used;
  }
  Cost Spent() const { return {channel_.commands, channel_.bytes}; }

 private:
  std::uint32_t SetOf(std::uint32_t location) const {
    std::uint32_t set = 0;
    std::uint32_t record = 0;
    return book_.Place(location, set, record) == 0 ? sim::kPhonebookSets : set;
  }
  bool HasFile(FieldSlot slot, std::uint32_t location) const {
    return book_.SlotInUse(SetOf(location), slot).recordCount > 0;
  }
  std::u16string Read(FieldSlot slot, std::uint32_t location, std::uint32_t& existing) {
    sim::NumberField field;
    if (IsNumber(slot)) {
      static_cast<void>(book_.ReadNumberField(slot, location, existing, field));
    } else {
      static_cast<void>(book_.ReadTextField(slot, location, false, existing, field.number));
    }
    return field.number;
  }
  bool Write(FieldSlot slot, std::uint32_t location, const std::u16string& value,
             std::uint32_t& existing) {
    const std::uint32_t result =
        IsNumber(slot) ? book_.WriteNumberField(slot, location, {value, 0}, false, existing)
                       : book_.WriteTextField(slot, location, value, existing);
    return result == sim::kFieldWritten;
  }

  test::Journal journal_;
  test::FailPlan failures_;
  test::FakeKernel kernel_{journal_, failures_};
  test::FakeDevices devices_{journal_, failures_};
  CountingChannel channel_;
  device::card::SimService service_;
  SimClient sim_;
  sim::RilExtPhonebook book_;
  std::uint32_t total_ = 0;
  bool extended_ = false;
};

void Print(const char* card, const char* what, std::uint64_t bound, const Cost& before,
           const Cost& after) {
  const std::uint64_t commands = after.commands - before.commands;
  std::printf("%-11s %-22s %9llu %6llu %10.1f s %12.1f s\n", card, what,
              static_cast<unsigned long long>(commands), static_cast<unsigned long long>(bound),
              static_cast<double>(after.bytes - before.bytes) * kSecondsPerByte,
              static_cast<double>(commands) * kSecondsPerCommand);
}

void OneCard(const char* name) {
  MemoryCard card(name);
  std::uint32_t location = 0;
  std::uint32_t records = 0;
  {
    Program program(card);
    const Cost start = program.Spent();
    const std::uint32_t used = program.List();
    Print(name, "list and layout", used + program.UsedRecords(), start, program.Spent());

    // The highest free location; where there is none, one that was deleted for it.
    for (std::uint32_t each = program.Total(); each > 0 && location == 0; --each) {
      if (!program.InUse(each)) location = each;
    }
    if (location == 0) program.Delete(location = program.Total());
    const Cost before = program.Spent();
    records = program.Save(location);
    Print(name, "save with all fields", records, before, program.Spent());
  }
  {
    Program program(card);
    program.List();
    const Cost before = program.Spent();
    const std::uint32_t filled = program.Open(location);
    Print(name, "edit open", filled, before, program.Spent());
  }
  std::vector<std::uint32_t> chosen;
  std::uint32_t bound = 0;
  {
    Program program(card);
    program.List();
    for (std::uint32_t each = 1; chosen.size() < kDeletions && each <= program.Total(); ++each) {
      if (program.InUse(each)) {
        program.Fill(each, false);
      } else {
        program.Save(each);
      }
      chosen.push_back(each);
    }
  }
  {
    Program program(card);
    program.List();
    const auto counted = std::make_unique<Program>(card);
    counted->List();
    for (const std::uint32_t each : chosen) bound += 1 + counted->Open(each);
    const Cost before = program.Spent();
    for (const std::uint32_t each : chosen) program.Delete(each);
    Print(name, "delete 100 entries", bound, before, program.Spent());
  }
}

}  // namespace

void ExtendedCosts() {
  std::printf("Card commands of the extended phone book\n\n");
  std::printf("%-11s %-22s %9s %6s %12s %14s\n", "card", "", "commands", "bound", "9600 bit/s",
              "20 ms/command");
  for (const char* name :
       {"sim-250", "usim", "usim-empty", "usim-full", "usim-1000", "usim-local"}) {
    OneCard(name);
  }
  std::printf(
      "\nbound: one command for each record: of a list every entry and every type-2 record in "
      "use;\n"
      "of an edit every field that is filled, were none known yet; of a save and of a deletion "
      "the\n"
      "entry and every filled field. Fields are filled as far as the card has room.\n\n");
}

}  // namespace kelpin::bench
