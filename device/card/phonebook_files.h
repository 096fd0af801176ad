#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "device/card/bcd.h"
#include "device/card/card_layout.h"
#include "device/card/change_marks.h"
#include "device/card/extension_file.h"
#include "platform/sim_result.h"

namespace kelpin::device::card {

// One entry as the card holds it.
struct PhonebookEntry {
  std::u16string name;
  DialNumber number;  // with the digits that stand in EF_EXT1
};

// The phone book of one card, read. Entries stand at locations 1 to Total(), through all sets.
// Every operation finds the phone book first when it is not known yet. What was read once is
// answered from memory until Forget.
class PhonebookFiles {
 public:
  explicit PhonebookFiles(CardFiles& files) : layout_(files), marks_(files, layout_) {}

  CardLayout& Layout() { return layout_; }
  ChangeMarks& Marks() { return marks_; }
  void Forget();

  // Entries in use and locations. Where the card can search, an entry counts as used until it was
  // read and found to be blank in another way than all FF.
  platform::SimResult Status(std::uint32_t& used, std::uint32_t& total);
  // Digits of the longest number that can be written, bytes of the shortest alpha field.
  platform::SimResult Limits(std::uint32_t& digits, std::uint32_t& text);
  // kEntryEmpty for a free location, kInvalidIndex beyond the last.
  platform::SimResult Read(std::uint32_t location, PhonebookEntry& entry);
  // EF_PBC says that the entry is hidden. False where the card has no such file.
  platform::SimResult IsHidden(std::uint32_t location, bool& hidden);
  // Records of EF_EXT1 that an entry of `set` (null: the first) cannot have for a number: those of
  // its own that are in use by their content and, where sets have several such files, which are
  // counted through, all of the others. Where too few are left for the long numbers of one entry,
  // what nothing refers to is free as well, which costs a command for each entry with such fields.
  // `used` has one bit a record, from bit 1.
  platform::SimResult Extensions(const PhonebookSet* set, std::uint32_t& count, RecordSet& used);
  // Short messages stored and places for them; asked of the card each time.
  platform::SimResult Messages(std::uint32_t& used, std::uint32_t& total);

  // Digits that a number of this set can have.
  static std::uint32_t DigitLimit(const PhonebookSet& set);

 private:
  CardResult LearnUsed(const PhonebookSet& set);
  CardResult LearnShown(RecordFile& control);
  platform::SimResult ExtensionsInUse(const PhonebookSet& set, RecordSet& used);

  CardLayout layout_;
  ChangeMarks marks_;
};

}  // namespace kelpin::device::card
