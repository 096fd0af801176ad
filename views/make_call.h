#pragma once

#include <string_view>

#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::views {

// Hands a call to the telephone: the number that is dialled and the name that is shown. A number
// with more than digits, '+' and pauses in it, '*' or '#' above all, may be a service code, which
// changes settings of the phone or of the network: it is shown in full first, and dialled after a
// yes alone. A call that could not be handed over is not reported. Screen thread.
void MakeCall(app::AppState& state, ui::WindowHandle owner, std::u16string_view name,
              std::u16string_view number);

}  // namespace kelpin::views
