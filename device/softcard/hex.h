#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelpin::device::softcard {

// Upper case, no blanks.
std::string ToHex(std::span<const std::uint8_t> bytes);

// Two digits a byte, either case, no blanks. On failure `bytes` is left as it was.
bool FromHex(std::string_view text, std::vector<std::uint8_t>& bytes);

}  // namespace kelpin::device::softcard
