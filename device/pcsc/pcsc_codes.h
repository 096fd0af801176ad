#pragma once

#include <winscard.h>

#include <string>

#include "device/card/card_channel.h"

namespace kelpin::device::pcsc {

// What a code of the smart-card service means for the one who holds a card.
enum class Verdict {
  kDone,
  kNoService,    // no daemon answers: what was open with it is gone
  kNoReader,     // no such reader, or none at all
  kNoCard,       // the reader is empty
  kRemoved,      // the card of this session was taken out
  kReset,        // the card of this session was reset by somebody else
  kLost,         // the session is gone, and it is not known yet what became of the card
  kBusy,         // another program has the card for itself
  kTimedOut,     // nothing happened in time
  kCancelled,    // ended by ourselves
  kMuteOrAlien,  // a card that does not answer, or speaks neither T=0 nor T=1
  kFailed,       // garbled, cut or misused
};

Verdict Judge(LONG code);

// Whether everything known of the card (selection, PIN, which card it is) is void.
bool EndsSession(Verdict verdict);

card::TransportError ToTransportError(Verdict verdict);

}  // namespace kelpin::device::pcsc
