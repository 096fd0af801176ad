#pragma once

#include <functional>

namespace kelpin::app {

struct AppState;
class Commands;
class ListLoader;

// What stands above the main dialog and that it starts without knowing it. Each may be empty.
struct Wiring {
  // Registers what runs the commands. Once, before the main dialog opens.
  std::function<void(AppState& state, Commands& commands, ListLoader& loader)> fillCommands;
  // Reads where the card keeps the extended fields. At every load, on the load's thread.
  std::function<void(AppState& state)> loadLayout;
  // After every load, on the load's thread, when the list is shown again.
  std::function<void(AppState& state)> listLoaded;
  // When the main dialog ends, before it closes the card: nobody waits for that any more.
  std::function<void()> closing;
  // Starts the threads that keep the list in step with the card. Once, after the first load was
  // started; screen thread.
  std::function<void(AppState& state, Commands& commands, ListLoader& loader)> startWatchers;
};

}  // namespace kelpin::app
