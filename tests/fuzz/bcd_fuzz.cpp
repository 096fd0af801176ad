// Dial numbers: records of EF_ADN and EF_EXT1, and addresses as users write them.
// Links: kelpin_card
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "device/card/adn_record.h"

using namespace kelpin::device::card;  // NOLINT: one function

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> bytes(data, size);
  if (size >= kAdnNumberPart) {
    const AdnView view(bytes);
    const DialNumber number = view.Number();
    if (number.digits.size() > kAdnDigits) std::abort();
    if (view.IsEmpty() && !number.digits.empty()) std::abort();
    // What was read can be written and is read as the same.
    std::vector<std::uint8_t> part(kAdnNumberPart);
    EncodeAdnNumber(number, view.Capability(), view.Extension(), part);
    if (AdnView(part).Number().digits != number.digits) std::abort();
    // What a user is shown can be given back.
    const std::u16string address = AddressText(number.digits, number.tonNpi);
    DialNumber again;
    if (!ParseAddress(address, again) || again.digits != number.digits) std::abort();
  }
  std::u16string digits;
  AppendExtensionDigits(bytes, digits);
  if (digits.size() > kExtensionDigits) std::abort();
  static_cast<void>(NextExtension(bytes));

  std::u16string address;
  for (std::size_t i = 0; i + 1 < size; i += 2) {
    address.push_back(static_cast<char16_t>(data[i] | data[i + 1] << 8));
  }
  DialNumber parsed;
  if (ParseAddress(address, parsed)) {
    const std::u16string shown = AddressText(parsed.digits, parsed.tonNpi);
    DialNumber again;
    if (!ParseAddress(shown, again) || again.digits != parsed.digits) std::abort();
  }
  return 0;
}
