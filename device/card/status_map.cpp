#include "device/card/status_map.h"

#include <algorithm>
#include <array>

namespace kelpin::device::card {
namespace {

using platform::SimResult;

// A status word, or all that share its first byte (mask FF00) or three nibbles (mask FFF0).
struct Row {
  std::uint16_t word;
  std::uint16_t mask;
  SimResult result;
};

// The first row that matches counts. Rows of one meaning stand together: class 00, then class A0.
constexpr auto kRows = std::to_array<Row>({
    {0x9000, 0xFFFF, SimResult::kOk},
    {0x9100, 0xFF00, SimResult::kOk},  // and a proactive command waits
    {0x9200, 0xFFF0, SimResult::kOk},  // after some retries inside the card
    {0x6283, 0xFFFF, SimResult::kOk},  // the selected file is invalidated

    {0x9240, 0xFFFF, SimResult::kMemoryFailure},
    {0x6500, 0xFF00, SimResult::kMemoryFailure},

    {0x6982, 0xFFFF, SimResult::kPinRequired},
    {0x9804, 0xFFFF, SimResult::kPinRequired},
    {0x9802, 0xFFFF, SimResult::kPinRequired},  // no PIN initialised
    {0x63C0, 0xFFF0, SimResult::kIncorrectPassword},
    {0x6983, 0xFFFF, SimResult::kPukRequired},
    {0x9840, 0xFFFF, SimResult::kPukRequired},

    // An invalidated file: the phone book is off while the fixed-dialling list is on.
    {0x6984, 0xFFFF, SimResult::kUnsupported},
    {0x6985, 0xFFFF, SimResult::kUnsupported},
    {0x9810, 0xFFFF, SimResult::kUnsupported},

    {0x6A82, 0xFFFF, SimResult::kUnsupported},  // the card has no such file
    {0x9404, 0xFFFF, SimResult::kUnsupported},
    {0x6A81, 0xFFFF, SimResult::kUnsupported},
    {0x6800, 0xFF00, SimResult::kUnsupported},
    {0x6D00, 0xFF00, SimResult::kUnsupported},
    {0x6E00, 0xFF00, SimResult::kUnsupported},

    {0x6A83, 0xFFFF, SimResult::kInvalidIndex},
    {0x9402, 0xFFFF, SimResult::kInvalidIndex},
    {0x6A84, 0xFFFF, SimResult::kSimFull},
    {0x6282, 0xFFFF, SimResult::kEntryNotFound},

    {0x6700, 0xFF00, SimResult::kBadParameter},
    {0x6A80, 0xFFFF, SimResult::kBadParameter},
    {0x6A86, 0xFFFF, SimResult::kBadParameter},
    {0x6A87, 0xFFFF, SimResult::kBadParameter},
    {0x6B00, 0xFF00, SimResult::kBadParameter},

    {0x9300, 0xFF00, SimResult::kToolkitBusy},
});

}  // namespace

SimResult ToSimResult(TransportError error) {
  switch (error) {
    case TransportError::kNone:
      return SimResult::kOk;
    case TransportError::kNoReader:
      return SimResult::kRadioNotPresent;
    case TransportError::kNoCard:
    case TransportError::kRemoved:
      return SimResult::kNotInserted;
    case TransportError::kReset:
      return SimResult::kNotReady;
    case TransportError::kTimeout:
      return SimResult::kUndetermined;
    case TransportError::kCommunication:
      return SimResult::kSimFailure;
    case TransportError::kBusy:
      return SimResult::kSimBusy;
    case TransportError::kStorage:
      return SimResult::kMemoryFailure;
    case TransportError::kRadioOff:
      return SimResult::kRadioOff;
    case TransportError::kPin2Needed:
      return SimResult::kPin2Required;
    case TransportError::kPuk2Needed:
      return SimResult::kPuk2Required;
  }
  return SimResult::kUndetermined;
}

SimResult ToSimResult(StatusWord word) {
  const auto value = static_cast<std::uint16_t>(word);
  const auto row = std::find_if(kRows.begin(), kRows.end(), [value](const Row& candidate) {
    return (value & candidate.mask) == candidate.word;
  });
  return row == kRows.end() ? SimResult::kSimFailure : row->result;
}

SimResult ToSimResult(const CardResult& result) {
  return result.Error() != TransportError::kNone ? ToSimResult(result.Error())
                                                 : ToSimResult(result.Word());
}

}  // namespace kelpin::device::card
