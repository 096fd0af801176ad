#pragma once

#include <cstdint>
#include <string>

namespace kelpin::app {
struct AppState;
}

namespace kelpin::contacts {

// How an entry's field went to the card.
enum class [[nodiscard]] FieldOutcome{
    kWritten,
    kNoPlace,  // the card keeps no such field for this entry; there was something to write
    kFailed,
};

// Writes an entry's second number, or e-mail; nothing clears it. A new entry has no field yet.
FieldOutcome WriteNumber2(app::AppState& state, std::uint32_t index, const std::u16string& number,
                          bool isNew);
FieldOutcome WriteEmail(app::AppState& state, std::uint32_t index, const std::u16string& email,
                        bool isNew);

// Whether the card has the entry with this name and number, as a reading of it says. A '+' counts
// wherever the card has it.
[[nodiscard]] bool CardHasEntry(app::AppState& state, std::uint32_t index,
                                const std::u16string& name, const std::u16string& number);
// Whether it has this second number, or e-mail, with the entry; having none is having nothing.
[[nodiscard]] bool CardHasNumber2(app::AppState& state, std::uint32_t index,
                                  const std::u16string& number);
[[nodiscard]] bool CardHasEmail(app::AppState& state, std::uint32_t index,
                                const std::u16string& email);

}  // namespace kelpin::contacts
