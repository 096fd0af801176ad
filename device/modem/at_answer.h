#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelpin::device::modem {

// How an answer ended.
enum class AtEnd {
  kOk,
  kError,    // ERROR without a reason, or a command that the modem does not know
  kCme,      // +CME ERROR, with its number (TS 27.007 9.2)
  kTimeout,  // nothing that ends an answer came in time
  kGone,     // the port has gone
};

struct AtAnswer {
  AtEnd end = AtEnd::kTimeout;
  int error = 0;                        // of kCme; kUnknownCme when the modem's words are not known
  std::vector<std::string> lines = {};  // without the echo and the last line

  bool Ok() const { return end == AtEnd::kOk; }
};

inline constexpr int kUnknownCme = 100;

// Errors of TS 27.007 9.2.1 that we tell from others.
inline constexpr int kCmeNotAllowed = 3;
inline constexpr int kCmeNotSupported = 4;
inline constexpr int kCmeNoSim = 10;
inline constexpr int kCmePinWanted = 11;
inline constexpr int kCmePukWanted = 12;
inline constexpr int kCmeSimFailure = 13;
inline constexpr int kCmeSimBusy = 14;
inline constexpr int kCmeSimWrong = 15;
inline constexpr int kCmeWrongPassword = 16;
inline constexpr int kCmePin2Wanted = 17;
inline constexpr int kCmePuk2Wanted = 18;

// The answer's end when the line is a last line: OK, ERROR, +CME ERROR: …
std::optional<AtAnswer> ParseLastLine(std::string_view line);

// What stands behind "PREFIX:", blanks left out; nothing when the line is not of that name. Upper
// and lower case are the same, and blanks may stand before the colon.
std::optional<std::string_view> Behind(std::string_view line, std::string_view prefix);

// The values between commas, quotes and the blanks around them taken off. A comma within quotes
// separates nothing.
std::vector<std::string> SplitValues(std::string_view text);

// Decimal, and nothing but that.
std::optional<int> ParseNumber(std::string_view text);

std::string ToHex(std::span<const std::uint8_t> bytes);
// Two digits a byte, either case.
std::optional<std::vector<std::uint8_t>> FromHex(std::string_view text);

// The card's response, with its status word, from "<length>,<hex>" as +CSIM and +CGLA answer.
// Nothing when the length is not that of the digits, in digits or (as some modems count) in bytes.
std::optional<std::vector<std::uint8_t>> ParseApduAnswer(std::string_view text);

// The same from "<sw1>,<sw2>[,<hex>]" as +CRSM answers: data, then SW1 SW2.
std::optional<std::vector<std::uint8_t>> ParseFileAnswer(std::string_view text);

}  // namespace kelpin::device::modem
