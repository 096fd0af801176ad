#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "device/card/bcd.h"

namespace kelpin::device::card {

// One record of an EF_ADN or a file of its kind (TS 31.102 4.4.2.3, TS 51.011 10.5.1): the alpha
// identifier, then 14 bytes: length of what follows of TON/NPI and digits, TON/NPI, ten bytes of
// digits, the record of EF_CCP1, the record of EF_EXT1.
inline constexpr std::uint8_t kAdnNumberPart = 14;
inline constexpr std::uint8_t kAdnDigits = 20;

// A record number in one byte; 00 and FF stand for none and become 0.
constexpr std::uint8_t RecordReference(std::uint8_t byte) {
  return byte == 0xFF ? std::uint8_t{0} : byte;
}

// Reads a record that somebody else holds. At least kAdnNumberPart bytes.
class AdnView {
 public:
  explicit AdnView(std::span<const std::uint8_t> record) : record_(record) {}

  std::span<const std::uint8_t> Alpha() const;
  std::u16string Name() const;
  // TON/NPI and the digits in this record alone, at most kAdnDigits.
  DialNumber Number() const;
  std::uint8_t Capability() const;  // EF_CCP1 record, 0 none
  std::uint8_t Extension() const;   // EF_EXT1 record, 0 none
  // Neither a name nor a number, whatever else the bytes hold.
  bool IsEmpty() const;

 private:
  std::span<const std::uint8_t> NumberPart() const;
  // Bytes of TON/NPI and digits, 0 when there is no number.
  std::size_t NumberBytes() const;

  std::span<const std::uint8_t> record_;
};

// Fills a record's 14 bytes of number part. At most kAdnDigits digits; without digits all is FF.
// `capability` and `extension` 0: none.
void EncodeAdnNumber(const DialNumber& number, std::uint8_t capability, std::uint8_t extension,
                     std::span<std::uint8_t> numberPart);

// One record of an EF_EXT1 (TS 31.102 4.4.2.4): type, then length and ten bytes of digits, then the
// record that goes on.
inline constexpr std::uint8_t kExtensionLength = 13;
inline constexpr std::uint8_t kExtensionDigits = 20;
inline constexpr std::uint8_t kExtensionAdditionalData = 0x02;  // type bit

// Free: the type byte is 00 or FF.
bool ExtensionIsFree(std::span<const std::uint8_t> record);
// Appends the digits; nothing when the record holds something else (a subaddress).
void AppendExtensionDigits(std::span<const std::uint8_t> record, std::u16string& digits);
std::uint8_t NextExtension(std::span<const std::uint8_t> record);  // 0 none
// At most kExtensionDigits digits. `record` has kExtensionLength bytes or more; the rest is FF.
void EncodeExtension(std::u16string_view digits, std::uint8_t next, std::span<std::uint8_t> record);

}  // namespace kelpin::device::card
