#pragma once

#include <functional>

#include "app/ports.h"
#include "app/start_up.h"
#include "app/wiring.h"

namespace kelpin {

// What the device may want to be told of. Each may be empty.
struct ProgramHooks {
  // After every load of the main list, on the load's thread.
  std::function<void(app::AppState& state)> listLoaded;
  // When the program ends, before it closes the card.
  std::function<void()> closing;
};

// What the main dialog runs and starts: every command, the layout of the card, the watchers.
app::Wiring ProgramWiring(const ProgramHooks& hooks = {});

// The program on a device: its main dialog with every command it has. Returns the exit code.
int RunProgram(const app::Ports& ports, const ProgramHooks& hooks = {},
               const app::EntryArguments& arguments = {});

}  // namespace kelpin
