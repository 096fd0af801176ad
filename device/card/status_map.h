#pragma once

#include "device/card/card_result.h"
#include "platform/sim_result.h"

namespace kelpin::device::card {

// The one place where what a transport or a card says becomes a result of the SIM interface.
platform::SimResult ToSimResult(TransportError error);
platform::SimResult ToSimResult(StatusWord word);
platform::SimResult ToSimResult(const CardResult& result);

// After this error of an update nobody knows whether the card carried it out.
constexpr bool LeavesDoubt(TransportError error) {
  switch (error) {
    case TransportError::kNone:
    case TransportError::kBusy:     // nothing was sent
    case TransportError::kStorage:  // the card kept the old content
    case TransportError::kRadioOff:
    case TransportError::kPin2Needed:
    case TransportError::kPuk2Needed:
      return false;
    case TransportError::kNoReader:
    case TransportError::kNoCard:
    case TransportError::kRemoved:
    case TransportError::kReset:
    case TransportError::kTimeout:
    case TransportError::kCommunication:
      return true;
  }
  return true;
}

}  // namespace kelpin::device::card
