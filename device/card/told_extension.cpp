#include "device/card/told_extension.h"

#include "device/card/adn_record.h"

namespace kelpin::device::card {
namespace {

constexpr std::uint8_t kNone = 0xFF;
constexpr std::uint8_t kNowhere = 0xFE;  // no file that is not full to the last has it

}  // namespace

const PhonebookSet* FindNumbers(const CardLayout& layout, const RecordFile& file) {
  if (layout.Extensions().size() < 2) return nullptr;
  for (const PhonebookSet& set : layout.Sets()) {
    for (const PbrFile& named : set.reference.files) {
      if (named.tag == PbrTag::kAnr && set.folder.Child(named.fileId) == file.Path()) return &set;
    }
  }
  return nullptr;
}

std::uint32_t ExtensionsBefore(const CardLayout& layout, const PhonebookSet& set) {
  std::uint32_t before = 0;
  for (const RecordFile* const file : layout.Extensions()) {
    if (file == set.ext1) break;
    before += file->Count();
  }
  return before;
}

std::uint8_t ToldExtension(const CardLayout& layout, const PhonebookSet& set, std::uint8_t held) {
  const std::uint8_t record = RecordReference(held);
  if (record == 0) return kNone;
  const std::uint32_t told = ExtensionsBefore(layout, set) + record;
  return set.ext1 == nullptr || record > set.ext1->Count() || told >= kNowhere
             ? kNowhere
             : static_cast<std::uint8_t>(told);
}

std::optional<std::uint8_t> HeldExtension(const CardLayout& layout, const PhonebookSet& set,
                                          std::uint8_t told) {
  if (RecordReference(told) == 0) return kNone;
  const std::uint32_t before = ExtensionsBefore(layout, set);
  if (set.ext1 == nullptr || told <= before || told - before > set.ext1->Count()) {
    return std::nullopt;
  }
  return static_cast<std::uint8_t>(told - before);
}

}  // namespace kelpin::device::card
