#include "sim/ril_ext_phonebook.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "sim/ext_records.h"

namespace kelpin::sim {
namespace {

constexpr std::uint32_t kDefaultAdnRecords = 250;
constexpr std::uint8_t kPadding = 0xFF;

// Bytes of the answer to a get response (TS 51.011 9.2.1).
constexpr std::size_t kFileSizeByte = 2;  // two bytes, the higher one first
constexpr std::size_t kRecordLengthByte = 14;

bool IsWanted(FieldSlot slot, const FieldSwitches& switches) {
  switch (slot) {
    case FieldSlot::kEmail:
      return !switches.disableEmail;
    case FieldSlot::kNickname:
      return switches.enableNickname;
    case FieldSlot::kSecondNumber:
      return !switches.disableSecondNumber;
    case FieldSlot::kThirdNumber:
      return !switches.disableThirdNumber;
  }
  return false;
}

void AddCapacity(FieldSlot slot, std::uint32_t records, PhonebookLayout& layout) {
  if (slot == FieldSlot::kEmail) layout.emailCapacity += records;
  if (slot == FieldSlot::kSecondNumber) layout.secondNumberCapacity += records;
}

// The set whose file and map a set uses for a slot.
std::uint32_t OwnerOf(std::uint32_t set, FieldSlot slot, const PhonebookLayout& layout) {
  return layout.sets[set].Slot(slot).shared != 0 ? 0 : set;
}

std::uint32_t MappedRecords(const SlotLayout& file) {
  return std::min(file.recordCount, kMappedRecords);
}

// The card's word that it has no such file or record, in the classes of TS 51.011 9.4 and of
// TS 102 221 10.2.1.5. Anything else may be there and only not be readable now.
bool SaysThereIsNone(std::span<const std::uint8_t> refusal) {
  platform::RilSimResponse header;
  if (refusal.size() < sizeof(header)) return false;
  std::memcpy(&header, refusal.data(), sizeof(header));
  constexpr std::array<std::uint32_t, 5> kNone = {0x94, 0x6A, 0x6B, 0x6D, 0x6E};
  return std::find(kNone.begin(), kNone.end(), header.statusWord1) != kNone.end();
}

}  // namespace

// Load -------------------------------------------------------------------------------------------

bool RilExtPhonebook::LoadLayout(const FieldSwitches& switches) {
  const MutexLock loading(loading_);
  {
    const MutexLock lock(layoutLock_);
    reading_ = true;
    marks_.clear();
  }
  PhonebookLayout layout;
  layout.toldWhole = true;
  if (!ReadReferences(layout)) {
    PhonebookLayout none;
    none.toldWhole = layout.toldWhole;
    Publish(std::move(none));
    Close();
    return false;
  }
  MeasureNames(layout);
  MeasureFiles(switches, layout);
  layout.loaded = true;
  Publish(std::move(layout));
  return true;
}

void RilExtPhonebook::Publish(PhonebookLayout layout) {
  const MutexLock lock(layoutLock_);
  // A record may have been taken or freed after it was read.
  for (const Mark& mark : marks_) Apply(mark, layout);
  layout_ = std::move(layout);
  reading_ = false;
  marks_.clear();
}

bool RilExtPhonebook::ReadReferences(PhonebookLayout& layout) {
  for (std::uint32_t set = 0; set < kPhonebookSets; ++set) {
    Record response;
    Record refusal;
    const bool read = ReadExtRecord(kReferenceFile, set + 1, response, &refusal);
    if (!read && !SaysThereIsNone(refusal)) layout.toldWhole = false;
    if (!read && set == 0) return false;
    if (read) ReadReference(RecordBytes(response), set, layout);
  }
  return true;
}

void RilExtPhonebook::MeasureNames(PhonebookLayout& layout) {
  std::uint32_t entryLength = 0;
  bool namesTold = true;  // without them the entries' fields are no less
  Measure(kEntryFile, entryLength, layout.adnRecords, layout.toldWhole);
  if (layout.adnRecords == 0) layout.adnRecords = kDefaultAdnRecords;
  Measure(kGroupNameFile, layout.groupNameLength, layout.groupNameCount, namesTold);
  Measure(kNumberNameFile, layout.numberNameLength, layout.numberNameCount, namesTold);
}

void RilExtPhonebook::MeasureFiles(const FieldSwitches& switches, PhonebookLayout& layout) {
  // The files of one class, in the order of the reference records.
  const auto measure = [&](std::uint32_t fileClass, TypeList SetLayout::*types) {
    for (std::uint32_t set = 0; set < kPhonebookSets; ++set) {
      SetLayout& files = layout.sets[set];
      const TypeList& list = files.*types;
      for (std::uint32_t place = 0; place < list.count; ++place) {
        for (const FieldSlot slot : kAllFieldSlots) {
          SlotLayout& file = files.Slot(slot);
          if (list.Position(TypeOf(slot)) != place || file.fileClass != fileClass ||
              file.shared != 0 || !IsWanted(slot, switches)) {
            continue;
          }
          Measure(FieldFileCode(slot, set), file.recordLength, file.recordCount, layout.toldWhole);
          if (fileClass == kClassType2) ReadUsed(set, slot, layout);
          AddCapacity(slot, file.recordCount, layout);
        }
      }
    }
  };
  measure(kClassType2, &SetLayout::type2);
  measure(kClassType1, &SetLayout::type1);
  if (layout.groupNameCount == 0) return;
  for (std::uint32_t set = 0; set < kPhonebookSets; ++set) {
    SetLayout& files = layout.sets[set];
    if (files.type1.Position(kTypeGroup) == files.type1.count) continue;
    std::uint32_t count = 0;
    bool told = true;
    Measure(GroupFileCode(set), files.groupRecordLength, count, told);
  }
}

void RilExtPhonebook::ReadUsed(std::uint32_t set, FieldSlot slot, PhonebookLayout& layout) {
  const std::uint32_t records = MappedRecords(layout.sets[set].Slot(slot));
  for (std::uint32_t record = 1; record <= records; ++record) {
    Record response;
    if (!ReadExtRecord(FieldFileCode(slot, set), record, response)) continue;
    const std::span<const std::uint8_t> bytes = RecordBytes(response);
    if (!bytes.empty() && bytes[0] != kPadding) Apply({set, slot, record, 1}, layout);
  }
}

void RilExtPhonebook::FindFree(const Target& target) {
  if (FirstFreeRecord(target.set, target.slot) != 0) return;
  for (std::uint32_t record = 1; record <= MappedRecords(target.file); ++record) {
    Record response;
    Record refusal;
    if (!ReadExtRecord(target.code, record, response, &refusal)) {
      if (refusal.empty()) return;  // no answer: the next would be waited for as long
      continue;
    }
    const std::span<const std::uint8_t> bytes = RecordBytes(response);
    if (bytes.empty() || bytes[0] == kPadding) MarkRecord(target.set, target.slot, record, 0);
  }
}

bool RilExtPhonebook::Measure(std::uint32_t code, std::uint32_t& length, std::uint32_t& count,
                              bool& told) {
  Record response;
  Record refusal;
  if (!GetExtResponse(code, response, &refusal)) {
    told = told && SaysThereIsNone(refusal);
    return false;
  }
  const std::span<const std::uint8_t> header = RecordBytes(response);
  if (header.size() <= kRecordLengthByte || header[kRecordLengthByte] == 0) {
    told = false;
    return false;
  }
  length = header[kRecordLengthByte];
  const auto high = static_cast<std::uint32_t>(header[kFileSizeByte]) << 8;
  count = (high | header[kFileSizeByte + 1]) / length;
  return true;
}

// Layout -----------------------------------------------------------------------------------------

bool RilExtPhonebook::Loaded() const {
  const MutexLock lock(layoutLock_);
  return layout_.loaded;
}

bool RilExtPhonebook::SeesFieldsOf(std::uint32_t location) const {
  const MutexLock lock(layoutLock_);
  if (!layout_.toldWhole) return false;
  if (!layout_.loaded) return true;
  std::uint32_t set = 0;
  std::uint32_t record = 0;
  if (SplitLocation(location, layout_.adnRecords, set, record) == 0 || set >= kPhonebookSets) {
    return false;
  }
  // Where sets differ in size, locations behind the shortest are others than they seem.
  const SetLayout& files = layout_.sets[set];
  if (files.type1.count + files.type2.count == 0) return false;
  return std::ranges::none_of(files.slots, [record](const SlotLayout& file) {
    return file.fileClass == kClassType1 && file.recordCount != 0 && record > file.recordCount;
  });
}

SlotLayout RilExtPhonebook::Slot(std::uint32_t set, FieldSlot slot) const {
  const MutexLock lock(layoutLock_);
  return set < kPhonebookSets ? layout_.sets[set].Slot(slot) : SlotLayout();
}

SlotLayout RilExtPhonebook::SlotInUse(std::uint32_t set, FieldSlot slot) const {
  const MutexLock lock(layoutLock_);
  if (set >= kPhonebookSets) return SlotLayout();
  return layout_.sets[OwnerOf(set, slot, layout_)].Slot(slot);
}

PhonebookLayout RilExtPhonebook::Layout() const {
  const MutexLock lock(layoutLock_);
  return layout_;
}

std::uint32_t RilExtPhonebook::AdnRecords() const {
  const MutexLock lock(layoutLock_);
  return layout_.adnRecords;
}

bool RilExtPhonebook::HasNumberNames() const {
  return NumberNameCount() > 0;
}

bool RilExtPhonebook::HasGroups() const {
  return GroupNameCount() > 0;
}

std::uint32_t RilExtPhonebook::NumberNameLength() const {
  const MutexLock lock(layoutLock_);
  return layout_.numberNameLength;
}

std::uint32_t RilExtPhonebook::NumberNameCount() const {
  const MutexLock lock(layoutLock_);
  return layout_.numberNameCount;
}

std::uint32_t RilExtPhonebook::GroupNameLength() const {
  const MutexLock lock(layoutLock_);
  return layout_.groupNameLength;
}

std::uint32_t RilExtPhonebook::GroupNameCount() const {
  const MutexLock lock(layoutLock_);
  return layout_.groupNameCount;
}

std::uint32_t RilExtPhonebook::GroupRecordLength(std::uint32_t set) const {
  const MutexLock lock(layoutLock_);
  return set < kPhonebookSets ? layout_.sets[set].groupRecordLength : 0;
}

std::uint32_t RilExtPhonebook::SecondNumberCapacity() const {
  const MutexLock lock(layoutLock_);
  return layout_.secondNumberCapacity;
}

std::uint32_t RilExtPhonebook::EmailCapacity() const {
  const MutexLock lock(layoutLock_);
  return layout_.emailCapacity;
}

int RilExtPhonebook::Place(std::uint32_t location, std::uint32_t& set,
                           std::uint32_t& record) const {
  return SplitLocation(location, AdnRecords(), set, record);
}

// Maps -------------------------------------------------------------------------------------------

std::uint32_t RilExtPhonebook::FirstFreeRecord(std::uint32_t set, FieldSlot slot) const {
  const MutexLock lock(layoutLock_);
  if (set >= kPhonebookSets) return 0;
  const SetLayout& owner = layout_.sets[OwnerOf(set, slot, layout_)];
  const std::uint32_t records = MappedRecords(owner.Slot(slot));
  for (std::uint32_t record = 1; record <= records; ++record) {
    if (owner.Map(slot)[record] == 0) return record;
  }
  return 0;
}

void RilExtPhonebook::MarkRecord(std::uint32_t set, FieldSlot slot, std::uint32_t record,
                                 int used) {
  const MutexLock lock(layoutLock_);
  const Mark mark = {set, slot, record, used};
  Apply(mark, layout_);
  if (reading_) marks_.push_back(mark);
}

void RilExtPhonebook::Apply(const Mark& mark, PhonebookLayout& layout) {
  if (mark.set >= kPhonebookSets) return;
  const std::uint32_t owner = OwnerOf(mark.set, mark.slot, layout);
  const SlotLayout own = layout.sets[owner].Slot(mark.slot);
  for (std::uint32_t set = 0; set < kPhonebookSets; ++set) {
    SlotLayout& file = layout.sets[set].Slot(mark.slot);
    // Later sets may share a file among them and not with the first.
    const bool same = set == owner || (file.fileClass == kClassType2 && file.shared == 0 &&
                                       own.fileClass == kClassType2 && file.fileId == own.fileId);
    if (!same || mark.record == 0 || mark.record > MappedRecords(file)) continue;
    std::uint8_t& entry = layout.sets[set].Map(mark.slot)[mark.record];
    const std::uint8_t used = mark.used != 0 ? 1 : 0;
    file.usedCount += used;
    file.usedCount -= entry;
    entry = used;
  }
}

// Index administration ---------------------------------------------------------------------------

std::uint32_t RilExtPhonebook::IapPosition(std::uint32_t set, std::uint32_t type) const {
  const MutexLock lock(layoutLock_);
  if (set >= kPhonebookSets) return kTypeListSize;
  const TypeList& types = layout_.sets[set].type2;
  const std::uint32_t position = types.Position(type);
  return position < types.count ? position : kTypeListSize;
}

bool RilExtPhonebook::ReadIapRecord(std::uint32_t set, std::uint32_t record) {
  Record response;
  iapRecord_.clear();
  const std::uint32_t code = IapFileCode(set);
  if (code == 0 || !ReadExtRecord(code, record, response)) return false;
  const std::span<const std::uint8_t> bytes = RecordBytes(response);
  iapRecord_.assign(bytes.begin(), bytes.end());
  return true;
}

bool RilExtPhonebook::ReadIapByte(std::uint32_t set, std::uint32_t record, std::uint32_t type,
                                  std::uint8_t& value) {
  const std::uint32_t position = IapPosition(set, type);
  if (position < kTypeListSize && !ReadIapRecord(set, record)) return false;
  value = position < kTypeListSize && position < iapRecord_.size() ? iapRecord_[position]
                                                                   : kNoReference;
  if (value == 0) value = kNoReference;
  return true;
}

bool RilExtPhonebook::WriteIapByte(std::uint32_t set, std::uint32_t record, std::uint32_t type,
                                   std::uint8_t value) {
  const std::uint32_t position = IapPosition(set, type);
  if (position >= kTypeListSize || position >= iapRecord_.size()) return false;
  iapRecord_[position] = value;
  return WriteExtRecord(IapFileCode(set), record, iapRecord_, kPadding);
}

bool RilExtPhonebook::ReadIap(std::uint32_t set, std::uint32_t record, std::uint32_t type,
                              std::uint8_t& value) {
  const MutexLock operation(operation_);
  return ReadIapByte(set, record, type, value);
}

bool RilExtPhonebook::WriteIap(std::uint32_t set, std::uint32_t record, std::uint32_t type,
                               std::uint8_t value) {
  const MutexLock operation(operation_);
  if (IapPosition(set, type) >= kTypeListSize) return false;
  return ReadIapRecord(set, record) && WriteIapByte(set, record, type, value);
}

// Extension records ------------------------------------------------------------------------------

bool RilExtPhonebook::GetFreeExtRecords(std::uint32_t& first, std::uint32_t& second) {
  constexpr std::size_t kHeader = 2 * sizeof(std::uint32_t);
  first = 0;
  second = 0;
  const std::uint32_t command = platform::kRilDevFreeExtensionRecords;
  Record response;
  const bool answered = DevSpecific(&command, sizeof(command), &response);
  if (!answered || response.size() < kHeader) return false;
  const MutexLock lock(layoutLock_);
  std::memcpy(&extensionCount_, response.data(), sizeof(extensionCount_));
  std::uint32_t length = 0;
  std::memcpy(&length, response.data() + sizeof(length), sizeof(length));
  extensionMapLength_ = static_cast<std::uint32_t>(
      std::min({std::size_t{length}, response.size() - kHeader, extensionMap_.size()}));
  extensionMap_.fill(kPadding);
  std::copy_n(response.begin() + kHeader, extensionMapLength_, extensionMap_.begin());
  const std::uint32_t records = std::min(8 * extensionMapLength_, extensionCount_);
  for (std::uint32_t record = 1; record <= records && second == 0; ++record) {
    const std::uint32_t bit = record - 1;
    if ((extensionMap_[bit / 8] & 0x80U >> bit % 8) == 0) (first == 0 ? first : second) = record;
  }
  return true;
}

bool RilExtPhonebook::ReadExtRecord(std::uint32_t code, std::uint32_t record,
                                    std::vector<std::uint8_t>& response,
                                    std::vector<std::uint8_t>* refusal) {
  if (!RilClient::ReadExtRecord(code, record, response, refusal)) return false;
  const std::span<const std::uint8_t> bytes = RecordBytes(response);
  const MutexLock lock(layoutLock_);
  lastRecord_.assign(bytes.begin(), bytes.end());
  return true;
}

std::vector<std::uint8_t> RilExtPhonebook::LastRecord() const {
  const MutexLock lock(layoutLock_);
  return lastRecord_;
}

}  // namespace kelpin::sim
