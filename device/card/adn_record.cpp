#include "device/card/adn_record.h"

#include <algorithm>

#include "device/card/alpha.h"

namespace kelpin::device::card {
namespace {

constexpr std::size_t kTonNpi = 1;
constexpr std::size_t kDigitBytes = 2;
constexpr std::size_t kCapability = 12;
constexpr std::size_t kExtension = 13;
constexpr std::size_t kMaxNumberBytes = 11;  // TON/NPI and ten bytes of digits

constexpr std::size_t kExtensionCount = 1;
constexpr std::size_t kExtensionBytes = 2;
constexpr std::size_t kMaxExtensionBytes = 10;
constexpr std::size_t kExtensionNext = 12;

}  // namespace

std::span<const std::uint8_t> AdnView::Alpha() const {
  return record_.first(record_.size() - kAdnNumberPart);
}

std::span<const std::uint8_t> AdnView::NumberPart() const {
  return record_.last(kAdnNumberPart);
}

std::u16string AdnView::Name() const {
  return DecodeAlpha(Alpha());
}

std::size_t AdnView::NumberBytes() const {
  const std::uint8_t length = NumberPart()[0];
  if (length < 2 || length == 0xFF) return 0;
  return std::min<std::size_t>(length, kMaxNumberBytes);
}

DialNumber AdnView::Number() const {
  DialNumber number;
  const std::size_t bytes = NumberBytes();
  if (bytes == 0) return number;
  const auto part = NumberPart();
  number.tonNpi = part[kTonNpi];
  AppendDigits(part.subspan(kDigitBytes, bytes - 1), number.digits);
  return number;
}

std::uint8_t AdnView::Capability() const {
  return RecordReference(NumberPart()[kCapability]);
}

std::uint8_t AdnView::Extension() const {
  return NumberBytes() == 0 ? std::uint8_t{0} : RecordReference(NumberPart()[kExtension]);
}

bool AdnView::IsEmpty() const {
  return Number().digits.empty() && Extension() == 0 && Name().empty();
}

void EncodeAdnNumber(const DialNumber& number, std::uint8_t capability, std::uint8_t extension,
                     std::span<std::uint8_t> numberPart) {
  std::fill(numberPart.begin(), numberPart.end(), std::uint8_t{0xFF});
  if (number.digits.empty()) return;
  const std::size_t bytes =
      PackDigits(number.digits, numberPart.subspan(kDigitBytes, kCapability - kDigitBytes));
  numberPart[0] = static_cast<std::uint8_t>(bytes + 1);
  numberPart[kTonNpi] = number.tonNpi;
  if (capability != 0) numberPart[kCapability] = capability;
  if (extension != 0) numberPart[kExtension] = extension;
}

bool ExtensionIsFree(std::span<const std::uint8_t> record) {
  return record.empty() || record[0] == 0x00 || record[0] == 0xFF;
}

void AppendExtensionDigits(std::span<const std::uint8_t> record, std::u16string& digits) {
  if (record.size() < kExtensionLength || ExtensionIsFree(record) ||
      (record[0] & kExtensionAdditionalData) == 0) {
    return;
  }
  const std::size_t bytes = std::min<std::size_t>(record[kExtensionCount], kMaxExtensionBytes);
  AppendDigits(record.subspan(kExtensionBytes, bytes), digits);
}

std::uint8_t NextExtension(std::span<const std::uint8_t> record) {
  if (record.size() < kExtensionLength || ExtensionIsFree(record)) return 0;
  return RecordReference(record[kExtensionNext]);
}

void EncodeExtension(std::u16string_view digits, std::uint8_t next,
                     std::span<std::uint8_t> record) {
  std::fill(record.begin(), record.end(), std::uint8_t{0xFF});
  record[0] = kExtensionAdditionalData;
  record[kExtensionCount] = static_cast<std::uint8_t>(
      PackDigits(digits, record.subspan(kExtensionBytes, kMaxExtensionBytes)));
  if (next != 0) record[kExtensionNext] = next;
}

}  // namespace kelpin::device::card
