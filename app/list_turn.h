#pragma once

namespace kelpin::app {

struct AppState;

// Who works on the main list's rows: a load, a watcher or a deletion, one at a time. The list's
// loading flag tells that somebody does; the list's notifications are not acted on meanwhile.

// Waits until nobody works on the rows and takes them. False when the program is ending: leave them
// alone. Not on the screen thread, which the one that has them may need.
[[nodiscard]] bool TakeList(AppState& state);
// The same without a wait, for the screen thread: when somebody else has the rows, false, and
// `command` comes to the main dialog once they are free. One caller at a time may ask.
[[nodiscard]] bool TakeListOrAsk(AppState& state, int command);
void GiveListBack(AppState& state);
// Ends every wait: nobody gets the rows any more. `state.closing` is set before.
void EndListTurns(AppState& state);

}  // namespace kelpin::app
