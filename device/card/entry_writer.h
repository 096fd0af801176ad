#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "device/card/adn_record.h"
#include "device/card/card_layout.h"
#include "device/card/change_marks.h"
#include "device/card/extension_file.h"
#include "platform/sim_result.h"

namespace kelpin::device::card {

// What came of changing an entry.
struct WriteOutcome {
  platform::SimResult result = platform::SimResult::kOk;
  // The update of the entry's own record was sent and nobody knows whether the card carried it out:
  // it did when the record now holds `intended`.
  bool doubtful = false;
  std::vector<std::uint8_t> intended;
  bool changed = true;  // false: the card already held what was wanted
  // The card held something else than was known of it.
  bool othersWrote = false;
};

// What the caller of a change knows of the entry.
struct KnownEntry {
  std::u16string_view name;
  std::u16string_view address;  // both empty: the location is free
};

// Changes entries, with the records of EF_EXT1 that long numbers need. Whatever is cut short, no
// other entry changes: extension records are written before the entry that points at them, into
// records that nothing points at, and given back after it has let go of them. Call within a
// transaction, after CardLayout::Discover.
class EntryWriter {
 public:
  EntryWriter(CardLayout& layout, ChangeMarks& marks) : layout_(layout), marks_(marks) {}

  // From here on a change is kEntryChanged, with nothing sent, where the location does not hold
  // `known`.
  void Expect(const KnownEntry& known) { known_ = known; }
  // Writes the whole location. `international` adds to what a '+' in the address says. What the
  // card holds already (a name in another form, a longer chain, a number's type that its address
  // does not tell) is left as it stands.
  WriteOutcome Write(std::uint32_t location, std::u16string_view name, std::u16string_view address,
                     bool international);
  // A free location is a success without a change.
  WriteOutcome Delete(std::uint32_t location);

 private:
  // What the record holds before it is changed.
  struct Before {
    EntryPlace place;
    std::vector<std::uint8_t> record;
    DialNumber number;  // with the digits in EF_EXT1
    RecordSet chain;
    bool othersWrote = false;
    AdnView View() const { return AdnView(record); }
  };

  // kEntryChanged when it is not what is expected.
  platform::SimResult ReadBefore(std::uint32_t location, Before& before);
  bool IsExpected(const Before& before) const;
  // What must be true on the card before the entry changes. An error: the card was lost.
  TransportError Announce(const Before& before, EntryChange change);
  // A new entry has nothing of what a former one left in the files beside it.
  CardResult DropLeftLinks(const EntryPlace& place);
  WriteOutcome Put(const Before& before, const std::vector<std::uint8_t>& record);
  // Records for a chain of `count`: free ones, then ones that nothing points at, then the entry's
  // own.
  platform::SimResult Allocate(const Before& before, std::size_t count,
                               std::vector<std::uint8_t>& records);
  // Gives back the records of `chain` that no entry points at. What fails is found again by
  // Allocate.
  void Release(const Before& before, const RecordSet& chain);

  CardLayout& layout_;
  ChangeMarks& marks_;
  std::optional<KnownEntry> known_;
};

}  // namespace kelpin::device::card
