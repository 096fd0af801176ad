#pragma once

namespace kelpin::app {

struct AppState;
class Commands;

// Starts the four threads that keep the main list in step with the card: entries that were stored,
// entries that were deleted, the own numbers, the whole phone book. In this order; when one cannot
// be made the rest are not. Each runs until its waits are abandoned, which the program's end does.
// Once, screen thread.
void StartWatchers(AppState& state, Commands& commands);

}  // namespace kelpin::app
