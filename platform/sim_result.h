#pragma once

#include <cstdint>

namespace kelpin::platform {

// Result codes of the SIM interface (the platform's published values). 0 is success.
// A type of its own, so that a dropped result does not compile.
enum class [[nodiscard]] SimResult : std::uint32_t{
    kOk = 0,

    kNotReady = 0x88000060,
    kNotReadyYet = 0x88000061,
    kBufferTooSmall = 0x88000062,
    kNotTextMessage = 0x88000063,
    kNoSim = 0x88000064,
    kNetworkError = 0x88000065,
    kMobileError = 0x88000066,
    kUnsupported = 0x88000067,
    kBadParameter = 0x88000068,
    kUndetermined = 0x88000069,
    kRadioNotPresent = 0x8800006A,
    kRadioOff = 0x8800006B,

    kPhSimPinRequired = 0x88000120,
    kPhFsimPinRequired = 0x88000121,
    kPhFsimPukRequired = 0x88000122,
    kPinRequired = 0x88000123,
    kPukRequired = 0x88000124,
    kIncorrectPassword = 0x88000125,
    kPin2Required = 0x88000126,
    kPuk2Required = 0x88000127,
    kNetworkPinRequired = 0x88000128,
    kNetworkPukRequired = 0x88000129,
    kSubsetPinRequired = 0x8800012A,
    kSubsetPukRequired = 0x8800012B,
    kProviderPinRequired = 0x8800012C,
    kProviderPukRequired = 0x8800012D,
    kCorporatePinRequired = 0x8800012E,
    kCorporatePukRequired = 0x8800012F,

    kSimFailure = 0x88000201,
    kSimBusy = 0x88000202,
    kWrongSim = 0x88000203,
    kNoMessageStorage = 0x88000204,
    kToolkitBusy = 0x88000205,
    kDownloadError = 0x88000206,
    kNotInserted = 0x88000207,

    kSimFull = 0x88000340,
    kInvalidIndex = 0x88000341,
    kEntryNotFound = 0x88000342,
    kMemoryFailure = 0x88000343,
    kMessageMemoryFull = 0x88000344,
    kEntryEmpty = 0x88000345,

    // Ours: the location no longer holds what the caller knows of it.
    kEntryChanged = 0x88010001,
};

constexpr bool Succeeded(SimResult result) {
  return result == SimResult::kOk;
}

}  // namespace kelpin::platform
