#include "device/card/alpha.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

#include "platform/gsm_alphabet.h"

namespace kelpin::device::card {
namespace {

using platform::kGsmDefaultAlphabet;
using platform::kGsmExtension;

constexpr std::uint8_t kEscape = 0x1B;
constexpr std::uint8_t kUnused = 0xFF;
constexpr std::uint8_t kUcs2 = 0x80;
constexpr std::uint8_t kUcs2HalfPage = 0x81;  // count, base >> 7, bytes
constexpr std::uint8_t kUcs2WithBase = 0x82;  // count, base (two bytes), bytes
constexpr std::uint8_t kFromBase = 0x80;      // in a byte of both forms: base + lower 7 bits
constexpr char16_t kHalfPageLimit = 0x8000;   // the base byte holds bits 14 to 7
constexpr char16_t kReplacement = u'\uFFFD';
constexpr char16_t kEllipsis = u'\u2026';

std::optional<std::uint8_t> DefaultSeptet(char16_t unit) {
  for (std::size_t septet = 0; septet < kGsmDefaultAlphabet.size(); ++septet) {
    if (septet != kEscape && kGsmDefaultAlphabet[septet] == unit) {
      return static_cast<std::uint8_t>(septet);
    }
  }
  return std::nullopt;
}

std::optional<std::uint8_t> ExtensionSeptet(char16_t unit) {
  for (const auto& escape : kGsmExtension) {
    if (escape.character == unit) return escape.septet;
  }
  return std::nullopt;
}

// One GSM character at `place`, which moves past it.
char16_t GsmCharacter(std::span<const std::uint8_t> bytes, std::size_t& place) {
  const std::uint8_t byte = bytes[place++];
  if (byte >= 0x80) return kReplacement;
  if (byte != kEscape || place >= bytes.size() || bytes[place] >= 0x80) {
    return kGsmDefaultAlphabet[byte];
  }
  const std::uint8_t second = bytes[place++];
  for (const auto& escape : kGsmExtension) {
    if (escape.septet == second) return escape.character;
  }
  return kGsmDefaultAlphabet[second];
}

bool IsHighSurrogate(char16_t unit) {
  return (unit & 0xFC00) == 0xD800;
}

bool IsLowSurrogate(char16_t unit) {
  return (unit & 0xFC00) == 0xDC00;
}

void Append(std::u16string& text, char16_t unit) {
  if (unit != 0 && unit != 0xFFFF) text.push_back(unit);
}

// Halves of surrogate pairs that stand alone are no characters.
void MendSurrogates(std::u16string& text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      ++i;
    } else if (IsHighSurrogate(text[i]) || IsLowSurrogate(text[i])) {
      text[i] = kReplacement;
    }
  }
}

std::u16string DecodeGsm(std::span<const std::uint8_t> field) {
  const auto end = std::find(field.begin(), field.end(), kUnused);
  const auto bytes = field.first(static_cast<std::size_t>(end - field.begin()));
  std::u16string text;
  text.reserve(bytes.size());
  for (std::size_t place = 0; place < bytes.size();) text.push_back(GsmCharacter(bytes, place));
  return text;
}

std::u16string DecodeUcs2(std::span<const std::uint8_t> bytes) {
  std::u16string text;
  text.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto unit = static_cast<char16_t>((bytes[i] << 8) | bytes[i + 1]);
    if (unit == 0xFFFF) break;
    Append(text, unit);
  }
  MendSurrogates(text);
  return text;
}

// `bytes` without the header, at most `count` of them.
std::u16string DecodeWithBase(std::span<const std::uint8_t> bytes, std::size_t count,
                              std::uint32_t base) {
  const bool countIsWrong = count > bytes.size();
  bytes = bytes.first(std::min(bytes.size(), count));
  // FF is a character as well, but two at the end, or a count beyond the field, are padding.
  const bool padded =
      bytes.size() >= 2 && bytes.back() == kUnused && bytes[bytes.size() - 2] == kUnused;
  while ((countIsWrong || padded) && !bytes.empty() && bytes.back() == kUnused) {
    bytes = bytes.first(bytes.size() - 1);
  }
  std::u16string text;
  text.reserve(bytes.size());
  for (std::size_t place = 0; place < bytes.size();) {
    const std::uint8_t byte = bytes[place];
    if (byte < kFromBase) {
      text.push_back(GsmCharacter(bytes, place));
      continue;
    }
    ++place;
    Append(text, static_cast<char16_t>((base + (byte & 0x7F)) & 0xFFFF));
  }
  MendSurrogates(text);
  return text;
}

// What a text would take in each form; no value where the form cannot hold it.
struct Forms {
  std::optional<std::size_t> gsm;
  std::size_t ucs2 = 0;
  std::optional<std::size_t> halfPage;
  std::optional<std::size_t> withBase;
  char16_t lowest = 0xFFFF;  // of the units outside the default alphabet
};

std::optional<Forms> Measure(std::u16string_view text) {
  Forms forms;
  std::size_t gsm = 0;
  bool gsmHolds = true;
  char16_t highest = 0;
  for (const char16_t unit : text) {
    if (unit == 0 || unit == 0xFFFF) return std::nullopt;
    if (DefaultSeptet(unit)) {
      ++gsm;
      continue;
    }
    if (ExtensionSeptet(unit)) {
      gsm += 2;
    } else {
      gsmHolds = false;
    }
    forms.lowest = std::min(forms.lowest, unit);
    highest = std::max(highest, unit);
  }
  if (gsmHolds) forms.gsm = gsm;
  forms.ucs2 = 1 + 2 * text.size();
  if (text.size() <= 0xFF && highest != 0) {
    // A byte FF could be taken for padding: the character it would stand for is left to UCS-2.
    if (highest < kHalfPageLimit && (forms.lowest & 0xFF80) == (highest & 0xFF80) &&
        (highest & 0x7F) != 0x7F) {
      forms.halfPage = 3 + text.size();
    }
    if (highest - forms.lowest < 0x7F) forms.withBase = 4 + text.size();
  }
  return forms;
}

std::uint8_t HighByte(char16_t unit) {
  return static_cast<std::uint8_t>(unit >> 8);
}

std::uint8_t LowByte(char16_t unit) {
  return static_cast<std::uint8_t>(unit & 0xFF);
}

void WriteGsm(std::u16string_view text, std::span<std::uint8_t> out) {
  std::size_t place = 0;
  for (const char16_t unit : text) {
    if (const auto septet = DefaultSeptet(unit)) {
      out[place++] = *septet;
    } else if (const auto second = ExtensionSeptet(unit)) {
      out[place++] = kEscape;
      out[place++] = *second;
    }
  }
}

void WriteUcs2(std::u16string_view text, std::span<std::uint8_t> out) {
  std::size_t place = 0;
  out[place++] = kUcs2;
  for (const char16_t unit : text) {
    out[place++] = HighByte(unit);
    out[place++] = LowByte(unit);
  }
}

void WriteFromBase(std::u16string_view text, char16_t base, std::span<std::uint8_t> out) {
  std::size_t place = 0;
  for (const char16_t unit : text) {
    const auto septet = DefaultSeptet(unit);
    out[place++] = septet ? *septet : static_cast<std::uint8_t>(kFromBase | (unit - base));
  }
}

}  // namespace

std::u16string DecodeAlpha(std::span<const std::uint8_t> field) {
  if (field.empty()) return {};
  if (field[0] == kUcs2) return DecodeUcs2(field.subspan(1));
  if (field[0] == kUcs2HalfPage && field.size() >= 3) {
    return DecodeWithBase(field.subspan(3), field[1], static_cast<std::uint32_t>(field[2]) << 7);
  }
  if (field[0] == kUcs2WithBase && field.size() >= 4) {
    return DecodeWithBase(field.subspan(4), field[1],
                          (static_cast<std::uint32_t>(field[2]) << 8) | field[3]);
  }
  return DecodeGsm(field);
}

bool EncodeAlpha(std::u16string_view text, std::span<std::uint8_t> field) {
  const auto forms = Measure(text);
  if (!forms) return false;
  // In the order in which old phones are likely to read them; a later one must be shorter.
  std::size_t best = field.size() + 1;
  std::uint8_t form = 0;
  const auto offer = [&](std::optional<std::size_t> size, std::uint8_t which) {
    if (size && *size < best) {
      best = *size;
      form = which;
    }
  };
  offer(forms->gsm, 0);
  offer(forms->ucs2, kUcs2);
  offer(forms->halfPage, kUcs2HalfPage);
  offer(forms->withBase, kUcs2WithBase);
  if (best > field.size()) return false;

  std::fill(field.begin(), field.end(), kUnused);
  switch (form) {
    case kUcs2:
      WriteUcs2(text, field);
      break;
    case kUcs2HalfPage: {
      const auto base = static_cast<char16_t>(forms->lowest & 0xFF80);
      field[0] = kUcs2HalfPage;
      field[1] = static_cast<std::uint8_t>(text.size());
      field[2] = static_cast<std::uint8_t>(base >> 7);
      WriteFromBase(text, base, field.subspan(3));
      break;
    }
    case kUcs2WithBase:
      field[0] = kUcs2WithBase;
      field[1] = static_cast<std::uint8_t>(text.size());
      field[2] = HighByte(forms->lowest);
      field[3] = LowByte(forms->lowest);
      WriteFromBase(text, forms->lowest, field.subspan(4));
      break;
    default:
      WriteGsm(text, field);
      break;
  }
  return true;
}

bool IsCompactAlpha(std::span<const std::uint8_t> field) {
  return !field.empty() && (field[0] == kUcs2HalfPage || field[0] == kUcs2WithBase);
}

bool IsGsmAlpha(std::u16string_view text) {
  const auto forms = Measure(text);
  return forms && forms->gsm;
}

void EncodePlainAlpha(std::u16string_view text, std::size_t wideLimit,
                      std::span<std::uint8_t> field) {
  std::fill(field.begin(), field.end(), kUnused);
  if (field.empty()) return;
  wideLimit = std::min(wideLimit, (field.size() - 1) / 2);
  const auto forms = Measure(text);
  if (text.size() > wideLimit && forms && forms->gsm && *forms->gsm <= field.size()) {
    WriteGsm(text, field);
    return;
  }
  std::u16string wide(text);
  for (char16_t& unit : wide) {
    if ((unit & 0xFF) == kUnused) unit = kReplacement;
  }
  if (wide.size() > wideLimit) {
    wide.resize(wideLimit);
    if (!wide.empty()) wide.back() = kEllipsis;
    MendSurrogates(wide);
  }
  WriteUcs2(wide, field);
}

}  // namespace kelpin::device::card
