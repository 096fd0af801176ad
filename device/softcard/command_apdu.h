#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "device/softcard/status_word.h"

namespace kelpin::device::softcard {

inline constexpr std::uint8_t kGsmClass = 0xA0;

enum Instruction : std::uint8_t {
  kDeactivateFile = 0x04,
  kTerminalProfile = 0x10,
  kFetch = 0x12,
  kTerminalResponse = 0x14,
  kVerifyPin = 0x20,
  kChangePin = 0x24,
  kDisablePin = 0x26,
  kEnablePin = 0x28,
  kUnblockPin = 0x2C,
  kActivateFile = 0x44,
  kManageChannel = 0x70,
  kSearchRecord = 0xA2,  // SEEK in class A0
  kSelect = 0xA4,
  kReadBinary = 0xB0,
  kReadRecord = 0xB2,
  kGetResponse = 0xC0,
  kEnvelope = 0xC2,
  kUpdateBinary = 0xD6,
  kUpdateRecord = 0xDC,
  kStatus = 0xF2,
  kSleep = 0xFA,
};

// Whether the instruction carries a secret, which no trace may show.
constexpr bool CarriesPin(std::uint8_t instruction) {
  return instruction == kVerifyPin || instruction == kChangePin || instruction == kDisablePin ||
         instruction == kEnablePin || instruction == kUnblockPin;
}

// One short command (ISO/IEC 7816-4 5.1), taken apart.
struct CommandApdu {
  std::uint8_t cla = 0;
  std::uint8_t ins = 0;
  std::uint8_t p1 = 0;
  std::uint8_t p2 = 0;
  std::span<const std::uint8_t> data;
  bool hasData = false;
  std::optional<std::size_t> expected;  // Ne, 1..256

  bool IsGsm() const { return cla == kGsmClass; }
};

// False when the bytes are no command: too short, or lengths that contradict each other. The spans
// point into `bytes`.
inline bool ParseCommand(std::span<const std::uint8_t> bytes, CommandApdu& command) {
  if (bytes.size() < 4) {
    return false;
  }
  command = CommandApdu{bytes[0], bytes[1], bytes[2], bytes[3], {}, false, std::nullopt};
  if (bytes.size() == 4) {
    return true;
  }
  const std::size_t length = bytes[4];
  const auto expectation = [](std::size_t le) { return le == 0 ? std::size_t{256} : le; };
  if (bytes.size() == 5) {
    command.expected = expectation(length);
    return true;
  }
  if (length == 0 || (bytes.size() != 5 + length && bytes.size() != 6 + length)) {
    return false;
  }
  command.data = bytes.subspan(5, length);
  command.hasData = true;
  if (bytes.size() == 6 + length) {
    command.expected = expectation(bytes.back());
  }
  return true;
}

// What a command brought forth, before the transport protocol cuts it into answers.
struct CommandResult {
  std::uint16_t statusWord = 0x9000;
  std::vector<std::uint8_t> data;
  // Fewer bytes than asked for are in order (STATUS and GET RESPONSE in class A0), or the answer
  // was made to the length asked for (READ BINARY).
  bool anyLength = false;
};

}  // namespace kelpin::device::softcard
