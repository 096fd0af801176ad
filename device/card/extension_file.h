#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "device/card/record_file.h"

namespace kelpin::device::card {

// Record numbers of one file; bit 0 stands for none.
using RecordSet = std::bitset<256>;

// Digits of one number beyond this are not kept; no phone dials them.
inline constexpr std::size_t kMostDigits = 254;

// Chains of records in an EF_EXT1. A chain may be damaged: what points nowhere, at a free record or
// at one of the chain's own ends it.
class ExtensionFile {
 public:
  explicit ExtensionFile(RecordFile& file) : file_(file) {}

  // Appends the digits of the chain that starts at `first`. `records` becomes its records.
  CardResult Follow(std::uint8_t first, std::u16string& digits, RecordSet& records);
  // The records whose content says that they are in use.
  CardResult InUse(RecordSet& used);
  // Writes a chain for the digits into these records, the last one first, so that a chain is whole
  // before anything points at it.
  CardResult WriteChain(const std::vector<std::uint8_t>& records, std::u16string_view digits);
  // Makes the record free.
  CardResult Release(std::uint8_t record);
  // True when the card itself says now that the record is free.
  CardResult CheckFree(std::uint8_t record, bool& isFree);
  std::uint8_t Count() const { return file_.Count(); }

 private:
  RecordFile& file_;
};

}  // namespace kelpin::device::card
