#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelpin::contract {

// The card that the suites of the SIM and radio interfaces run on: a GSM card without a PIN whose
// DF TELECOM holds the files of KnownFiles and no EF_EXT1. Adapters put the files on a card; fakes
// take the entries.
inline constexpr std::uint32_t kKnownTotal = 10;
inline constexpr std::uint32_t kKnownMaxText = 14;     // of an ADN record of 28 bytes
inline constexpr std::uint32_t kKnownMaxAddress = 20;  // without extension records
inline constexpr std::uint32_t kKnownSmsUsed = 1;
inline constexpr std::uint32_t kKnownSmsTotal = 3;

struct KnownEntry {
  std::uint32_t index;
  std::u16string_view name;
  std::u16string_view number;
  std::u16string_view digits;  // the number without '+'
  std::uint32_t addressType;
};

inline constexpr std::array<KnownEntry, 3> kKnownEntries = {{
    {2, u"Ada", u"+4420123", u"4420123", 1},
    {5, u"\u0416\u0430\u043D", u"0301", u"0301", 0},
    {9, u"", u"112", u"112", 0},
}};

struct KnownFile {
  std::uint16_t id;
  std::uint8_t recordLength;
  std::vector<std::vector<std::uint8_t>> records;
};

inline constexpr std::uint16_t kKnownPhonebook = 0x6F3A;
inline constexpr std::uint16_t kKnownOwnNumbers = 0x6F40;
inline constexpr std::uint16_t kKnownMessages = 0x6F3C;

// A record of 28 bytes (TS 51.011 10.5.1): the alpha identifier and what follows it, each padded
// with FF to 14 bytes.
inline std::vector<std::uint8_t> KnownRecord(std::vector<std::uint8_t> alpha,
                                             std::vector<std::uint8_t> number) {
  alpha.resize(14, 0xFF);
  number.resize(14, 0xFF);
  alpha.insert(alpha.end(), number.begin(), number.end());
  return alpha;
}

inline std::vector<KnownFile> KnownFiles() {
  KnownFile phonebook{kKnownPhonebook, 28, {}};
  phonebook.records.assign(kKnownTotal, KnownRecord({}, {}));
  phonebook.records[1] = KnownRecord({0x41, 0x64, 0x61}, {0x05, 0x91, 0x44, 0x02, 0x21, 0xF3});
  phonebook.records[4] =
      KnownRecord({0x80, 0x04, 0x16, 0x04, 0x30, 0x04, 0x3D}, {0x03, 0x81, 0x30, 0x10});
  phonebook.records[8] = KnownRecord({}, {0x03, 0x81, 0x11, 0xF2});

  KnownFile ownNumbers{kKnownOwnNumbers, 28, {}};
  ownNumbers.records = {KnownRecord({0x4D, 0x65}, {0x04, 0x91, 0x94, 0x71, 0x10}),
                        KnownRecord({}, {})};

  std::vector<std::uint8_t> message(176, 0xFF);
  message[0] = 0x01;  // received and read
  std::vector<std::uint8_t> free(176, 0xFF);
  free[0] = 0x00;
  return {phonebook, ownNumbers, {kKnownMessages, 176, {message, free, free}}};
}

}  // namespace kelpin::contract
