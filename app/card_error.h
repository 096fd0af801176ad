#pragma once

#include <cstdint>
#include <string>

#include "platform/sim_result.h"
#include "ui/dialog.h"

namespace kelpin::app {

struct AppState;

// Shows why the card cannot be reached in the device's own words, where it has some; else what the
// SIM result code means, as ShowSimError does. Words that are in `told`, where it is given, were
// shown before and are not shown again; what is shown is put there. Any thread.
void ShowCardError(AppState& state, ui::WindowHandle owner, std::uint32_t code,
                   std::u16string* told = nullptr);
void ShowCardError(AppState& state, ui::WindowHandle owner, platform::SimResult result,
                   std::u16string* told = nullptr);

}  // namespace kelpin::app
