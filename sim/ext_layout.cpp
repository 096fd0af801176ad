#include "sim/ext_layout.h"

#include <algorithm>

namespace kelpin::sim {
namespace {

constexpr std::uint8_t kPadding = 0xFF;
constexpr std::uint8_t kType1Block = 0xA8;
constexpr std::uint8_t kType3Block = 0xAA;

// Tags of a block's entries, and the type of the first: types follow in the order of the tags.
constexpr std::uint8_t kFirstFileTag = 0xC0;
constexpr std::uint8_t kLastFileTag = 0xCB;
constexpr std::uint8_t kUriTag = 0xCC;  // EF_PURI
constexpr std::size_t kFileIdSize = 2;

using Bytes = std::span<const std::uint8_t>;

// A tag's value at the start of `bytes`, as much of it as is there, and `bytes` moved behind it.
Bytes TakeValue(Bytes& bytes) {
  bytes = bytes.subspan(1);
  if (bytes.empty()) return {};
  const std::size_t length = std::min<std::size_t>(bytes[0], bytes.size() - 1);
  const Bytes value = bytes.subspan(1, length);
  bytes = bytes.subspan(1 + length);
  return value;
}

class ReferenceReader {
 public:
  ReferenceReader(SetLayout& set, const SetLayout* first) : set_(set), first_(first) {}

  void Read(Bytes record) {
    while (!record.empty() && record[0] != kPadding) {
      const std::uint8_t tag = record[0];
      if (tag >= kType1Block && tag <= kType3Block) {
        ReadBlock(tag, TakeValue(record));
      } else {
        record = record.subspan(1);
      }
    }
    // The entry file may stand behind the others.
    for (SlotLayout& slot : set_.slots) {
      if (slot.fileClass != kClassNone) slot.adnShortFileId = set_.adnShortFileId;
    }
  }

 private:
  void ReadBlock(std::uint32_t fileClass, Bytes block) {
    while (!block.empty() && block[0] != kPadding) {
      const std::uint8_t tag = block[0];
      const Bytes value = TakeValue(block);
      if (tag >= kFirstFileTag && tag <= kLastFileTag && value.size() >= kFileIdSize) {
        AddFile(fileClass, static_cast<std::uint32_t>(tag - kFirstFileTag), value);
      } else if (tag == kUriTag && value.size() >= kFileIdSize) {
        // No field of the program's, but it has its byte in the index record.
        AppendType(fileClass, kTypeNone);
      }
    }
  }

  void AddFile(std::uint32_t fileClass, std::uint32_t type, Bytes value) {
    if (type == kTypeAdn && value.size() > kFileIdSize) set_.adnShortFileId = value.back();
    if (type == kTypeNumber) {
      // A third one has its place among the files, but the program has no field for it.
      constexpr std::array<std::uint32_t, 2> kNumbers = {kTypeNumber, kTypeThirdNumber};
      type = numbers_ < kNumbers.size() ? kNumbers[numbers_] : kTypeNone;
      ++numbers_;
    }
    AppendType(fileClass, type);
    if (fileClass != kClassType1 && fileClass != kClassType2) return;
    for (const FieldSlot slot : kAllFieldSlots) {
      if (TypeOf(slot) == type) SetFile(slot, fileClass, {value[0], value[1]});
    }
  }

  void AppendType(std::uint32_t fileClass, std::uint32_t type) {
    if (fileClass == kClassType1) set_.type1.Append(type);
    if (fileClass == kClassType2) set_.type2.Append(type);
  }

  void SetFile(FieldSlot slot, std::uint32_t fileClass, std::array<std::uint8_t, 2> fileId) {
    SlotLayout& file = set_.Slot(slot);
    file.fileClass = fileClass;
    file.fileId = fileId;
    file.shared = 0;
    if (first_ == nullptr || fileClass != kClassType2) return;
    const SlotLayout& other = first_->Slot(slot);
    if (other.fileClass == kClassType2 && other.fileId == fileId) file.shared = 1;
  }

  SetLayout& set_;
  const SetLayout* first_;   // null for the first set itself
  std::size_t numbers_ = 0;  // EF_ANR so far
};

}  // namespace

std::uint32_t FieldFileCode(FieldSlot slot, std::uint32_t set) {
  if (set >= kPhonebookSets) return 0;
  switch (slot) {
    case FieldSlot::kEmail:
      return kEmailFile + kFileCodeStep * set;
    case FieldSlot::kNickname:
      return kNicknameFile + set;
    case FieldSlot::kSecondNumber:
      return kSecondNumberFile + kFileCodeStep * set;
    case FieldSlot::kThirdNumber:
      return kThirdNumberFile + kFileCodeStep * set;
  }
  return 0;
}

std::uint32_t IapFileCode(std::uint32_t set) {
  return set < kPhonebookSets ? kIapFile + kFileCodeStep * set : 0;
}

std::uint32_t GroupFileCode(std::uint32_t set) {
  return set < kPhonebookSets ? kGroupFile + kFileCodeStep * set : 0;
}

std::uint32_t TypeOf(FieldSlot slot) {
  constexpr std::array<std::uint32_t, kFieldSlots> kTypes = {kTypeEmail, kTypeNickname, kTypeNumber,
                                                             kTypeThirdNumber};
  return kTypes[static_cast<std::size_t>(slot)];
}

void TypeList::Append(std::uint32_t type) {
  if (count < codes.size()) codes[count++] = type;
}

std::uint32_t TypeList::Position(std::uint32_t type) const {
  // The slot too has the file that the record names last.
  for (std::uint32_t place = count; place > 0; --place) {
    if (codes[place - 1] == type) return place - 1;
  }
  return count;
}

void ReadReference(Bytes record, std::uint32_t set, PhonebookLayout& layout) {
  if (set >= layout.sets.size()) return;
  layout.sets[set] = SetLayout();
  ReferenceReader(layout.sets[set], set == 0 ? nullptr : &layout.sets[0]).Read(record);
}

int SplitLocation(std::uint32_t location, std::uint32_t recordsPerSet, std::uint32_t& set,
                  std::uint32_t& record) {
  if (location == 0 || recordsPerSet == 0) return 0;
  set = (location - 1) / recordsPerSet;
  record = (location - 1) % recordsPerSet + 1;
  return 1;
}

}  // namespace kelpin::sim
