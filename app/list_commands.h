#pragma once

namespace kelpin::app {

struct AppState;

// Commands of the main list that need nothing but the list. Screen thread.

// Select All.
void SelectAllRows(AppState& state);
// The numbers of the selected rows to the clipboard, a line each; nothing when no row is selected.
void CopyNumbers(AppState& state);

}  // namespace kelpin::app
