#pragma once

#include "app/ports.h"
#include "app/start_up.h"

namespace kelpin {

// The program on a device: its main dialog with every command it has. Returns the exit code.
int RunProgram(const app::Ports& ports, const app::EntryArguments& arguments = {});

}  // namespace kelpin
