#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace kelpin::device::modem {

// Puts the lines of an AT port together, from pieces of any size. A line ends with CR, LF or any
// run of them; empty lines are left out, and bytes that are no text as well.
class LineAssembler {
 public:
  // Longer than any answer of ours: a card's 258 bytes in hex, and what stands around them. What is
  // longer comes from no modem and is dropped to its end.
  static constexpr std::size_t kLongestLine = 4096;

  using LineEnded = std::function<void(std::string_view line)>;

  void Add(std::span<const std::uint8_t> bytes, const LineEnded& ended);
  // Forgets the line that has begun.
  void Clear();

 private:
  std::string line_;
  bool tooLong_ = false;
};

}  // namespace kelpin::device::modem
