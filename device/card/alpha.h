#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kelpin::device::card {

// Alpha identifiers (TS 31.102 annex A, TS 51.011 annex B): the GSM default alphabet with one
// septet a byte, or UCS-2 in one of three forms that start with 80, 81 or 82. Unused bytes are FF.

// The field's text. Broken lengths end at the field's end; what stands for nothing, half
// a surrogate pair too, becomes U+FFFD; U+0000
// and U+FFFF are left out.
std::u16string DecodeAlpha(std::span<const std::uint8_t> field);

// Writes the text in the form that takes the fewest bytes (of two equal ones the plainer) and fills
// the rest with FF. False, and the field untouched, when no form fits or the text holds U+0000 or
// U+FFFF.
[[nodiscard]] bool EncodeAlpha(std::u16string_view text, std::span<std::uint8_t> field);

// Whether the field is in one of the forms that begin with 81 or 82.
bool IsCompactAlpha(std::span<const std::uint8_t> field);

// Whether the GSM alphabet holds the whole text.
bool IsGsmAlpha(std::u16string_view text);

// Writes the text in the form that begins with 80, or in the GSM alphabet where it has more than
// `wideLimit` characters, and fills the rest with FF. What fits neither is cut, with U+2026 for the
// last character; what readers would take for the end of an 80 form becomes U+FFFD.
void EncodePlainAlpha(std::u16string_view text, std::size_t wideLimit,
                      std::span<std::uint8_t> field);

}  // namespace kelpin::device::card
