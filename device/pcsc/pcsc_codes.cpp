#include "device/pcsc/pcsc_codes.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace kelpin::device::pcsc {
namespace {

struct Row {
  LONG code;
  Verdict verdict;
};

// What a code is told for was found by trying; a daemon that was killed answers with a security
// violation, one that was ended with a communication error.
constexpr auto kRows = std::to_array<Row>({
    {SCARD_S_SUCCESS, Verdict::kDone},

    {SCARD_E_NO_SERVICE, Verdict::kNoService},
    {SCARD_E_SERVICE_STOPPED, Verdict::kNoService},
    {SCARD_F_COMM_ERROR, Verdict::kNoService},
    {SCARD_W_SECURITY_VIOLATION, Verdict::kNoService},
    {SCARD_E_INVALID_HANDLE, Verdict::kNoService},
    {SCARD_F_INTERNAL_ERROR, Verdict::kNoService},

    {SCARD_E_NO_READERS_AVAILABLE, Verdict::kNoReader},
    {SCARD_E_UNKNOWN_READER, Verdict::kNoReader},
    {SCARD_E_READER_UNAVAILABLE, Verdict::kNoReader},

    {SCARD_E_NO_SMARTCARD, Verdict::kNoCard},
    {SCARD_W_REMOVED_CARD, Verdict::kRemoved},
    {SCARD_W_RESET_CARD, Verdict::kReset},
    {SCARD_W_UNPOWERED_CARD, Verdict::kReset},
    {SCARD_E_NOT_TRANSACTED, Verdict::kLost},

    {SCARD_E_SHARING_VIOLATION, Verdict::kBusy},
    {SCARD_E_TIMEOUT, Verdict::kTimedOut},
    {SCARD_E_CANCELLED, Verdict::kCancelled},

    {SCARD_W_UNRESPONSIVE_CARD, Verdict::kMuteOrAlien},
    {SCARD_W_UNSUPPORTED_CARD, Verdict::kMuteOrAlien},
    {SCARD_E_PROTO_MISMATCH, Verdict::kMuteOrAlien},

    // The card carried the command out, and its answer is cut.
    {SCARD_E_INSUFFICIENT_BUFFER, Verdict::kFailed},
});

}  // namespace

Verdict Judge(LONG code) {
  // On a machine of 64 bits a code may come with its upper half set or clear.
  const auto low = static_cast<std::uint32_t>(code);
  const auto row = std::find_if(kRows.begin(), kRows.end(), [low](const Row& candidate) {
    return static_cast<std::uint32_t>(candidate.code) == low;
  });
  return row == kRows.end() ? Verdict::kFailed : row->verdict;
}

bool EndsSession(Verdict verdict) {
  switch (verdict) {
    case Verdict::kNoService:
    case Verdict::kNoReader:
    case Verdict::kNoCard:
    case Verdict::kRemoved:
    case Verdict::kReset:
    case Verdict::kLost:
      return true;
    case Verdict::kDone:
    case Verdict::kBusy:
    case Verdict::kTimedOut:
    case Verdict::kCancelled:
    case Verdict::kMuteOrAlien:
    case Verdict::kFailed:
      return false;
  }
  return true;
}

card::TransportError ToTransportError(Verdict verdict) {
  using card::TransportError;
  switch (verdict) {
    case Verdict::kDone:
      return TransportError::kNone;
    case Verdict::kNoService:
    case Verdict::kNoReader:
      return TransportError::kNoReader;
    case Verdict::kNoCard:
      return TransportError::kNoCard;
    case Verdict::kRemoved:
      return TransportError::kRemoved;
    case Verdict::kReset:
    case Verdict::kLost:
      return TransportError::kReset;
    case Verdict::kBusy:
      return TransportError::kBusy;
    case Verdict::kTimedOut:
    case Verdict::kCancelled:
      return TransportError::kTimeout;
    case Verdict::kMuteOrAlien:
    case Verdict::kFailed:
      return TransportError::kCommunication;
  }
  return TransportError::kCommunication;
}

}  // namespace kelpin::device::pcsc
