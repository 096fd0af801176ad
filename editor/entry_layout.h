#pragma once

#include "editor/entry_form.h"
#include "ui/geometry.h"

namespace kelpin::app {
struct AppSettings;
}
namespace kelpin::ui {
class Dialog;
}

namespace kelpin::editor {

// Shows what the settings ask for and hides the rest.
void ShowFields(ui::Dialog& dialog, const EntryControls& controls,
                const app::AppSettings& settings);

// Stacks the controls that are shown, each label over its edit, over the width of `client`. The
// button of a number stands at the right end of its label's row, that of the group at the right end
// of its edit. What is hidden takes no room.
void PlaceFields(ui::Dialog& dialog, const EntryControls& controls, ui::Size client,
                 const ui::Metrics& metrics);

}  // namespace kelpin::editor
