#pragma once

#include "app/help.h"
#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::editor {

// What the dialogs on the card's names have in common. Screen thread.

// Runs a dialog of the program modally.
void RunDialog(app::AppState& state, int dialog, ui::WindowHandle owner,
               ui::DialogHandler& handler);
// Full screen with the Done button, the program's title and a bar of the resources.
void SetUpDialog(app::AppState& state, ui::Dialog& dialog, int bar, bool inputPanelDown);
// Whether the card answers; why not is told.
[[nodiscard]] bool CardAnswers(app::AppState& state, ui::Dialog& dialog);
using app::ShowHelp;

}  // namespace kelpin::editor
