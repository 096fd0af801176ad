#include "editor/editor_dialog.h"

#include "app/app_state.h"
#include "app/card_error.h"
#include "app/card_hold.h"
#include "res/menus.h"
#include "res/templates.h"

namespace kelpin::editor {

void RunDialog(app::AppState& state, int dialog, ui::WindowHandle owner,
               ui::DialogHandler& handler) {
  if (const ui::DialogTemplate* const resource = res::FindDialog(dialog)) {
    const app::CardHold hold(state);
    state.ports.screen.DialogBox(*resource, owner, handler);
  }
}

void SetUpDialog(app::AppState& state, ui::Dialog& dialog, int bar, bool inputPanelDown) {
  dialog.SetFullScreen(true, inputPanelDown);
  dialog.SetTitle(state.appTitle);
  if (const ui::MenuBarTemplate* const resource = res::FindMenuBar(bar)) {
    dialog.CreateMenuBar(*resource);
  }
}

bool CardAnswers(app::AppState& state, ui::Dialog& dialog) {
  platform::SimResult result = state.simPhonebook.ReadCaps();
  if (Succeeded(result) && app::CardIsExchanged(state)) {
    result = platform::SimResult::kWrongSim;
  }
  app::ShowCardError(state, dialog.Handle(), result);
  return Succeeded(result);
}

}  // namespace kelpin::editor
