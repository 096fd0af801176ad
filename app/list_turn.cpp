#include "app/list_turn.h"

#include "app/app_state.h"
#include "app/main_list.h"
#include "res/ids.h"

namespace kelpin::app {
namespace {

bool TakeNow(AppState& state) {
  if (state.loading.exchange(true)) {
    return false;
  }
  if (ui::ListView* const list = state.dialog->List(res::kMainList)) {
    list->SetNotifying(false);
  }
  return true;
}

void Free(AppState& state) {
  state.loading = false;
  state.loading.notify_all();
}

}  // namespace

bool TakeList(AppState& state) {
  while (!state.closing) {
    if (TakeNow(state)) {
      return true;
    }
    state.loading.wait(true);
  }
  return false;
}

bool TakeListOrAsk(AppState& state, int command) {
  if (TakeNow(state)) {
    return true;
  }
  state.listAsker = command;
  // Who gave the rows back before that did not see it. Whoever takes the command out posts it.
  if (!state.loading && state.listAsker.exchange(0) != 0) {
    state.dialog->PostCommand(command);
  }
  return false;
}

void GiveListBack(AppState& state) {
  // Before the rows are free: the next one who takes them turns the notifications off again.
  if (ui::ListView* const list = state.dialog->List(res::kMainList)) {
    list->SetNotifying(true);
  }
  Free(state);
  if (const int command = state.listAsker.exchange(0)) {
    state.dialog->PostCommand(command);
  }
}

void EndListTurns(AppState& state) {
  Free(state);
}

}  // namespace kelpin::app
