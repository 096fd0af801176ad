#include "app/readiness.h"

#include "app/app_state.h"
#include "app/card_error.h"
#include "res/ids.h"

namespace kelpin::app {
namespace {

// True for success; a failure is shown.
bool Accept(AppState& state, platform::SimResult result) {
  ShowCardError(state, state.mainDialog, result);
  return Succeeded(result);
}

}  // namespace

bool CardIsReady(AppState& state) {
  return Accept(state, state.simPhonebook.ReadStatus());
}

bool LimitsAreKnown(AppState& state) {
  return Accept(state, state.simPhonebook.ReadCaps());
}

bool MayAddEntry(AppState& state) {
  if (!CardIsReady(state)) {
    return false;
  }
  const bool full = state.settings.SIM_Full_Detect != 0 && state.simPhonebook.FirstFreeSlot() == 0;
  return !full || Accept(state, platform::SimResult::kSimFull);
}

bool MayEditEntry(AppState& state) {
  ui::ListView* const list = state.dialog->List(res::kMainList);
  if (list == nullptr || IsListLoading(state) || list->SelectedCount() == 0) {
    return false;
  }
  return CardIsReady(state);
}

}  // namespace kelpin::app
