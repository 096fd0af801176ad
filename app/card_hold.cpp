#include "app/card_hold.h"

#include "app/app_state.h"
#include "res/ids.h"

namespace kelpin::app {

CardHold::CardHold(AppState& state) : state_(state) {
  if (state_.ports.cardUse != nullptr) {
    state_.ports.cardUse->Hold();
  }
}

CardHold::~CardHold() {
  if (state_.ports.cardUse == nullptr) {
    return;
  }
  state_.ports.cardUse->LetGo();
  if (CardIsExchanged(state_)) {
    state_.cardChanged = true;
    state_.dialog->PostCommand(res::kCommandRefresh);
  }
}

std::uint32_t CardGeneration(const AppState& state) {
  return state.ports.cardUse != nullptr ? state.ports.cardUse->Generation() : 0;
}

bool CardIsExchanged(const AppState& state) {
  return state.ports.cardUse != nullptr && state.ports.cardUse->IsExchanged();
}

bool CardIsGivenUp(const AppState& state) {
  return state.ports.cardUse != nullptr && state.ports.cardUse->IsGivenUp();
}

}  // namespace kelpin::app
