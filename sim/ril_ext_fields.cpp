// One extended field of one entry: read, written, cleared.
#include <algorithm>
#include <utility>

#include "sim/ext_records.h"
#include "sim/ril_ext_phonebook.h"
#include "sim/sim_text.h"

namespace kelpin::sim {
namespace {

constexpr std::uint8_t kPadding = 0xFF;
constexpr std::size_t kNumberDigits = 20;  // of a number's record, and of its extension's
constexpr std::uint8_t kAdditionalData = 2;
constexpr int kOldName = -1;
constexpr std::uint32_t kLastNameId = 254;

std::uint32_t FailureOf(FieldSlot slot) {
  switch (slot) {
    case FieldSlot::kEmail:
      return kEmailFailed;
    case FieldSlot::kNickname:
      return kNicknameFailed;
    case FieldSlot::kSecondNumber:
      return kSecondNumberFailed;
    case FieldSlot::kThirdNumber:
      return kThirdNumberFailed;
  }
  return kSecondNumberFailed;
}

bool IsNumber(FieldSlot slot) {
  return slot == FieldSlot::kSecondNumber || slot == FieldSlot::kThirdNumber;
}

// The extension record that a write may use again or free; there is no record 0.
std::uint8_t OwnExtension(std::span<const std::uint8_t> record) {
  const std::uint8_t extension = ExtensionOf(record);
  return extension == 0 ? kNoReference : extension;
}

}  // namespace

bool RilExtPhonebook::FindTarget(FieldSlot slot, std::uint32_t location, Target& target) const {
  target.slot = slot;
  if (Place(location, target.set, target.entryRecord) == 0 || target.set >= kPhonebookSets) {
    return false;
  }
  const bool shared = Slot(target.set, slot).shared != 0;
  target.code = FieldFileCode(slot, shared ? 0 : target.set);
  target.file = SlotInUse(target.set, slot);
  return target.file.fileClass != kClassNone && target.file.recordLength > 0 &&
         target.file.recordCount > 0 &&
         (target.Type2() || target.entryRecord <= target.file.recordCount);
}

FieldResult RilExtPhonebook::FindRecord(const Target& target, std::uint32_t& record) {
  if (!target.Type2()) {
    record = target.entryRecord;
    return FieldResult::kRead;
  }
  std::uint8_t value = kNoReference;
  if (!ReadIapByte(target.set, target.entryRecord, TypeOf(target.slot), value)) {
    return FieldResult::kFailed;
  }
  if (value == kNoReference || value > target.file.recordCount) return FieldResult::kAbsent;
  record = value;
  return FieldResult::kRead;
}

bool RilExtPhonebook::ReadFieldRecord(const Target& target, std::uint32_t record, Record& bytes) {
  Record response;
  if (!ReadExtRecord(target.code, record, response)) return false;
  const std::span<const std::uint8_t> read = RecordBytes(response);
  bytes.assign(read.begin(), read.end());
  bytes.resize(target.file.recordLength, kPadding);
  return true;
}

FieldResult RilExtPhonebook::ReadNumberField(FieldSlot slot, std::uint32_t location,
                                             std::uint32_t& existing, NumberField& field) {
  existing = kNoRecord;
  Target target;
  if (!FindTarget(slot, location, target)) return FieldResult::kAbsent;
  const MutexLock operation(operation_);
  std::uint32_t record = 0;
  const FieldResult found = FindRecord(target, record);
  if (found != FieldResult::kRead) return found;
  Record bytes;
  if (!ReadFieldRecord(target, record, bytes)) return FieldResult::kFailed;
  NumberField read;
  read.nameId = NameOf(bytes);
  DecodeAnrNumber(bytes, read.number, kNumberDigits);
  const std::uint8_t extension = ExtensionOf(bytes);
  if (extension != kNoReference && !read.number.empty()) {
    Record response;
    const bool answered = ReadExtRecord(kExtensionFile, extension, response);
    // Cards that never wrote the byte may have 0 there: no record.
    if (!answered && extension != 0) return FieldResult::kFailed;
    const std::span<const std::uint8_t> rest = RecordBytes(response);
    std::u16string digits;
    if (!rest.empty() && rest[0] == kAdditionalData) DecodeExtNumber(rest, digits, kNumberDigits);
    read.number += digits;
  }
  if (target.Type2()) existing = record;
  field = std::move(read);
  return FieldResult::kRead;
}

FieldResult RilExtPhonebook::ReadTextField(FieldSlot slot, std::uint32_t location, bool enableAscii,
                                           std::uint32_t& existing, std::u16string& text) {
  existing = kNoRecord;
  Target target;
  if (!FindTarget(slot, location, target)) return FieldResult::kAbsent;
  const MutexLock operation(operation_);
  std::uint32_t record = 0;
  const FieldResult found = FindRecord(target, record);
  if (found != FieldResult::kRead) return found;
  Record bytes;
  if (!ReadFieldRecord(target, record, bytes)) return FieldResult::kFailed;
  const std::size_t link = target.Type2() ? kEntryLinkSize : 0;
  const std::size_t length = bytes.size() - std::min(link, bytes.size());
  std::u16string read;
  const bool supported = DecodeAlpha(bytes, read, length, enableAscii) != 0;
  if (target.Type2()) existing = record;
  if (!supported) return FieldResult::kUnsupported;
  text = std::move(read);
  return FieldResult::kRead;
}

bool RilExtPhonebook::ChooseRecord(const Target& target, std::uint32_t& existing,
                                   std::uint32_t& record, Record& old) {
  if (!target.Type2()) {
    record = target.entryRecord;
    return true;
  }
  if (existing == kNoRecord && FirstFreeRecord(target.set, target.slot) == 0) return false;
  const std::uint32_t type = TypeOf(target.slot);
  std::uint8_t value = kNoReference;
  if (!ReadIapByte(target.set, target.entryRecord, type, value)) return false;
  // Without a byte of its own the field could never be found again.
  if (IapPosition(target.set, type) >= iapRecord_.size()) return false;
  // The record that was read belongs to the entry only as long as the entry refers to it.
  if (existing != value) existing = kNoRecord;
  record = existing;
  if (existing != kNoRecord) return ReadFieldRecord(target, record, old);
  for (bool searched = false;;) {
    record = FirstFreeRecord(target.set, target.slot);
    if (record == 0) {
      if (std::exchange(searched, true)) return false;
      FindFree(target);
      continue;
    }
    if (!ReadFieldRecord(target, record, old)) return false;
    if (old.front() == kPadding) return true;
    // Another program took it since the layout was read.
    MarkRecord(target.set, target.slot, record, 1);
  }
}

bool RilExtPhonebook::FinishWrite(const Target& target, std::uint32_t record,
                                  std::uint32_t& existing) {
  if (!target.Type2() || record == existing) return true;
  MarkRecord(target.set, target.slot, record, 1);
  if (!WriteIapByte(target.set, target.entryRecord, TypeOf(target.slot),
                    static_cast<std::uint8_t>(record))) {
    return false;
  }
  existing = record;
  // What the next entry is offered goes by what is free.
  FindFree(target);
  return true;
}

bool RilExtPhonebook::ClearExtension(std::uint8_t record) {
  return WriteExtRecord(kExtensionFile, record, Record(kExtensionRecordSize, kPadding));
}

bool RilExtPhonebook::StoreNumber(const Target& target, std::uint32_t record, const Record& old,
                                  bool isNew, const NumberField& field, bool enableNames) {
  const SplitNumber split = SplitForRecord(field.number);
  // What a free record holds refers to nothing.
  const std::uint8_t oldExtension = isNew ? kNoReference : OwnExtension(old);
  std::uint8_t extension = kNoReference;
  Record rest;
  if (!split.rest.empty()) {
    rest = ExtensionRecord(split.rest);
    if (rest.empty()) return false;
    extension = oldExtension;
  }
  const int name = enableNames ? static_cast<int>(std::min(field.nameId, kLastNameId)) : kOldName;
  Record bytes = NumberRecord(old, split, name, extension, target.Type2());
  if (bytes.empty()) return false;
  if (!rest.empty() && extension == kNoReference) {
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    if (!GetFreeExtRecords(first, second) || first == 0 || first >= kNoReference) return false;
    extension = static_cast<std::uint8_t>(first);
    bytes = NumberRecord(old, split, name, extension, target.Type2());
  }
  if (!isNew) KeepUneditedNumber(old, split.digits, bytes);
  if (!rest.empty() && !WriteExtRecord(kExtensionFile, extension, rest)) return false;
  if (!WriteExtRecord(target.code, record, bytes)) return false;
  return !rest.empty() || oldExtension == kNoReference || ClearExtension(oldExtension);
}

bool RilExtPhonebook::ClearField(const Target& target, std::uint32_t& existing) {
  std::uint32_t record = target.entryRecord;
  if (target.Type2()) {
    if (existing == kNoRecord) return true;
    std::uint8_t value = kNoReference;
    if (!ReadIapByte(target.set, target.entryRecord, TypeOf(target.slot), value)) return false;
    if (existing != value) {
      existing = kNoRecord;
      return true;
    }
    record = existing;
  }
  std::uint8_t extension = kNoReference;
  if (IsNumber(target.slot)) {
    Record old;
    if (!ReadFieldRecord(target, record, old)) return false;
    extension = OwnExtension(old);
  }
  if (target.Type2()) {
    if (!WriteIapByte(target.set, target.entryRecord, TypeOf(target.slot), kNoReference)) {
      return false;
    }
    existing = kNoRecord;
  }
  if (!WriteExtRecord(target.code, record, Record(target.file.recordLength, kPadding))) {
    return false;
  }
  if (target.Type2()) MarkRecord(target.set, target.slot, record, 0);
  return extension == kNoReference || ClearExtension(extension);
}

std::uint32_t RilExtPhonebook::WriteNumberField(FieldSlot slot, std::uint32_t location,
                                                const NumberField& field, bool enableNames,
                                                std::uint32_t& existing) {
  Target target;
  const bool clear = !HasDigits(field.number);
  if (!FindTarget(slot, location, target)) return clear ? kFieldWritten : FailureOf(slot);
  const MutexLock operation(operation_);
  if (clear) return ClearField(target, existing) ? kFieldWritten : FailureOf(slot);
  std::uint32_t record = 0;
  Record old;
  const bool written =
      ChooseRecord(target, existing, record, old) &&
      (target.Type2() || ReadFieldRecord(target, record, old)) &&
      StoreNumber(target, record, old, target.Type2() && record != existing, field, enableNames) &&
      FinishWrite(target, record, existing);
  return written ? kFieldWritten : FailureOf(slot);
}

std::uint32_t RilExtPhonebook::WriteTextField(FieldSlot slot, std::uint32_t location,
                                              const std::u16string& text, std::uint32_t& existing) {
  Target target;
  const bool clear = text.empty();
  if (!FindTarget(slot, location, target)) return clear ? kFieldWritten : FailureOf(slot);
  const MutexLock operation(operation_);
  if (clear) return ClearField(target, existing) ? kFieldWritten : FailureOf(slot);
  std::uint32_t record = 0;
  Record bytes(target.file.recordLength, kPadding);
  // The end of a type-2 record stays.
  if (!ChooseRecord(target, existing, record, bytes)) return FailureOf(slot);
  bytes = TextRecord(bytes, text, target.Type2());
  const bool written = !bytes.empty() && WriteExtRecord(target.code, record, bytes) &&
                       FinishWrite(target, record, existing);
  return written ? kFieldWritten : FailureOf(slot);
}

// Groups -----------------------------------------------------------------------------------------

FieldResult RilExtPhonebook::ReadGroup(std::uint32_t location, std::vector<std::uint8_t>& groups) {
  std::uint32_t set = 0;
  std::uint32_t entryRecord = 0;
  if (Place(location, set, entryRecord) == 0) return FieldResult::kAbsent;
  const std::uint32_t length = GroupRecordLength(set);
  if (length == 0) return FieldResult::kAbsent;
  Record response;
  if (!ReadExtRecord(GroupFileCode(set), entryRecord, response)) return FieldResult::kFailed;
  const std::span<const std::uint8_t> bytes = RecordBytes(response);
  const auto end = std::find_if(bytes.begin(), bytes.end(), [](std::uint8_t group) {
    return group == 0 || group == kNoReference;
  });
  groups.assign(bytes.begin(), end);
  return FieldResult::kRead;
}

bool RilExtPhonebook::WriteGroup(std::uint32_t location, std::span<const std::uint8_t> groups) {
  std::uint32_t set = 0;
  std::uint32_t entryRecord = 0;
  if (Place(location, set, entryRecord) == 0) return groups.empty();
  const std::uint32_t length = GroupRecordLength(set);
  if (length == 0) return groups.empty();
  Record record(length, 0);
  std::copy_n(groups.begin(), std::min(groups.size(), record.size()), record.begin());
  return WriteExtRecord(GroupFileCode(set), entryRecord, record);
}

}  // namespace kelpin::sim
