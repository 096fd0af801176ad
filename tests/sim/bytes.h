#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelpin::sim {

using ByteVector = std::vector<std::uint8_t>;

// "61 62 FF" and the like; blanks are ignored.
inline ByteVector Bytes(std::string_view hex) {
  ByteVector bytes;
  std::string pair;
  for (const char digit : hex) {
    if (digit == ' ') {
      continue;
    }
    pair.push_back(digit);
    if (pair.size() == 2) {
      bytes.push_back(static_cast<std::uint8_t>(std::stoi(pair, nullptr, 16)));
      pair.clear();
    }
  }
  return bytes;
}

// With `count` bytes of padding behind.
inline ByteVector Padded(ByteVector bytes, std::size_t count) {
  bytes.resize(bytes.size() + count, 0xFF);
  return bytes;
}

// A card's answer: a header that is no part of the record, then the record. Sixteen bytes no
// decoder may take for the record's.
inline ByteVector Response(const ByteVector& record) {
  ByteVector bytes(16, 0x35);
  bytes.insert(bytes.end(), record.begin(), record.end());
  return bytes;
}

inline ByteVector First(std::span<const std::uint8_t> bytes, std::size_t count) {
  const auto first = bytes.first(count);
  return {first.begin(), first.end()};
}

}  // namespace kelpin::sim
