// Alpha identifiers: what was read can be written, and is then read as the same.
// Links: kelpin_card
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "device/card/alpha.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using kelpin::device::card::DecodeAlpha;
  using kelpin::device::card::EncodeAlpha;
  const std::u16string text = DecodeAlpha({data, size});
  if (text.size() > size) std::abort();
  if (text.find(u'\0') != std::u16string::npos) std::abort();
  std::vector<std::uint8_t> field(1 + 2 * text.size(), 0x55);
  if (!EncodeAlpha(text, field)) std::abort();  // plain UCS-2 holds every text
  if (DecodeAlpha(field) != text) std::abort();
  // A field that is too short is refused untouched.
  const std::size_t used = static_cast<std::size_t>(
      std::find_if(field.rbegin(), field.rend(), [](std::uint8_t byte) { return byte != 0xFF; })
          .base() -
      field.begin());
  if (used > 0) {
    std::vector<std::uint8_t> tooShort(used - 1, 0x55);
    const auto before = tooShort;
    if (EncodeAlpha(text, tooShort) ? DecodeAlpha(tooShort) != text : tooShort != before) {
      std::abort();
    }
  }
  return 0;
}
