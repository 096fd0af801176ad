#pragma once

#include <cstddef>
#include <string>

namespace kelpin::app {

struct AppState;

inline constexpr std::size_t kHeaderTextRoom = 260;  // UTF-16 units of the header, with its end

// Asks the radio for the card's own number and shows it in the main list's header. 1 when it is
// shown, or when an update is under way. 0 when the card could not be asked: its result code is
// shown, and from then on every call answers 1 at once and the header keeps its text, so that a
// card that fails is not asked again at each of its events. `told` is as for ShowCardError. Any
// thread but a radio callback's.
int UpdateOwnNumberHeader(AppState& state, std::u16string* told = nullptr);

}  // namespace kelpin::app
