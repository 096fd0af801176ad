#pragma once

#include <cstdint>
#include <set>
#include <span>
#include <utility>

#include "device/card/card_files.h"
#include "device/card/card_layout.h"

namespace kelpin::device::card {

// What becomes of an entry.
enum class EntryChange { kNew, kEdit, kDelete };

// Keeps the marks by which another telephone notices what changed in the phone book while the card
// was here (TS 31.102 4.4.2.12): EF_CC counts the changes, EF_UID tells entries apart, EF_PUID
// holds the last number given, EF_PSC says that both began anew; and in EF_PBC (4.4.2.5) the mark
// of a change that nobody has counted yet. A phone book without EF_UID has no such marks, and no
// command is sent for them.
//
// The marks go ahead of the data: cut short, another telephone looks once more than it must, and
// never misses a change. What the card refuses here does not stop the change itself. Nothing is
// sent twice: a counter is read before it is written. Call within a transaction.
class ChangeMarks {
 public:
  ChangeMarks(CardFiles& files, CardLayout& layout) : files_(files), layout_(layout) {}

  // Before the first write of a change to an entry. An error: the card was lost meanwhile, and the
  // change must not be sent.
  TransportError BeforeEntry(const EntryPlace& place, EntryChange change);
  // Before `data` goes to a record of a file beside the entries. Writes to different records for
  // the same entry, one after the other, are one change.
  TransportError BeforeRecord(RecordFile& file, std::uint8_t record,
                              std::span<const std::uint8_t> data);
  // Other programs or telephones may have seen the card since.
  void Forget();

 private:
  using Writes = std::set<std::pair<const RecordFile*, std::uint8_t>>;

  // A file of the phone book by what its set's reference record calls it.
  struct Role {
    const PhonebookSet* set = nullptr;
    PbrTag tag = PbrTag::kAdn;
    PbrGroup group = PbrGroup::kType3;
  };

  // What BeforeRecord does when the data is part of an entry.
  void MarkRecord(RecordFile& file, std::uint8_t record, std::span<const std::uint8_t> data);
  // Remembers that the card was lost.
  CardResult Noted(CardResult result);

  static const PbrFile* UniqueIds(const PhonebookSet& set);
  bool FindRole(const RecordFile& file, Role& role) const;
  // The location whose data a record is, as far as it is known without asking the card; 0: not.
  std::uint32_t Holder(RecordFile& file, std::uint8_t record);
  std::uint32_t HolderOfLinked(const RecordFile& file, std::uint8_t record);
  std::uint32_t HolderOfExtension(const RecordFile& file, std::uint8_t record);

  // True when this write begins another change.
  bool Count(const PhonebookSet& set, std::uint32_t location, RecordFile& file, std::uint8_t record,
             bool mayRepeat);
  CardResult Advance(const PhonebookSet& set);
  // An entry without a number, or a new one, gets the next.
  void Number(const EntryPlace& place, bool isNew);
  // The counters begin anew, under a new EF_PSC. The change counter comes last: while it is not
  // written the next change does all of it once more.
  CardResult BeginAnew(const PhonebookSet& set);
  CardResult NumberAll(const PhonebookSet& set, std::uint32_t& last);
  void ClearControl(const EntryPlace& place, bool isNew);

  CardResult ReadCounter(const PhonebookSet& set, std::uint16_t id, std::size_t length,
                         std::uint32_t& value);
  CardResult WriteCounter(const PhonebookSet& set, std::uint16_t id, std::size_t length,
                          std::uint32_t value);

  CardFiles& files_;
  CardLayout& layout_;
  TransportError lost_ = TransportError::kNone;
  bool counted_ = false;        // the change that is under way
  bool missing_ = false;        // the card has no counter
  std::uint32_t location_ = 0;  // that changes; 0: not known
  Writes written_;              // for it
  Writes unclaimed_;            // to records that nothing refers to yet
};

}  // namespace kelpin::device::card
