#pragma once

#include <string_view>

namespace kelpin::app {
struct AppState;
}

namespace kelpin::views {

// Hands a call to the telephone: the number that is dialled and the name that is shown. A call that
// could not be handed over is not reported. Screen thread.
void MakeCall(app::AppState& state, std::u16string_view name, std::u16string_view number);

}  // namespace kelpin::views
