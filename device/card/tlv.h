#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace kelpin::device::card {

// One data object. `value` points into the bytes that were walked.
struct Tlv {
  std::uint8_t tag = 0;
  std::span<const std::uint8_t> value;
};

// Walks data objects with one-byte tags and BER lengths of up to two bytes (TS 101 220 7.1), as
// cards use them in file descriptions and directories. Ends at padding (00 or FF in the place of a
// tag) and at the end. A length that reaches beyond the end is taken as "up to the end".
class TlvReader {
 public:
  explicit TlvReader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

  std::optional<Tlv> Next();

 private:
  std::span<const std::uint8_t> rest_;
};

// The first object with this tag.
std::optional<std::span<const std::uint8_t>> FindTlv(std::span<const std::uint8_t> bytes,
                                                     std::uint8_t tag);

}  // namespace kelpin::device::card
