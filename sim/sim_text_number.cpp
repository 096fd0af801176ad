#include <algorithm>

#include "sim/sim_text.h"

namespace kelpin::sim {
namespace {

constexpr std::uint8_t kPadding = 0xFF;
constexpr std::uint8_t kExtAdditionalData = 2;

std::uint8_t Nibble(char16_t character) {
  if (character >= u'0' && character <= u'9') {
    return static_cast<std::uint8_t>(character - u'0');
  }
  switch (character) {
    case u'*':
      return 0xA;
    case u'#':
      return 0xB;
    case u'p':
    case u'P':
    case u'w':
    case u'W':
      return 0xC;
    default:
      return 0xD;
  }
}

// Nibbles of 0xD and above stand for nothing.
void AppendDigit(unsigned nibble, std::u16string& out) {
  constexpr std::u16string_view kDigits = u"0123456789*#p";
  if (nibble < kDigits.size()) {
    out.push_back(kDigits[nibble]);
  }
}

// Low nibble first; an odd count leaves 0xF in the last high nibble.
void EncodeBcd(std::u16string_view digits, std::span<std::uint8_t> out) {
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    const unsigned low = Nibble(digits[i]);
    const unsigned high = i + 1 < digits.size() ? Nibble(digits[i + 1]) : 0xF;
    out[i / 2] = static_cast<std::uint8_t>(high << 4 | low);
  }
}

void DecodeBcd(std::span<const std::uint8_t> bytes, std::u16string& out) {
  out.reserve(2 * bytes.size() + 1);  // and a '+'
  for (const std::uint8_t byte : bytes) {
    AppendDigit(byte & 0xFu, out);
    AppendDigit(byte >> 4u, out);
  }
}

// `count` bytes of BCD from `start`, or as many as are there.
std::span<const std::uint8_t> BcdAt(std::span<const std::uint8_t> record, std::size_t start,
                                    std::size_t count) {
  if (record.size() <= start) {
    return {};
  }
  return record.subspan(start, std::min({count, kBcdBytes, record.size() - start}));
}

std::size_t DigitBytes(std::u16string_view text) {
  const auto plus = static_cast<std::size_t>(std::ranges::count(text, u'+'));
  return (text.size() - plus + 1) / 2;
}

// `text` as an encoder leaves it to its caller: the '+' that was taken out stands in front.
void PutBackPlus(std::u16string& text, int hadPlus) {
  if (hadPlus == 1) {
    text.insert(text.begin(), u'+');
  }
}

// Length, TON/NPI and BCD, as EF_ANR and EF_ADN have them.
void EncodeNumberPart(std::u16string& text, std::span<std::uint8_t> out) {
  const std::size_t bytes = DigitBytes(text);
  const int hadPlus = PrepareDialString(text);
  out[0] = static_cast<std::uint8_t>(bytes + 1);
  out[1] = hadPlus == 1 ? kTonInternational : kTonUnknown;
  EncodeBcd(text, out.subspan(2));
  PutBackPlus(text, hadPlus);
}

std::span<const std::uint8_t> RecordOf(std::span<const std::uint8_t> response) {
  return response.size() < kResponseHeaderSize ? std::span<const std::uint8_t>()
                                               : response.subspan(kResponseHeaderSize);
}

// A '+' before the first digit, or else before the digit that follows the second run of '*' and
// '#': what stands between is a service code.
void PlacePlus(std::u16string& number) {
  bool separator = true;
  bool sawDigits = false;
  for (std::size_t i = 0; i < number.size(); ++i) {
    if (number[i] == u'*' || number[i] == u'#') {
      separator = true;
      continue;
    }
    if (separator) {
      separator = false;
      if (i == 0 || sawDigits) {
        number.insert(i, 1, u'+');
        return;
      }
      sawDigits = true;
    }
  }
}

char16_t Fold(char16_t character) {
  if (character >= 0xFF10 && character <= 0xFF19) {
    return static_cast<char16_t>(character - 0xFF10 + u'0');
  }
  switch (character) {
    case 0xFF03:
      return u'#';
    case 0xFF0A:
      return u'*';
    case 0xFF0B:
      return u'+';
    case 0xFF30:
    case 0xFF50:
      return u'p';
    default:
      return character;
  }
}

}  // namespace

int IsDialChar(char16_t character) {
  return (character >= u'0' && character <= u'9') || character == u'*' || character == u'#' ||
                 character == u'+' || character == u'p'
             ? 1
             : 0;
}

int PrepareDialString(std::u16string& text) {
  const int hadPlus = std::erase(text, u'+') > 0 ? 1 : 0;
  std::ranges::replace_if(
      text, [](char16_t c) { return c == u'W' || c == u'w'; }, u'p');
  return hadPlus;
}

int EncodeAnrNumber(std::u16string& text, std::span<std::uint8_t> out, std::size_t outSize) {
  const std::size_t size = std::min({outSize, out.size(), kAnrNumberSize});
  if (3 + DigitBytes(text) > size) {
    return 0;
  }
  out[0] = 0;
  EncodeNumberPart(text, out.subspan(1));
  return 1;
}

int EncodeExtNumber(std::u16string& text, std::span<std::uint8_t> out, std::size_t outSize) {
  const std::size_t size = std::min({outSize, out.size(), kExtNumberSize});
  const std::size_t bytes = DigitBytes(text);
  if (2 + bytes > size) {
    return 0;
  }
  const int hadPlus = PrepareDialString(text);
  out[0] = kExtAdditionalData;
  out[1] = static_cast<std::uint8_t>(bytes);
  EncodeBcd(text, out.subspan(2));
  PutBackPlus(text, hadPlus);
  return 1;
}

int EncodeAdnRecord(std::span<std::uint8_t> record, std::u16string& alpha, std::u16string& number,
                    std::size_t recordLength, std::size_t alphaLength) {
  if (recordLength < kAdnNumberPartSize || record.size() < recordLength ||
      DigitBytes(number) > kBcdBytes) {
    return 0;
  }
  const std::size_t numberStart = recordLength - kAdnNumberPartSize;
  const std::span<std::uint8_t> field = record.first(std::min(alphaLength, numberStart));
  std::size_t written = 0;
  if (EncodeAlpha(alpha, field, field.size(), kAlphaAutomatic, written) == 0) {
    return 0;
  }
  std::ranges::fill(record.subspan(written, recordLength - written), kPadding);
  EncodeNumberPart(number, record.subspan(numberStart, kAdnNumberPartSize));
  return 1;
}

void DecodeAnrNumber(std::span<const std::uint8_t> record, std::u16string& out, std::size_t limit) {
  out.clear();
  if (record.size() < 3 || record[1] == 0 || record[1] == kPadding) {
    return;
  }
  DecodeBcd(BcdAt(record, 3, std::min<std::size_t>(record[1] - 1u, limit / 2)), out);
  if (record[2] == kTonInternational) {
    PlacePlus(out);
  }
}

void DecodeExtNumber(std::span<const std::uint8_t> record, std::u16string& out, std::size_t limit) {
  out.clear();
  if (record.size() < 2) {
    return;
  }
  DecodeBcd(BcdAt(record, 2, std::min<std::size_t>(record[1], limit / 2)), out);
}

void DecodeAdnNumber(std::span<const std::uint8_t> response, std::u16string& out,
                     std::size_t recordLength, std::size_t limit) {
  out.clear();
  const std::span<const std::uint8_t> record = RecordOf(response);
  if (recordLength < kAdnNumberPartSize || record.size() < recordLength) {
    return;
  }
  const std::span<const std::uint8_t> part =
      record.subspan(recordLength - kAdnNumberPartSize, kAdnNumberPartSize);
  if (part[0] <= 1 || part[0] == kPadding) {
    return;
  }
  const std::span<const std::uint8_t> digits =
      BcdAt(part, 2, std::min<std::size_t>(part[0] - 1u, limit / 2));
  if (part[1] == kTonInternational) {
    out.reserve(2 * digits.size() + 1);
    out.push_back(u'+');
  }
  DecodeBcd(digits, out);
}

void DecodeExtRaw(std::span<const std::uint8_t> response, std::u16string& out) {
  DecodeExtNumber(RecordOf(response), out, 2 * kBcdBytes);
}

void FoldFullWidth(std::u16string& text) {
  const std::size_t size = std::min(text.size(), kNumberTextLimit);
  std::transform(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size), text.begin(),
                 Fold);
}

void KeepDialChars(std::u16string& text) {
  text.resize(std::min(text.size(), kNumberTextLimit));
  std::erase_if(text, [](char16_t c) { return IsDialChar(c) == 0; });
}

}  // namespace kelpin::sim
