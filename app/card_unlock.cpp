#include "app/card_unlock.h"

#include "app/app_state.h"
#include "app/card_code_dialog.h"
#include "res/ids.h"
#include "res/strings.h"

namespace kelpin::app {
namespace {

using platform::CardLockResult;
using platform::CardLockState;
using platform::LastTry;

CardLockResult Present(platform::CardLock& lock, const CardCodeDialog& asked, bool blocked,
                       LastTry lastTry, CardLockState& after) {
  return blocked ? lock.UnblockPin(asked.Code().Digits(), asked.NewPin().Digits(), lastTry, after)
                 : lock.VerifyPin(asked.Code().Digits(), lastTry, after);
}

bool RisksLastTry(ui::Screen& screen, ui::WindowHandle owner, bool blocked) {
  const int text = blocked ? res::kTextPukLastTryQuestion : res::kTextPinLastTryQuestion;
  return screen.MessageBox(owner, res::LoadString(text), res::LoadString(res::kStringWarning),
                           ui::kBoxQuestion) == ui::BoxAnswer::kYes;
}

// The text that says why a code was not taken, 0 when there is nothing to say.
int Problem(CardLockResult result, bool blocked) {
  switch (result) {
    case CardLockResult::kRefused:
      return blocked ? res::kTextPukRefused : res::kTextPinRefused;
    case CardLockResult::kRefusedBefore:
      return blocked ? res::kTextPukRefusedBefore : res::kTextPinRefusedBefore;
    case CardLockResult::kNoCode:
      return blocked ? res::kTextPukDigits : res::kTextPinDigits;
    case CardLockResult::kFailed:
      return res::kTextCodeNotAnswered;
    case CardLockResult::kTaken:
    case CardLockResult::kBlocked:
    case CardLockResult::kLastTry:
      break;
  }
  return 0;
}

}  // namespace

bool UnlockCard(platform::CardLock& lock, ui::Screen& screen, ui::WindowHandle owner) {
  int problem = 0;
  for (;;) {
    CardLockState state;
    if (!Succeeded(lock.GetLockState(state)) || !state.wanted) {
      return true;
    }
    const bool blocked = state.blocked;
    if (blocked && state.unblockTriesLeft == 0) {
      screen.MessageBox(owner, res::LoadString(res::kTextBlockedForGood),
                        res::LoadString(res::kStringError), ui::kBoxError);
      return false;
    }
    lock.ExpectCode();
    CardCodeDialog dialog(screen, state, problem);
    if (!dialog.Ask(owner)) {
      return false;
    }
    CardLockResult result = Present(lock, dialog, blocked, LastTry::kKeep, state);
    if (result == CardLockResult::kLastTry && RisksLastTry(screen, owner, blocked)) {
      result = Present(lock, dialog, blocked, LastTry::kRisk, state);
    }
    if (result == CardLockResult::kTaken) {
      return true;
    }
    problem = Problem(result, blocked);
  }
}

void UnlockCardWith(platform::CardLock& lock, SecretCode& code) {
  CardLockState state;
  if (!code.Empty() && Succeeded(lock.GetLockState(state)) && state.wanted && !state.blocked) {
    // Whatever came of it, the card is asked again what it wants.
    static_cast<void>(lock.VerifyPin(code.Digits(), LastTry::kKeep, state));
  }
  code.Clear();
}

void UnlockForReading(AppState& state, bool byUser) {
  platform::CardLock* const lock = state.ports.cardLock;
  CardLockState now;
  if (lock == nullptr || !state.ports.attended || !Succeeded(lock->GetLockState(now)) ||
      !now.wanted || (!byUser && now.powerUp == state.declinedPowerUp)) {
    return;
  }
  if (!UnlockCard(*lock, state.ports.screen, state.mainDialog) &&
      Succeeded(lock->GetLockState(now))) {
    state.declinedPowerUp = now.powerUp;
  }
}

bool CardIsLocked(AppState& state) {
  if (state.ports.cardLock == nullptr) {
    return false;
  }
  const platform::SimResult result = state.simPhonebook.ReadStatus();
  return result == platform::SimResult::kPinRequired || result == platform::SimResult::kPukRequired;
}

}  // namespace kelpin::app
