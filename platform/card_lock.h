#pragma once

#include <cstdint>
#include <string_view>

#include "platform/sim_result.h"

namespace kelpin::platform {

// What the card says of the PIN that guards its phone book.
struct CardLockState {
  bool wanted = false;        // nothing can be read before the PIN, or the PUK, was taken
  bool blocked = false;       // the PIN was wrong too often: the PUK is wanted
  int triesLeft = -1;         // of the PIN; -1: the card does not tell
  int unblockTriesLeft = -1;  // of the PUK; 0: the card is blocked for good
  std::uint32_t powerUp = 0;  // another one whenever the card lost what was verified
  bool operator==(const CardLockState&) const = default;
};

// What came of presenting a code.
enum class [[nodiscard]] CardLockResult{
    kTaken,    // the card is open
    kRefused,  // the code is wrong and has cost a try
    kBlocked,  // the code was wrong and that was the last try; or blocked before, nothing sent
    kLastTry,  // nothing was sent: one try is left
    kRefusedBefore,  // nothing was sent: the card refused this code in this run
    kNoCode,         // nothing was sent: not a code of the right length in digits alone
    kFailed,         // the card did not answer, or not to that; whether a try is lost is not known
};

enum class LastTry { kKeep, kRisk };  // what becomes of the last try

// The lock of the card that is in now. Codes are digits: a PIN has 4 to 8, a PUK has 8. A code is
// sent at most once by each call, is kept by nobody, and a code that the card has refused is not
// sent to that card again. Calls block until the card answers; any thread.
class CardLock {
 public:
  virtual ~CardLock() = default;

  // Sends no code. On failure `state` is left as it was.
  virtual SimResult GetLockState(CardLockState& state) = 0;
  // A card that wants no PIN takes any, unsent. `after` is what the card says afterwards; left as
  // it was when the card was not asked.
  virtual CardLockResult VerifyPin(std::string_view pin, LastTry lastTry, CardLockState& after) = 0;
  // Opens a blocked card and gives it a new PIN. A card that is not blocked takes nothing: kFailed.
  virtual CardLockResult UnblockPin(std::string_view unblockingCode, std::string_view newPin,
                                    LastTry lastTry, CardLockState& after) = 0;
  // Codes will be typed: from here on the device keeps the program's memory to itself.
  virtual void ExpectCode() = 0;
};

}  // namespace kelpin::platform
