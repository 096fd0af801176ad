#pragma once

#include <string_view>

namespace kelpin::app {
struct AppState;
}

namespace kelpin::views {

enum class AddressKind { kNumber = 0, kEmail = 1 };

// Starts the composer that the settings choose for this kind of address. One that cannot be started
// is not reported. Screen thread.
void ComposeMessage(app::AppState& state, AddressKind kind, std::u16string_view name,
                    std::u16string_view address);

}  // namespace kelpin::views
