#pragma once

#include <optional>
#include <string>

namespace kelpin::app {
struct AppState;
}

namespace kelpin::views {

// What an entry of the card can be called or written at. Empty is none.
struct EntryContact {
  std::u16string name;
  std::u16string number;
  std::u16string number2;
  std::u16string number3;
  std::u16string email;
};

// Entries beyond this location have no extended fields to call or write to.
inline constexpr unsigned kLastExtendedIndex = 1000;

// The first selected row of the main list, else the focused one, with what the card has beside it.
// None when there is no row, or the card does not answer, which was shown then. Screen thread.
std::optional<EntryContact> CollectContact(app::AppState& state, bool withEmail);

}  // namespace kelpin::views
