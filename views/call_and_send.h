#pragma once

namespace kelpin::app {
struct AppState;
}

namespace kelpin::views {

// Calls the selected entry, or the focused one: at once when it has one number, else the number
// that is chosen.
void CallSelectedEntry(app::AppState& state);
// Writes to the number or e-mail address that is chosen.
void SendToSelectedEntry(app::AppState& state);

}  // namespace kelpin::views
