#pragma once

namespace kelpin::app {

struct AppState;

// The help viewer on the program's help. Screen thread.
void ShowHelp(AppState& state);

}  // namespace kelpin::app
