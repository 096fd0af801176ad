#pragma once

#include <cstdint>

#include "app/delete_entries.h"

namespace kelpin::app {

struct AppState;

// Reads where the card keeps the extended fields that the settings switch on. On the load's thread.
void LoadExtendedLayout(AppState& state);
// Clears one field of the entry at `index`, where the card has it. What fails is not told.
void ClearExtendedField(AppState& state, std::uint32_t index, ExtendedField field);

}  // namespace kelpin::app
