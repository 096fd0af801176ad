#include "sim/ext_records.h"

#include <algorithm>
#include <array>

#include "sim/sim_text.h"

namespace kelpin::sim {
namespace {

constexpr std::uint8_t kPadding = 0xFF;
constexpr std::size_t kDigitsInRecord = 20;
constexpr std::size_t kNameByte = 0;
constexpr std::size_t kLengthByte = 1;
constexpr std::size_t kTonByte = 2;
constexpr std::size_t kCapabilityByte = 13;
constexpr std::size_t kExtensionByte = 14;

void KeepEntryLink(std::span<const std::uint8_t> old, std::vector<std::uint8_t>& record) {
  std::copy_n(old.end() - kEntryLinkSize, kEntryLinkSize, record.end() - kEntryLinkSize);
}

}  // namespace

SplitNumber SplitForRecord(std::u16string_view number) {
  SplitNumber split;
  const std::size_t room = number.starts_with(u'+') ? kDigitsInRecord + 1 : kDigitsInRecord;
  split.digits = number.substr(0, room);
  split.rest = number.substr(std::min(room, number.size()));
  if (!HasDigits(split.rest)) split.rest.clear();
  split.international = number.find(u'+') != std::u16string_view::npos;
  return split;
}

bool HasDigits(std::u16string_view number) {
  return number.find_first_not_of(u'+') != std::u16string_view::npos;
}

std::uint8_t NameOf(std::span<const std::uint8_t> record) {
  return record.empty() || record[kNameByte] == kPadding ? std::uint8_t{0} : record[kNameByte];
}

std::uint8_t ExtensionOf(std::span<const std::uint8_t> record) {
  return record.size() > kExtensionByte ? record[kExtensionByte] : kNoReference;
}

std::vector<std::uint8_t> NumberRecord(std::span<const std::uint8_t> old, const SplitNumber& number,
                                       int name, std::uint8_t extension, bool type2) {
  if (old.size() < kShortestNumberRecord + (type2 ? kEntryLinkSize : 0)) return {};
  std::vector<std::uint8_t> record(old.size(), kPadding);
  std::u16string digits = number.digits;
  if (EncodeAnrNumber(digits, record, kAnrNumberSize) == 0) return {};
  if (number.international) record[kTonByte] = kTonInternational;
  record[kNameByte] = name < 0 ? NameOf(old) : static_cast<std::uint8_t>(name);
  record[kCapabilityByte] = old[kCapabilityByte];
  record[kExtensionByte] = extension;
  // The link of a type-2 record, or what the card has beyond what a number takes.
  std::copy(old.begin() + kShortestNumberRecord, old.end(), record.begin() + kShortestNumberRecord);
  return record;
}

void KeepUneditedNumber(std::span<const std::uint8_t> old, std::u16string_view digits,
                        std::span<std::uint8_t> record) {
  if (old.size() < kAnrNumberSize || record.size() < kAnrNumberSize) return;
  std::u16string held;
  DecodeAnrNumber(old, held, kDigitsInRecord);
  if (held.empty() || held != digits) return;
  std::copy(old.begin() + kLengthByte, old.begin() + kCapabilityByte, record.begin() + kLengthByte);
}

std::vector<std::uint8_t> ExtensionRecord(std::u16string_view rest) {
  std::vector<std::uint8_t> record(kExtensionRecordSize, kPadding);
  std::u16string digits(rest);
  if (EncodeExtNumber(digits, record, kExtNumberSize) == 0) return {};
  return record;
}

std::vector<std::uint8_t> TextRecord(std::span<const std::uint8_t> old, std::u16string text,
                                     bool type2) {
  const std::size_t link = type2 ? kEntryLinkSize : 0;
  if (old.size() <= link) return {};
  const std::size_t room = old.size() - link;
  std::array<std::uint8_t, kAlphaWorkSize> work;
  work.fill(kPadding);
  std::size_t written = 0;
  if (EncodeAlpha(text, work, room, kAlphaAutomatic, written) == 0) return {};
  std::vector<std::uint8_t> record(old.size(), kPadding);
  std::copy_n(work.begin(), std::min(written, room), record.begin());
  if (type2) KeepEntryLink(old, record);
  return record;
}

}  // namespace kelpin::sim
