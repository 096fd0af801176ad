#pragma once

#include <cstdint>

namespace kelpin::device::softcard {

// What the card has to say about a command, before it is put into the words of the command's class.
enum class Status {
  kOk,
  kFileNotFound,
  kNoFileSelected,
  kWrongFileKind,
  kRecordNotFound,
  kOffsetOutside,
  kNotAllowed,  // an access condition is not fulfilled
  kPinBlocked,
  kPinStateContradicts,  // the PIN is disabled, or enabled already
  kNoSuchPin,
  kFileDeactivated,
  kSelectedDeactivated,  // the selection succeeded
  kPatternNotFound,
  kEndOfFile,  // fewer bytes than asked for
  kWrongLength,
  kLengthContradicts,  // of P1 and P2
  kWrongParameters,
  kWrongData,
  kFunctionMissing,
  kUnknownInstruction,
  kWrongClass,
  kNoSuchChannel,
  kSecureMessaging,
  kNothingPending,
  kChannelClosed,
  kMemoryProblem,
};

// The status word of class 00 (TS 102 221 10.2.1) or of class A0 (TS 51.011 9.4).
constexpr std::uint16_t StatusWord(Status status, bool gsm) {
  struct Words {
    std::uint16_t uicc;
    std::uint16_t gsm;
  };
  const auto words = [status]() -> Words {
    switch (status) {
      case Status::kOk:
        return {0x9000, 0x9000};
      case Status::kFileNotFound:
        return {0x6A82, 0x9404};
      case Status::kNoFileSelected:
        return {0x6986, 0x9400};
      case Status::kWrongFileKind:
        return {0x6981, 0x9408};
      case Status::kRecordNotFound:
        return {0x6A83, 0x9402};
      case Status::kOffsetOutside:
        return {0x6B00, 0x9402};
      case Status::kNotAllowed:
        return {0x6982, 0x9804};
      case Status::kPinBlocked:
        return {0x6983, 0x9840};
      case Status::kPinStateContradicts:
        return {0x6984, 0x9808};
      case Status::kNoSuchPin:
        return {0x6A88, 0x9802};
      case Status::kFileDeactivated:
        return {0x6984, 0x9810};
      case Status::kSelectedDeactivated:
        return {0x6283, 0x9000};  // class A0 tells it in the file status byte
      case Status::kPatternNotFound:
        return {0x6282, 0x9404};
      case Status::kEndOfFile:
        return {0x6282, 0x9402};
      case Status::kWrongLength:
        return {0x6700, 0x6700};
      case Status::kLengthContradicts:
        return {0x6A87, 0x6700};
      case Status::kWrongParameters:
        return {0x6A86, 0x6B00};
      case Status::kWrongData:
        return {0x6A80, 0x6F00};
      case Status::kFunctionMissing:
        return {0x6A81, 0x6D00};
      case Status::kUnknownInstruction:
        return {0x6D00, 0x6D00};
      case Status::kWrongClass:
        return {0x6E00, 0x6E00};
      case Status::kNoSuchChannel:
        return {0x6881, 0x6E00};
      case Status::kSecureMessaging:
        return {0x6882, 0x6E00};
      case Status::kNothingPending:
        return {0x6985, 0x6F00};
      case Status::kChannelClosed:
        return {0x6200, 0x6200};
      case Status::kMemoryProblem:
        return {0x6581, 0x9240};
    }
    return {0x6F00, 0x6F00};
  }();
  return gsm ? words.gsm : words.uicc;
}

}  // namespace kelpin::device::softcard
