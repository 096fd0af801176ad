#include "device/modem/at_answer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <system_error>

namespace kelpin::device::modem {
namespace {

constexpr std::size_t kStatusWord = 2;
constexpr std::size_t kLongestResponse = 256 + kStatusWord;

// Errors in words, as a modem tells them when +CMEE is 2 (TS 27.007 9.2.1).
struct Words {
  std::string_view text;
  int error;
};
constexpr auto kWords = std::to_array<Words>({
    {"phone failure", 0},
    {"operation not allowed", kCmeNotAllowed},
    {"operation not supported", kCmeNotSupported},
    {"sim not inserted", kCmeNoSim},
    {"sim pin required", kCmePinWanted},
    {"sim puk required", kCmePukWanted},
    {"sim failure", kCmeSimFailure},
    {"sim busy", kCmeSimBusy},
    {"sim wrong", kCmeSimWrong},
    {"incorrect password", kCmeWrongPassword},
    {"sim pin2 required", kCmePin2Wanted},
    {"sim puk2 required", kCmePuk2Wanted},
});

char Lower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool SameLetters(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char one, char other) { return Lower(one) == Lower(other); });
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

int CmeError(std::string_view text) {
  if (const auto number = ParseNumber(text)) return *number;
  const auto found = std::find_if(kWords.begin(), kWords.end(),
                                  [text](const Words& row) { return SameLetters(row.text, text); });
  return found == kWords.end() ? kUnknownCme : found->error;
}

int Digit(char letter) {
  if (letter >= '0' && letter <= '9') return letter - '0';
  const char lower = Lower(letter);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

std::optional<AtAnswer> ParseLastLine(std::string_view line) {
  line = Trimmed(line);
  if (line == "OK") return AtAnswer{.end = AtEnd::kOk};
  if (const auto reason = Behind(line, "+CME ERROR")) {
    return AtAnswer{.end = AtEnd::kCme, .error = CmeError(*reason)};
  }
  for (const std::string_view name : {"+CMS ERROR", "MODEM ERROR"}) {
    if (Behind(line, name)) return AtAnswer{.end = AtEnd::kError};
  }
  for (const std::string_view name :
       {"ERROR", "COMMAND NOT SUPPORT", "NA", "NO CARRIER", "BUSY", "NO ANSWER", "NO DIALTONE"}) {
    if (line == name) return AtAnswer{.end = AtEnd::kError};
  }
  return std::nullopt;
}

std::optional<std::string_view> Behind(std::string_view line, std::string_view prefix) {
  line = Trimmed(line);
  if (line.size() <= prefix.size() || !SameLetters(line.substr(0, prefix.size()), prefix)) {
    return std::nullopt;
  }
  line = Trimmed(line.substr(prefix.size()));
  if (line.empty() || line.front() != ':') return std::nullopt;
  return Trimmed(line.substr(1));
}

std::vector<std::string> SplitValues(std::string_view text) {
  std::vector<std::string> values(1);
  bool quoted = false;
  for (const char letter : text) {
    if (letter == '"') {
      quoted = !quoted;
    } else if (letter == ',' && !quoted) {
      values.emplace_back();
    } else if (letter != ' ' || quoted) {
      values.back().push_back(letter);
    }
  }
  return values;
}

std::optional<int> ParseNumber(std::string_view text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::string ToHex(std::span<const std::uint8_t> bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  text.reserve(2 * bytes.size());
  for (const std::uint8_t byte : bytes) {
    text.push_back(kDigits[byte >> 4]);
    text.push_back(kDigits[byte & 0x0F]);
  }
  return text;
}

std::optional<std::vector<std::uint8_t>> FromHex(std::string_view text) {
  if (text.size() % 2 != 0) return std::nullopt;
  std::vector<std::uint8_t> bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t at = 0; at < text.size(); at += 2) {
    const int high = Digit(text[at]);
    const int low = Digit(text[at + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
  }
  return bytes;
}

std::optional<std::vector<std::uint8_t>> ParseApduAnswer(std::string_view text) {
  const auto values = SplitValues(text);
  if (values.size() != 2) return std::nullopt;
  const auto length = ParseNumber(values[0]);
  auto bytes = FromHex(values[1]);
  if (!length || !bytes || bytes->size() < kStatusWord || bytes->size() > kLongestResponse) {
    return std::nullopt;
  }
  const auto counted = static_cast<std::size_t>(*length);
  if (*length < 0 || (counted != values[1].size() && counted != bytes->size())) {
    return std::nullopt;
  }
  return bytes;
}

std::optional<std::vector<std::uint8_t>> ParseFileAnswer(std::string_view text) {
  const auto values = SplitValues(text);
  if (values.size() < 2 || values.size() > 3) return std::nullopt;
  std::optional<std::vector<std::uint8_t>> bytes = std::vector<std::uint8_t>{};
  if (values.size() == 3) bytes = FromHex(values[2]);
  if (!bytes || bytes->size() > kLongestResponse - kStatusWord) return std::nullopt;
  for (const std::string& value : {values[0], values[1]}) {
    const auto number = ParseNumber(value);
    if (!number || *number < 0 || *number > 0xFF) return std::nullopt;
    bytes->push_back(static_cast<std::uint8_t>(*number));
  }
  return bytes;
}

}  // namespace kelpin::device::modem
