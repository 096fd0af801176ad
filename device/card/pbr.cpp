#include "device/card/pbr.h"

#include "device/card/tlv.h"

namespace kelpin::device::card {
namespace {

bool IsGroup(std::uint8_t tag) {
  return tag >= static_cast<std::uint8_t>(PbrGroup::kType1) &&
         tag <= static_cast<std::uint8_t>(PbrGroup::kType3);
}

bool IsFileTag(std::uint8_t tag) {
  return tag >= static_cast<std::uint8_t>(PbrTag::kAdn) &&
         tag <= static_cast<std::uint8_t>(PbrTag::kCcp1);
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
    if (file.tag == tag && nth-- == 0) return &file;
  }
  return nullptr;
}

const PbrFile* PbrSet::FindLast(PbrTag tag) const {
  const PbrFile* last = nullptr;
  for (const PbrFile& file : files) {
    if (file.tag == tag) last = &file;
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

}  // namespace kelpin::device::card
