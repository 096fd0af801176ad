#pragma once

#include "app/help.h"
#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::views {

// What the views have in common. Screen thread.

// Runs a dialog of the program modally; its result.
int RunDialog(app::AppState& state, int dialog, ui::WindowHandle owner, ui::DialogHandler& handler);
// A bar of the resources at the dialog's foot.
ui::MenuBar* CreateBar(ui::Dialog& dialog, int bar);
using app::ShowHelp;

}  // namespace kelpin::views
