#pragma once

namespace kelpin::app {

struct AppState;

// What is asked before a command opens anything. Each tells the user why not, once, and then
// answers false; the command does nothing more. Screen thread.

// The card answers; its used and total figures are those of now.
[[nodiscard]] bool CardIsReady(AppState& state);
// The card tells its limits.
[[nodiscard]] bool LimitsAreKnown(AppState& state);
// An entry may be added: the card is ready and, where the settings want that known beforehand, has
// a free location.
[[nodiscard]] bool MayAddEntry(AppState& state);
// The selected entry may be edited. While a load runs, or without a selection, false without a
// word.
[[nodiscard]] bool MayEditEntry(AppState& state);

}  // namespace kelpin::app
