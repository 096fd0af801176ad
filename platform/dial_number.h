#pragma once

#include <cstddef>
#include <string_view>

namespace kelpin::platform {

// UTF-16 units of the longest number that is dialled or written to.
inline constexpr std::size_t kLongestDialNumber = 255;

// Whether it can be dialled: digits, '*', '#', '+' and pauses alone.
constexpr bool IsDialNumber(std::u16string_view text) {
  return !text.empty() && text.size() <= kLongestDialNumber &&
         text.find_first_not_of(u"0123456789*#+pPwW") == std::u16string_view::npos;
}

}  // namespace kelpin::platform
