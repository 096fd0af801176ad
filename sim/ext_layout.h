#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

// What the phone-book reference file of a USIM says of the files beside the entries (TS 31.102
// 4.4.2.1), and how the radio's file command names those files. Plain data and pure functions.
namespace kelpin::sim {

// The fields of an entry that have a file of their own.
enum class FieldSlot : std::uint8_t { kEmail, kNickname, kSecondNumber, kThirdNumber };
inline constexpr std::size_t kFieldSlots = 4;
inline constexpr std::array<FieldSlot, kFieldSlots> kAllFieldSlots = {
    FieldSlot::kEmail, FieldSlot::kNickname, FieldSlot::kSecondNumber, FieldSlot::kThirdNumber};

inline constexpr std::uint32_t kPhonebookSets = 4;  // reference records that are read

// File codes of the radio's file command ---------------------------------------------------------

// Files of set k: ten further for each set.
inline constexpr std::uint32_t kIapFile = 1;
inline constexpr std::uint32_t kEmailFile = 2;
inline constexpr std::uint32_t kGroupFile = 3;
inline constexpr std::uint32_t kSecondNumberFile = 6;
inline constexpr std::uint32_t kThirdNumberFile = 7;
inline constexpr std::uint32_t kFileCodeStep = 10;
inline constexpr std::uint32_t kNicknameFile = 40;  // one further for each set
// Files of the whole phone book.
inline constexpr std::uint32_t kReferenceFile = 0;
inline constexpr std::uint32_t kGroupNameFile = 4;
inline constexpr std::uint32_t kNumberNameFile = 5;
inline constexpr std::uint32_t kExtensionFile = 44;
inline constexpr std::uint32_t kEntryFile = 50;  // asked for its record count alone

// Each is 0 for a set that the radio has no code for. 0 is also the reference file: never write to
// it, nor read a field from it.
std::uint32_t FieldFileCode(FieldSlot slot, std::uint32_t set);
std::uint32_t IapFileCode(std::uint32_t set);
std::uint32_t GroupFileCode(std::uint32_t set);

// The layout -------------------------------------------------------------------------------------

// What a reference record says of a file, and its place in the record's list of files.
inline constexpr std::uint32_t kTypeAdn = 0;
inline constexpr std::uint32_t kTypeNickname = 3;
inline constexpr std::uint32_t kTypeNumber = 4;
inline constexpr std::uint32_t kTypeGroup = 6;
inline constexpr std::uint32_t kTypeEmail = 10;
inline constexpr std::uint32_t kTypeThirdNumber = 12;  // the second EF_ANR of a set
inline constexpr std::uint32_t kTypeNone = 0xFFFFFFFF;
inline constexpr std::size_t kTypeListSize = 13;
std::uint32_t TypeOf(FieldSlot slot);

// How the records of a file belong to the entries.
inline constexpr std::uint32_t kClassType1 = 0xA8;  // one for each entry, by the same number
inline constexpr std::uint32_t kClassType2 = 0xA9;  // by a byte of the entry's record of EF_IAP
inline constexpr std::uint32_t kClassNone = 0xFFFFFFFF;

inline constexpr std::uint8_t kNoShortFileId = 0xFF;
inline constexpr std::array<std::uint8_t, 2> kNoFileId = {0xFF, 0xFF};

struct SlotLayout {
  std::uint32_t fileClass = kClassNone;
  std::uint32_t recordLength = 0;
  std::uint32_t recordCount = 0;
  std::uint32_t usedCount = 0;  // stays 0 for type 1
  std::uint8_t adnShortFileId = kNoShortFileId;
  std::array<std::uint8_t, 2> fileId = kNoFileId;
  std::uint32_t shared = 0;  // 1: the first set's type-2 file, under that set's code and map
};

// Types in the order of the reference record.
struct TypeList {
  TypeList() { codes.fill(kTypeNone); }
  // Beyond kTypeListSize types are dropped.
  void Append(std::uint32_t type);
  // The place of a type, from 0; `count` when it is not there. The last one where there are more.
  std::uint32_t Position(std::uint32_t type) const;

  std::uint32_t count = 0;
  std::array<std::uint32_t, kTypeListSize> codes;
};

inline constexpr std::uint32_t kMappedRecords = 250;
// [1] to [250]: 1 for a record in use.
using RecordMap = std::array<std::uint8_t, kMappedRecords + 1>;

struct SetLayout {
  SlotLayout& Slot(FieldSlot slot) { return slots[static_cast<std::size_t>(slot)]; }
  const SlotLayout& Slot(FieldSlot slot) const { return slots[static_cast<std::size_t>(slot)]; }
  RecordMap& Map(FieldSlot slot) { return maps[static_cast<std::size_t>(slot)]; }
  const RecordMap& Map(FieldSlot slot) const { return maps[static_cast<std::size_t>(slot)]; }

  std::array<SlotLayout, kFieldSlots> slots;
  TypeList type2;
  TypeList type1;
  std::array<RecordMap, kFieldSlots> maps = {};
  std::uint8_t adnShortFileId = kNoShortFileId;
  std::uint32_t groupRecordLength = 0;  // 0 when the set has no group records
};

// Lengths in bytes; all of it 0 or none until loaded.
struct PhonebookLayout {
  bool loaded = false;
  bool toldWhole = false;  // the card left no question about entries and fields unanswered
  std::array<SetLayout, kPhonebookSets> sets;
  std::uint32_t numberNameLength = 0;
  std::uint32_t numberNameCount = 0;
  std::uint32_t groupNameLength = 0;
  std::uint32_t groupNameCount = 0;
  std::uint32_t adnRecords = 0;  // of each set
  std::uint32_t secondNumberCapacity = 0;
  std::uint32_t emailCapacity = 0;
};

// Resets a set (0 to 3) and fills it from its reference record, whatever bytes that holds. Only
// files and types are known then; a set is compared with the first, which comes before it.
void ReadReference(std::span<const std::uint8_t> record, std::uint32_t set,
                   PhonebookLayout& layout);

// Where a location (from 1) lies: the set (from 0) and the record in it (from 1). 0, with both
// untouched, for location 0 and while the set's size is not known.
int SplitLocation(std::uint32_t location, std::uint32_t recordsPerSet, std::uint32_t& set,
                  std::uint32_t& record);

}  // namespace kelpin::sim
