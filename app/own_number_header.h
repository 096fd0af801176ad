#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace kelpin::app {

struct AppState;

inline constexpr std::size_t kHeaderTextRoom = 260;  // UTF-16 units of the header, with its end

// Asks the radio for the card's own number and shows it in the main list's header. 1 when it is
// shown, or when an update is under way. 0 when the card could not be asked: its result code is
// shown, and from then on every call answers 1 at once and the header keeps its text, so that a
// card that fails is not asked again at each of its events. What was shown of the card's trouble
// after `since`, or since the card was last reached, is not shown again. Any thread but a radio
// callback's.
int UpdateOwnNumberHeader(AppState& state, std::optional<std::uint32_t> since = std::nullopt);

}  // namespace kelpin::app
