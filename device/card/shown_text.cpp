#include "device/card/shown_text.h"

#include <algorithm>
#include <string>

#include "device/card/adn_record.h"
#include "device/card/alpha.h"

namespace kelpin::device::card {
namespace {

constexpr std::size_t kEntryLink = 2;  // at the end of a type-2 record

// A text of a field, or of a record of the EF_ADN kind: one byte short of what would fit.
ShownText FieldText(std::size_t length) {
  ShownText text;
  text.length = length;
  text.wideLimit = length < 2 ? 0 : length / 2 - 1;
  return text;
}

std::optional<ShownText> TextOf(const PbrFile& named, std::size_t recordLength) {
  ShownText text;
  switch (named.tag) {
    case PbrTag::kAas:
    case PbrTag::kGas:
      text.length = recordLength;
      text.wideLimit = recordLength == 0 ? 0 : (recordLength - 1) / 2;
      return text;
    case PbrTag::kSne:
    case PbrTag::kEmail:
      if (named.group == PbrGroup::kType2) recordLength -= std::min(recordLength, kEntryLink);
      text = FieldText(recordLength);
      text.gsmAlone = named.tag == PbrTag::kEmail;
      return text;
    default:
      return std::nullopt;
  }
}

}  // namespace

std::optional<ShownText> FindShownText(const CardLayout& layout, const RecordFile& file) {
  const std::size_t length = file.Info().recordLength;
  const std::uint16_t id = file.Path().Ids().empty() ? kMasterFile : file.Path().Ids().back();
  if ((id == kEfMsisdn || id == kEfSdn) && length >= kAdnNumberPart) {
    return FieldText(length - kAdnNumberPart);
  }
  for (const PhonebookSet& set : layout.Sets()) {
    for (const PbrFile& named : set.reference.files) {
      if (set.folder.Child(named.fileId) == file.Path()) return TextOf(named, length);
    }
  }
  return std::nullopt;
}

std::vector<std::uint8_t> ToldRecord(const ShownText& text, std::span<const std::uint8_t> record) {
  std::vector<std::uint8_t> told(record.begin(), record.end());
  const auto field = std::span(told).first(std::min(text.length, told.size()));
  if (!IsCompactAlpha(field)) return told;
  const std::u16string decoded = DecodeAlpha(field);
  if (decoded.empty() || (text.gsmAlone && !IsGsmAlpha(decoded))) return told;
  EncodePlainAlpha(decoded, text.wideLimit, field);
  return told;
}

std::vector<std::uint8_t> WantedRecord(const ShownText& text, std::span<const std::uint8_t> held,
                                       std::span<const std::uint8_t> wanted) {
  std::vector<std::uint8_t> record(wanted.begin(), wanted.end());
  if (held.size() != wanted.size() || text.length > held.size()) return record;
  const auto field = held.first(text.length);
  const std::vector<std::uint8_t> told = ToldRecord(text, held);
  if (std::equal(told.begin(), told.end(), held.begin(), held.end())) return record;
  if (DecodeAlpha(std::span(told).first(text.length)) == DecodeAlpha(wanted.first(text.length))) {
    std::copy(field.begin(), field.end(), record.begin());
  }
  return record;
}

}  // namespace kelpin::device::card
