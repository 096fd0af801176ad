#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kelpin::device::card {

// Tags of the phone-book reference file, EF_PBR (TS 31.102 4.4.2.1).
enum class PbrTag : std::uint8_t {
  kAdn = 0xC0,
  kIap = 0xC1,
  kExt1 = 0xC2,
  kSne = 0xC3,
  kAnr = 0xC4,
  kPbc = 0xC5,
  kGrp = 0xC6,
  kAas = 0xC7,
  kGas = 0xC8,
  kUid = 0xC9,
  kEmail = 0xCA,
  kCcp1 = 0xCB,
  kPuri = 0xCC,
};

// How a file's records belong to an entry: 1 by the same record number, 2 through EF_IAP, 3 by a
// byte inside another record.
enum class PbrGroup : std::uint8_t { kType1 = 0xA8, kType2 = 0xA9, kType3 = 0xAA };

// The id of no file: what has it is not to be used, and keeps its place in the record's order.
inline constexpr std::uint16_t kNoFileId = 0;

struct PbrFile {
  PbrTag tag = PbrTag::kAdn;
  PbrGroup group = PbrGroup::kType1;
  std::uint16_t fileId = kNoFileId;
};

// One record of EF_PBR: the files of one set of entries, in the record's order.
struct PbrSet {
  std::vector<PbrFile> files;

  // The nth file with the tag, from 0; null when there are fewer.
  const PbrFile* Find(PbrTag tag, std::size_t nth = 0) const;
  // The last file with the tag.
  const PbrFile* FindLast(PbrTag tag) const;
};

// Groups in any order, tags in any order and more than once, with a short file id or without,
// unknown ones skipped, ended by FF. Nothing when the record names no EF_ADN: unused, or damaged.
std::optional<PbrSet> ParsePbrRecord(std::span<const std::uint8_t> record);

// A file has one use. What the records of one EF_PBR name for a second one, or what is EF_PBR
// itself or a counter beside it, loses its id: written to as the one, it would be destroyed as the
// other.
void LeaveOutConflicts(std::span<PbrSet> sets);

}  // namespace kelpin::device::card
