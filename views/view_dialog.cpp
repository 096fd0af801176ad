#include "views/view_dialog.h"

#include "app/app_state.h"
#include "res/menus.h"
#include "res/templates.h"

namespace kelpin::views {

int RunDialog(app::AppState& state, int dialog, ui::WindowHandle owner,
              ui::DialogHandler& handler) {
  const ui::DialogTemplate* const resource = res::FindDialog(dialog);
  return resource == nullptr ? ui::kDialogDone
                             : state.ports.screen.DialogBox(*resource, owner, handler);
}

ui::MenuBar* CreateBar(ui::Dialog& dialog, int bar) {
  const ui::MenuBarTemplate* const resource = res::FindMenuBar(bar);
  return resource == nullptr ? nullptr : dialog.CreateMenuBar(*resource);
}

}  // namespace kelpin::views
