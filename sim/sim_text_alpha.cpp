#include <algorithm>
#include <array>

#include "platform/gsm_alphabet.h"
#include "sim/sim_text.h"

namespace kelpin::sim {
namespace {

using platform::GsmEscape;
using platform::kGsmDefaultAlphabet;
using platform::kGsmExtension;

constexpr std::uint8_t kEscape = 0x1B;
constexpr std::uint8_t kPadding = 0xFF;
constexpr std::uint8_t kUcs2 = 0x80;
constexpr std::size_t kDecodeSize = 128;  // bytes of a field that are decoded at most

// The septet of a character, -1 when the default table has none. From the top, so that a space is
// 0x20 and not the escape's place.
int DefaultSeptet(char16_t character) {
  for (std::size_t septet = kGsmDefaultAlphabet.size(); septet-- > 0;) {
    if (kGsmDefaultAlphabet[septet] == character) {
      return static_cast<int>(septet);
    }
  }
  return -1;
}

const GsmEscape* FindEscape(char16_t character) {
  const auto* found = std::ranges::find(kGsmExtension, character, &GsmEscape::character);
  return found == kGsmExtension.end() ? nullptr : found;
}

char16_t EscapedCharacter(std::uint8_t septet) {
  const auto* found = std::ranges::find(kGsmExtension, septet, &GsmEscape::septet);
  return found == kGsmExtension.end() ? kGsmDefaultAlphabet[septet] : found->character;
}

int EncodeUcs2(std::u16string& text, std::span<std::uint8_t> out, std::size_t outSize,
               std::size_t& written) {
  const std::size_t size = std::min(outSize, out.size());
  if (size == 0) {
    return 0;
  }
  const std::size_t room = size / 2;
  text.resize(std::min(text.size(), room == 0 ? 0 : room - 1));
  out[0] = kUcs2;
  written = 1;
  for (const char16_t character : text) {
    out[written++] = static_cast<std::uint8_t>(character >> 8);
    out[written++] = static_cast<std::uint8_t>(character & 0xFF);
  }
  return 1;
}

std::size_t GsmSize(std::u16string_view text) {
  std::size_t size = 0;
  for (const char16_t character : text) {
    size += GsmCharClass(character) == kCharGsmExtension ? 2 : 1;
  }
  return size;
}

int EncodeGsm(std::u16string_view text, std::span<std::uint8_t> out, std::size_t& written) {
  if (GsmSize(text) > out.size()) {
    return 0;
  }
  for (const char16_t character : text) {
    const int septet = DefaultSeptet(character);
    if (septet >= 0) {
      out[written++] = static_cast<std::uint8_t>(septet);
    } else if (const GsmEscape* escape = FindEscape(character)) {
      out[written++] = kEscape;
      out[written++] = escape->septet;
    } else {
      out[written++] = static_cast<std::uint8_t>(character & 0xFF);
    }
  }
  return 1;
}

// Code page 1252 from 0x80 to 0x9F; above, it is Latin-1.
constexpr std::array<char16_t, 32> kLatinCodePage = {
    u'\u20AC', 0x0081,    u'\u201A', u'\u0192', u'\u201E', u'\u2026', u'\u2020', u'\u2021',
    u'\u02C6', u'\u2030', u'\u0160', u'\u2039', u'\u0152', 0x008D,    u'\u017D', 0x008F,
    0x0090,    u'\u2018', u'\u2019', u'\u201C', u'\u201D', u'\u2022', u'\u2013', u'\u2014',
    u'\u02DC', u'\u2122', u'\u0161', u'\u203A', u'\u0153', 0x009D,    u'\u017E', u'\u0178'};

char16_t LatinCharacter(std::uint8_t byte) {
  return byte >= 0x80 && byte <= 0x9F ? kLatinCodePage[byte - 0x80u] : static_cast<char16_t>(byte);
}

// Which alphabet a field of septets is in: 0x00 is '@' in the GSM alphabet, 0x40 in ASCII.
bool IsAscii(std::span<const std::uint8_t> field) {
  for (const std::uint8_t byte : field) {
    if (byte == 0x00 || byte == 0x40) {
      return byte == 0x40;
    }
  }
  return true;
}

void DecodeAscii(std::span<const std::uint8_t> content, std::u16string& out) {
  for (const std::uint8_t byte : content) {
    if (byte == 0x00) {
      return;
    }
    out.push_back(LatinCharacter(byte));
  }
}

void DecodeGsm(std::span<const std::uint8_t> content, std::u16string& out) {
  for (std::size_t i = 0; i < content.size() && content[i] < 0x80; ++i) {
    if (content[i] != kEscape) {
      out.push_back(kGsmDefaultAlphabet[content[i]]);
      continue;
    }
    ++i;  // an escape with nothing after it is no character
    if (i == content.size() || content[i] >= 0x80) {
      return;
    }
    out.push_back(EscapedCharacter(content[i]));
  }
}

// A low byte of 0xFF ends the text, though characters may have one.
void DecodeUcs2(std::span<const std::uint8_t> field, std::u16string& out) {
  for (std::size_t i = 1; i + 1 < field.size() && field[i + 1] != kPadding; i += 2) {
    const auto character = static_cast<char16_t>(field[i] << 8 | field[i + 1]);
    if (character == 0) {
      return;
    }
    out.push_back(character);
  }
}

}  // namespace

int GsmCharClass(char16_t character) {
  if (DefaultSeptet(character) >= 0) {
    return kCharGsmDefault;
  }
  return FindEscape(character) != nullptr ? kCharGsmExtension : kCharNotGsm;
}

int IsGsmText(std::u16string_view text) {
  return std::ranges::all_of(text, [](char16_t c) { return GsmCharClass(c) != kCharNotGsm; }) ? 1
                                                                                              : 0;
}

int FitsOneByte(std::u16string_view text) {
  return std::ranges::all_of(text, [](char16_t c) { return c < 0x100; }) ? 1 : 0;
}

int EncodeAlpha(std::u16string& text, std::span<std::uint8_t> out, std::size_t outSize, int mode,
                std::size_t& written) {
  written = 0;
  const bool gsm = mode == kAlphaGsm || (mode == kAlphaAutomatic && IsGsmText(text) == 1);
  return gsm ? EncodeGsm(text, out, written) : EncodeUcs2(text, out, outSize, written);
}

int DecodeAlpha(std::span<const std::uint8_t> record, std::u16string& out, std::size_t length,
                bool enableAscii) {
  out.clear();
  const std::span<const std::uint8_t> field = record.first(std::min(length, record.size()));
  if (field.empty() || field[0] == kPadding) {
    return 1;
  }
  if (field[0] == kUcs2) {
    out.reserve(field.size() / 2);
    DecodeUcs2(field, out);
    return 1;
  }
  if (field[0] > kUcs2) {
    return 0;
  }
  const auto end = std::ranges::find(field, kPadding);
  const auto size = static_cast<std::size_t>(end - field.begin());
  const std::span<const std::uint8_t> content = field.first(std::min(size, kDecodeSize));
  out.reserve(content.size());
  if (enableAscii && IsAscii(field)) {
    DecodeAscii(content, out);
  } else {
    DecodeGsm(content, out);
  }
  return 1;
}

int DecodeAlphaRaw(std::span<const std::uint8_t> response, std::u16string& out,
                   std::size_t recordLength, std::size_t limit, std::size_t numberPartSize) {
  out.clear();
  if (response.size() < kResponseHeaderSize || recordLength < numberPartSize) {
    return 1;
  }
  const int result =
      DecodeAlpha(response.subspan(kResponseHeaderSize), out, recordLength - numberPartSize, false);
  out.resize(std::min(out.size(), limit));
  return result;
}

std::size_t CutToBytes(std::u16string& text, std::size_t bytes) {
  const std::size_t length = text.size();
  if (bytes <= 2 * length) {
    text.resize(bytes < 2 ? 0 : bytes / 2 - 1);
  }
  return length;
}

}  // namespace kelpin::sim
