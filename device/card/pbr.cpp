#include "device/card/pbr.h"

#include <algorithm>
#include <map>

#include "device/card/file_path.h"
#include "device/card/tlv.h"

namespace kelpin::device::card {
namespace {

bool IsGroup(std::uint8_t tag) {
  return tag >= static_cast<std::uint8_t>(PbrGroup::kType1) &&
         tag <= static_cast<std::uint8_t>(PbrGroup::kType3);
}

bool IsFileTag(std::uint8_t tag) {
  return tag >= static_cast<std::uint8_t>(PbrTag::kAdn) &&
         tag <= static_cast<std::uint8_t>(PbrTag::kPuri);
}

void ParseGroup(PbrGroup group, std::span<const std::uint8_t> bytes, PbrSet& set) {
  TlvReader reader(bytes);
  while (const auto object = reader.Next()) {
    if (!IsFileTag(object->tag) || object->value.size() < 2) continue;
    PbrFile file;
    file.tag = static_cast<PbrTag>(object->tag);
    file.group = group;
    file.fileId = static_cast<std::uint16_t>((object->value[0] << 8) | object->value[1]);
    set.files.push_back(file);
  }
}

}  // namespace

const PbrFile* PbrSet::Find(PbrTag tag, std::size_t nth) const {
  for (const PbrFile& file : files) {
    if (file.tag == tag && file.fileId != kNoFileId && nth-- == 0) return &file;
  }
  return nullptr;
}

const PbrFile* PbrSet::FindLast(PbrTag tag) const {
  const PbrFile* last = nullptr;
  for (const PbrFile& file : files) {
    if (file.tag == tag && file.fileId != kNoFileId) last = &file;
  }
  return last;
}

std::optional<PbrSet> ParsePbrRecord(std::span<const std::uint8_t> record) {
  PbrSet set;
  TlvReader reader(record);
  while (const auto object = reader.Next()) {
    if (IsGroup(object->tag)) ParseGroup(static_cast<PbrGroup>(object->tag), object->value, set);
  }
  if (set.Find(PbrTag::kAdn) == nullptr) return std::nullopt;
  return set;
}

void LeaveOutConflicts(std::span<PbrSet> sets) {
  constexpr std::uint16_t kOwn[] = {kEfPbr, kEfPsc, kEfCc, kEfPuid};
  std::map<std::uint16_t, PbrTag> uses;
  // The entries first: they are what must not be lost.
  for (const bool entries : {true, false}) {
    for (PbrSet& set : sets) {
      for (PbrFile& file : set.files) {
        if ((file.tag == PbrTag::kAdn) != entries) continue;
        const bool own = std::ranges::find(kOwn, file.fileId) != std::end(kOwn);
        if (own || uses.try_emplace(file.fileId, file.tag).first->second != file.tag) {
          file.fileId = kNoFileId;
        }
      }
    }
  }
}

}  // namespace kelpin::device::card
