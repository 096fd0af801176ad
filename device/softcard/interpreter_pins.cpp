// PINs and what they guard (TS 102 221 9 and 11.1.9 to 11.1.13; TS 51.011 8.9 to 8.13).

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "device/softcard/apdu_interpreter.h"

namespace kelpin::device::softcard {
namespace {

constexpr std::size_t kCodeLength = 8;  // digits, then FF

bool IsCode(std::span<const std::uint8_t> bytes, const std::string& digits) {
  for (std::size_t i = 0; i < kCodeLength; ++i) {
    const std::uint8_t wanted =
        i < digits.size() ? static_cast<std::uint8_t>(digits[i]) : std::uint8_t{0xFF};
    if (bytes[i] != wanted) {
      return false;
    }
  }
  return true;
}

// The digits of a new code; false when they are none: four to eight, then FF.
bool ReadCode(std::span<const std::uint8_t> bytes, std::string& digits) {
  const auto end = std::find_if_not(bytes.begin(), bytes.end(),
                                    [](std::uint8_t c) { return c >= '0' && c <= '9'; });
  if (end - bytes.begin() < 4 ||
      !std::all_of(end, bytes.end(), [](std::uint8_t c) { return c == 0xFF; })) {
    return false;
  }
  digits.assign(bytes.begin(), end);
  return true;
}

}  // namespace

bool ApduInterpreter::Fulfilled(Access access) const {
  switch (access) {
    case Access::kAlways:
      return true;
    case Access::kPin1:
      return !image_.pin1.enabled || pin1Verified_;
    case Access::kPin2:
      return image_.pin2 && (!image_.pin2->enabled || pin2Verified_);
    case Access::kAdm:
      return image_.adm && (!image_.adm->enabled || admVerified_);
    case Access::kNever:
      break;
  }
  return false;
}

// Class A0 counts CHV1 and CHV2, and says 00 for CHV1 where it is unblocked; class 00 has key
// references.
ApduInterpreter::Secret ApduInterpreter::FindPin(std::uint8_t reference, bool unblock) {
  const std::uint8_t first = gsm_ && unblock ? 0x00 : 0x01;
  const std::uint8_t second = gsm_ ? 0x02 : 0x81;
  if (reference == first) {
    return {&image_.pin1, &pin1Verified_};
  }
  if (reference == second && image_.pin2) {
    return {&*image_.pin2, &pin2Verified_};
  }
  if (reference == 0x0A && !gsm_ && image_.adm) {
    return {&*image_.adm, &admVerified_};
  }
  return {};
}

CommandResult ApduInterpreter::TriesLeft(int tries) const {
  if (tries == 0) {
    return Answer(Status::kPinBlocked);
  }
  return {static_cast<std::uint16_t>(0x63C0 | tries), {}, false};
}

CommandResult ApduInterpreter::Refused(int tries) const {
  if (gsm_) {
    return Answer(tries == 0 ? Status::kPinBlocked : Status::kNotAllowed);
  }
  return {static_cast<std::uint16_t>(0x63C0 | tries), {}, false};
}

// Presents a code. A wrong one costs a try, which is kept before the answer tells so; a right one
// gives the tries back and does what the command is for.
CommandResult ApduInterpreter::Present(const Secret& secret, std::span<const std::uint8_t> code,
                                       const std::function<void(Pin&)>& onSuccess) {
  Pin& pin = *secret.pin;
  if (pin.tries == 0) {
    return Answer(Status::kPinBlocked);
  }
  const Pin before = pin;
  const bool right = IsCode(code, pin.code);
  if (right) {
    pin.tries = Pin::kTries;
    onSuccess(pin);
  } else {
    --pin.tries;
    *secret.verified = false;
  }
  if (!KeepPin(pin, before)) {
    return Answer(Status::kMemoryProblem);
  }
  if (!right) {
    return Refused(pin.tries);
  }
  *secret.verified = true;
  return Answer(Status::kOk);
}

bool ApduInterpreter::KeepPin(Pin& pin, const Pin& before) {
  if (pin == before || persist_()) {
    return true;
  }
  pin = before;
  return false;
}

CommandResult ApduInterpreter::VerifyPin(const CommandApdu& command) {
  const Secret secret = FindPin(command.p2, false);
  if (command.p1 != 0) {
    return Answer(Status::kWrongParameters);
  }
  if (secret.pin == nullptr) {
    return Answer(Status::kNoSuchPin);
  }
  if (!command.hasData && !gsm_) {
    return TriesLeft(secret.pin->tries);  // without a code the command asks for the tries
  }
  if (command.data.size() != kCodeLength) {
    return WrongLength(kCodeLength);
  }
  if (!secret.pin->enabled) {
    return Answer(Status::kPinStateContradicts);
  }
  return Present(secret, command.data, [](Pin&) {});
}

CommandResult ApduInterpreter::ChangePin(const CommandApdu& command) {
  const Secret secret = FindPin(command.p2, false);
  if (command.p1 != 0) {
    return Answer(Status::kWrongParameters);
  }
  if (secret.pin == nullptr) {
    return Answer(Status::kNoSuchPin);
  }
  if (command.data.size() != 2 * kCodeLength) {
    return WrongLength(2 * kCodeLength);
  }
  if (!secret.pin->enabled) {
    return Answer(Status::kPinStateContradicts);
  }
  std::string digits;
  if (!ReadCode(command.data.subspan(kCodeLength), digits)) {
    return Answer(Status::kWrongData);
  }
  return Present(secret, command.data.first(kCodeLength),
                 [&digits](Pin& pin) { pin.code = digits; });
}

CommandResult ApduInterpreter::SwitchPin(const CommandApdu& command, bool enable) {
  const Secret secret = FindPin(command.p2, false);
  // Only PIN1 can be switched; class A0 names no other.
  if (command.p1 != 0 || (gsm_ && command.p2 != 0x01)) {
    return Answer(Status::kWrongParameters);
  }
  if (secret.pin == nullptr || secret.pin != &image_.pin1) {
    return Answer(Status::kNoSuchPin);
  }
  if (command.data.size() != kCodeLength) {
    return WrongLength(kCodeLength);
  }
  if (secret.pin->enabled == enable) {
    return Answer(Status::kPinStateContradicts);
  }
  return Present(secret, command.data, [enable](Pin& pin) { pin.enabled = enable; });
}

CommandResult ApduInterpreter::UnblockPin(const CommandApdu& command) {
  const Secret secret = FindPin(command.p2, true);
  if (command.p1 != 0) {
    return Answer(Status::kWrongParameters);
  }
  if (secret.pin == nullptr || secret.pin->puk.empty()) {
    return Answer(Status::kNoSuchPin);
  }
  Pin& pin = *secret.pin;
  if (!command.hasData && !gsm_) {
    return TriesLeft(pin.pukTries);
  }
  if (command.data.size() != 2 * kCodeLength) {
    return WrongLength(2 * kCodeLength);
  }
  std::string digits;
  if (!ReadCode(command.data.subspan(kCodeLength), digits)) {
    return Answer(Status::kWrongData);
  }
  if (pin.pukTries == 0) {
    return Answer(Status::kPinBlocked);
  }
  const Pin before = pin;
  const bool right = IsCode(command.data.first(kCodeLength), pin.puk);
  if (right) {
    // A PIN that is unblocked is in force again.
    pin.code = digits;
    pin.tries = Pin::kTries;
    pin.pukTries = Pin::kPukTries;
    pin.enabled = true;
  } else {
    --pin.pukTries;
  }
  if (!KeepPin(pin, before)) {
    return Answer(Status::kMemoryProblem);
  }
  if (!right) {
    return Refused(pin.pukTries);
  }
  *secret.verified = true;
  return Answer(Status::kOk);
}

}  // namespace kelpin::device::softcard
