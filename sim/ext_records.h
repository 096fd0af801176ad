#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The records of the extended fields: EF_ANR (TS 31.102 4.4.2.9), EF_EXT1 (4.4.2.4), EF_EMAIL
// (4.4.2.13), EF_SNE (4.4.2.10). Pure functions.
namespace kelpin::sim {

inline constexpr std::size_t kExtensionRecordSize = 13;
inline constexpr std::size_t kShortestNumberRecord = 15;
// At the end of a type-2 record: the entry's file and record.
inline constexpr std::size_t kEntryLinkSize = 2;
inline constexpr std::uint8_t kNoReference = 0xFF;  // in a byte that names a record

// What a number's record and its extension record take, '+' in the first of them alone.
struct SplitNumber {
  std::u16string digits;
  std::u16string rest;  // empty: no extension record is needed
  bool international = false;
};
SplitNumber SplitForRecord(std::u16string_view number);

// Whether there is anything to dial in a number.
bool HasDigits(std::u16string_view number);

// The number-name record of a number's record; 0 for none.
std::uint8_t NameOf(std::span<const std::uint8_t> record);
// The extension record of a number's record; kNoReference for none.
std::uint8_t ExtensionOf(std::span<const std::uint8_t> record);

// A number's record as long as `old`, which is the record it replaces. `name` goes to its first
// byte, or, when negative, the old one's name. Empty when the number does not fit or the record is
// too short to be one.
std::vector<std::uint8_t> NumberRecord(std::span<const std::uint8_t> old, const SplitNumber& number,
                                       int name, std::uint8_t extension, bool type2);
// Gives `record` the type, plan and digits of `old` where that reads as `digits`: the user has not
// edited the number, and not every type and digit is shown.
void KeepUneditedNumber(std::span<const std::uint8_t> old, std::u16string_view digits,
                        std::span<std::uint8_t> record);
// The extension record for the rest of a number; empty when that does not fit.
std::vector<std::uint8_t> ExtensionRecord(std::u16string_view rest);
// A text's record as long as `old`; text that does not fit is cut. Empty for a record without room.
std::vector<std::uint8_t> TextRecord(std::span<const std::uint8_t> old, std::u16string text,
                                     bool type2);

}  // namespace kelpin::sim
