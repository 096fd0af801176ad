#include "device/card/change_marks.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "device/card/adn_record.h"
#include "device/card/told_extension.h"

namespace kelpin::device::card {
namespace {

constexpr std::size_t kCounterLength = 2;  // EF_CC, EF_PUID, a record of EF_UID
constexpr std::size_t kSynchronisationLength = 4;
constexpr std::uint32_t kLastCount = 0xFFFF;
constexpr std::uint32_t kLastUid = 0xFFFE;  // FFFF is what a record that was never written holds
constexpr std::uint32_t kLastSynchronisation = 0xFFFFFFFE;
constexpr std::uint8_t kModified = 0x01;  // EF_PBC, first byte
constexpr std::size_t kControlLength = 2;

using Bytes = std::span<const std::uint8_t>;

std::uint32_t ToNumber(Bytes bytes) {
  std::uint32_t value = 0;
  for (const std::uint8_t byte : bytes) value = (value << 8) | byte;
  return value;
}

std::vector<std::uint8_t> ToBytes(std::uint32_t value, std::size_t length) {
  std::vector<std::uint8_t> bytes(length);
  for (std::size_t i = length; i-- > 0; value >>= 8) bytes[i] = static_cast<std::uint8_t>(value);
  return bytes;
}

// Type-2 records begin with FF when they are free, extension records with FF or 00.
bool IsFree(PbrTag tag, Bytes record) {
  return tag == PbrTag::kExt1 ? ExtensionIsFree(record) : record.empty() || record[0] == 0xFF;
}

std::uint32_t LocationOf(const EntryPlace& place) {
  return place.set->firstLocation + place.record - 1U;
}

}  // namespace

void ChangeMarks::Forget() {
  counted_ = false;
  missing_ = false;
  location_ = 0;
  written_.clear();
  unclaimed_.clear();
}

const PbrFile* ChangeMarks::UniqueIds(const PhonebookSet& set) {
  const PbrFile* file = set.reference.Find(PbrTag::kUid);
  return file != nullptr && file->group == PbrGroup::kType1 ? file : nullptr;
}

// Whose data it is -------------------------------------------------------------------------------

bool ChangeMarks::FindRole(const RecordFile& file, Role& role) const {
  for (const PhonebookSet& set : layout_.Sets()) {
    for (const PbrFile& named : set.reference.files) {
      if (set.folder.Child(named.fileId) != file.Path()) continue;
      role = {&set, named.tag, named.group};
      return true;
    }
  }
  return false;
}

std::uint32_t ChangeMarks::HolderOfLinked(const RecordFile& file, std::uint8_t record) {
  for (const PhonebookSet& set : layout_.Sets()) {
    const PbrFile* named = set.reference.Find(PbrTag::kIap);
    if (named == nullptr) continue;
    const RecordFile& index = layout_.File(set.folder.Child(named->fileId));
    std::size_t position = 0;
    for (const PbrFile& linked : set.reference.files) {
      if (linked.group != PbrGroup::kType2) continue;
      const std::size_t byte = position++;
      if (set.folder.Child(linked.fileId) != file.Path()) continue;
      for (std::uint8_t entry = 1; entry <= set.adn->Count(); ++entry) {
        const auto known = index.Known(entry);
        if (known && byte < known->size() && (*known)[byte] == record) {
          return LocationOf({&set, entry});
        }
      }
    }
  }
  return 0;
}

std::uint32_t ChangeMarks::HolderOfExtension(const RecordFile& file, std::uint8_t record) {
  for (const PhonebookSet& set : layout_.Sets()) {
    if (set.ext1 != &file) continue;
    for (std::uint8_t entry = 1; entry <= set.adn->Count(); ++entry) {
      const auto known = set.adn->Known(entry);
      if (known && AdnView(*known).Extension() == record) return LocationOf({&set, entry});
    }
    for (const PbrFile& named : set.reference.files) {
      if (named.tag != PbrTag::kAnr) continue;
      RecordFile& numbers = layout_.File(set.folder.Child(named.fileId));
      for (std::uint32_t row = 1; row <= numbers.Count(); ++row) {
        const auto number = static_cast<std::uint8_t>(row);
        const auto known = numbers.Known(number);
        if (known && known->size() > kNumberExtension && (*known)[0] != 0xFF &&
            (*known)[kNumberExtension] == record) {
          return Holder(numbers, number);
        }
      }
    }
  }
  return 0;
}

std::uint32_t ChangeMarks::Holder(RecordFile& file, std::uint8_t record) {
  Role role;
  if (!FindRole(file, role)) return 0;
  if (role.tag == PbrTag::kExt1) return HolderOfExtension(file, record);
  if (role.group == PbrGroup::kType2) return HolderOfLinked(file, record);
  return record <= role.set->adn->Count() ? LocationOf({role.set, record}) : 0;
}

// The change -------------------------------------------------------------------------------------

CardResult ChangeMarks::Noted(CardResult result) {
  switch (result.Error()) {
    case TransportError::kNoReader:
    case TransportError::kNoCard:
    case TransportError::kRemoved:
    case TransportError::kReset:
      lost_ = result.Error();
      break;
    case TransportError::kNone:
    case TransportError::kTimeout:
    case TransportError::kCommunication:
    case TransportError::kBusy:
    case TransportError::kStorage:
    case TransportError::kRadioOff:
    case TransportError::kPin2Needed:
    case TransportError::kPuk2Needed:
      break;
  }
  return result;
}

TransportError ChangeMarks::BeforeEntry(const EntryPlace& place, EntryChange change) {
  lost_ = TransportError::kNone;
  const bool isNew = change == EntryChange::kNew;
  const bool begins = UniqueIds(*place.set) != nullptr &&
                      Count(*place.set, LocationOf(place), *place.set->adn, place.record, false);
  if (isNew || (begins && change == EntryChange::kEdit)) Number(place, isNew);
  ClearControl(place, isNew);
  return lost_;
}

TransportError ChangeMarks::BeforeRecord(RecordFile& file, std::uint8_t record,
                                         std::span<const std::uint8_t> data) {
  lost_ = TransportError::kNone;
  MarkRecord(file, record, data);
  return lost_;
}

void ChangeMarks::MarkRecord(RecordFile& file, std::uint8_t record,
                             std::span<const std::uint8_t> data) {
  Role role;
  if (!FindRole(file, role) || UniqueIds(*role.set) == nullptr) return;
  const bool shared = role.group == PbrGroup::kType3;
  if (shared && role.tag != PbrTag::kExt1) return;  // names of numbers and groups are no entries
  const auto known = file.Known(record);
  if (known && std::equal(known->begin(), known->end(), data.begin(), data.end())) return;
  const std::uint32_t location = Holder(file, record);
  EntryPlace place;
  if (location == 0 || !layout_.Find(location, place)) {
    // Nothing refers to it yet, or any more: the write of what refers to it counts.
    if (known && (IsFree(role.tag, *known) || IsFree(role.tag, data))) {
      unclaimed_.insert({&file, record});
      return;
    }
    Count(*role.set, 0, file, record, false);
    return;
  }
  if (!Count(*place.set, location, file, record, role.tag == PbrTag::kIap)) return;
  std::span<const std::uint8_t> entry;
  if (!Noted(place.set->adn->Read(place.record, entry)).Ok() || AdnView(entry).IsEmpty()) return;
  Number(place, false);
  ClearControl(place, false);
}

bool ChangeMarks::Count(const PhonebookSet& set, std::uint32_t location, RecordFile& file,
                        std::uint8_t record, bool mayRepeat) {
  const std::pair<const RecordFile*, std::uint8_t> write = {&file, record};
  const bool same = counted_ && location != 0 && (location == location_ || location_ == 0);
  if (same && (mayRepeat || written_.count(write) == 0)) {
    location_ = location;
    written_.insert(write);
    written_.merge(unclaimed_);
    unclaimed_.clear();
    return false;
  }
  location_ = location;
  written_ = {write};
  written_.merge(unclaimed_);
  unclaimed_.clear();
  if (missing_) return true;
  const CardResult result = Advance(set);
  missing_ = result.Missing();
  counted_ = result.Error() == TransportError::kNone;
  return true;
}

CardResult ChangeMarks::Advance(const PhonebookSet& set) {
  std::uint32_t count = 0;
  const CardResult read = ReadCounter(set, kEfCc, kCounterLength, count);
  if (!read.Ok()) return read;
  return count >= kLastCount ? BeginAnew(set) : WriteCounter(set, kEfCc, kCounterLength, count + 1);
}

void ChangeMarks::Number(const EntryPlace& place, bool isNew) {
  const PbrFile* named = UniqueIds(*place.set);
  if (named == nullptr || missing_) return;
  RecordFile& uids = layout_.File(place.set->folder.Child(named->fileId));
  if (lost_ != TransportError::kNone || !Noted(uids.Load()).Ok() ||
      uids.Info().recordLength != kCounterLength)
    return;
  if (!isNew) {
    std::span<const std::uint8_t> own;
    if (!Noted(uids.Read(place.record, own)).Ok()) return;
    const std::uint32_t uid = ToNumber(own);
    if (uid != 0 && uid <= kLastUid) return;
  }
  std::uint32_t last = 0;
  if (!ReadCounter(*place.set, kEfPuid, kCounterLength, last).Ok()) return;
  if (last >= kLastUid) {
    if (!BeginAnew(*place.set).Ok()) return;
    if (!isNew) return;  // it has its number with all the others
    if (!ReadCounter(*place.set, kEfPuid, kCounterLength, last).Ok()) return;
  }
  // Cut short in between, a number is left out, and none is given twice.
  if (!WriteCounter(*place.set, kEfPuid, kCounterLength, last + 1).Ok()) return;
  static_cast<void>(Noted(uids.Update(place.record, ToBytes(last + 1, kCounterLength))).Ok());
}

CardResult ChangeMarks::NumberAll(const PhonebookSet& set, std::uint32_t& last) {
  for (const PhonebookSet& each : layout_.Sets()) {
    const PbrFile* named = UniqueIds(each);
    if (named == nullptr || each.folder != set.folder) continue;
    RecordFile& uids = layout_.File(each.folder.Child(named->fileId));
    if (const CardResult result = Noted(uids.Learn(ToBytes(0, kCounterLength))); !result.Ok()) {
      return result;
    }
    if (const CardResult result = Noted(each.adn->LearnEmpty()); !result.Ok()) return result;
    for (std::uint8_t record = 1; record <= std::min(each.adn->Count(), uids.Count()); ++record) {
      std::span<const std::uint8_t> entry;
      if (const CardResult result = Noted(each.adn->Read(record, entry)); !result.Ok())
        return result;
      const std::uint32_t uid = AdnView(entry).IsEmpty() ? 0 : ++last;
      const std::vector<std::uint8_t> bytes = ToBytes(uid, kCounterLength);
      const auto known = uids.Known(record);
      if (known && std::equal(known->begin(), known->end(), bytes.begin(), bytes.end())) continue;
      if (const CardResult result = Noted(uids.Update(record, bytes)); !result.Ok()) return result;
    }
  }
  return StatusWord::kOk;
}

CardResult ChangeMarks::BeginAnew(const PhonebookSet& set) {
  std::uint32_t synchronisation = 0;
  CardResult result = ReadCounter(set, kEfPsc, kSynchronisationLength, synchronisation);
  if (!result.Ok()) return result;
  const std::uint32_t next = synchronisation >= kLastSynchronisation ? 1 : synchronisation + 1;
  result = WriteCounter(set, kEfPsc, kSynchronisationLength, next);
  if (!result.Ok()) return result;
  std::uint32_t last = 0;
  result = NumberAll(set, last);
  if (!result.Ok()) return result;
  result = WriteCounter(set, kEfPuid, kCounterLength, last);
  if (!result.Ok()) return result;
  return WriteCounter(set, kEfCc, kCounterLength, 1);
}

void ChangeMarks::ClearControl(const EntryPlace& place, bool isNew) {
  const PbrFile* named = place.set->reference.Find(PbrTag::kPbc);
  if (named == nullptr || named->group != PbrGroup::kType1) return;
  RecordFile& control = layout_.File(place.set->folder.Child(named->fileId));
  if (lost_ != TransportError::kNone || !Noted(control.Load()).Ok() ||
      control.Info().recordLength < kControlLength)
    return;
  std::span<const std::uint8_t> held;
  if (!Noted(control.Read(place.record, held)).Ok()) return;
  std::vector<std::uint8_t> wanted(held.begin(), held.end());
  // FF was never written: neither marked nor hidden.
  if (wanted[0] != 0xFF) wanted[0] = static_cast<std::uint8_t>(wanted[0] & ~kModified);
  // What a former entry at this place was hidden for is no matter of the new one.
  if (isNew && wanted[1] != 0xFF) wanted[1] = 0;
  if (std::equal(wanted.begin(), wanted.end(), held.begin(), held.end())) return;
  static_cast<void>(Noted(control.Update(place.record, wanted)).Ok());
}

// The counters -----------------------------------------------------------------------------------

CardResult ChangeMarks::ReadCounter(const PhonebookSet& set, std::uint16_t id, std::size_t length,
                                    std::uint32_t& value) {
  std::vector<std::uint8_t> bytes;
  const CardResult result =
      Noted(files_.ReadBinary(set.folder.Child(id), 0, static_cast<std::uint16_t>(length), bytes));
  if (result.Ok()) value = ToNumber(bytes);
  return result;
}

CardResult ChangeMarks::WriteCounter(const PhonebookSet& set, std::uint16_t id, std::size_t length,
                                     std::uint32_t value) {
  return Noted(files_.UpdateBinary(set.folder.Child(id), 0, ToBytes(value, length)));
}

}  // namespace kelpin::device::card
