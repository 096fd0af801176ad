#include "device/card/tlv.h"

#include <algorithm>
#include <cstddef>

namespace kelpin::device::card {

std::optional<Tlv> TlvReader::Next() {
  if (rest_.size() < 2 || rest_[0] == 0x00 || rest_[0] == 0xFF) return std::nullopt;
  const std::uint8_t tag = rest_[0];
  std::size_t length = rest_[1];
  std::size_t header = 2;
  if (length == 0x81 || length == 0x82) {
    const std::size_t bytes = length - 0x80;
    if (rest_.size() < header + bytes) return std::nullopt;
    length = rest_[2];
    if (bytes == 2) length = (length << 8) | rest_[3];
    header += bytes;
  } else if (length > 0x82 || length == 0x80) {
    return std::nullopt;  // no length that a card writes
  }
  length = std::min(length, rest_.size() - header);
  const Tlv object = {tag, rest_.subspan(header, length)};
  rest_ = rest_.subspan(header + length);
  return object;
}

std::optional<std::span<const std::uint8_t>> FindTlv(std::span<const std::uint8_t> bytes,
                                                     std::uint8_t tag) {
  TlvReader reader(bytes);
  while (const auto object = reader.Next()) {
    if (object->tag == tag) return object->value;
  }
  return std::nullopt;
}

}  // namespace kelpin::device::card
