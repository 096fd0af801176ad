#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::editor {

struct NameListState;

// A name of the card that stands before a phone number.
struct NumberName {
  std::uint32_t id = 0;  // its record; 0 for none
  std::u16string label;  // the number's label: the name or, for none, the usual one

  bool operator==(const NumberName&) const = default;
};

inline constexpr std::size_t kGroupIds = 10;

// The groups of an entry.
struct GroupSelection {
  std::array<std::uint8_t, kGroupIds> ids = {};  // records of the names, 0 for an empty slot
  std::u16string text;                           // their names, ", " between them; may be empty

  bool operator==(const GroupSelection&) const = default;
};

// Where the entry dialogs let the user pick from the card's name lists. Each call shows a modal
// dialog over `owner` and returns when it has ended: what was chosen, nothing when the user left it
// unchanged. `button` is the one that was pressed. Screen thread.
class Pickers {
 public:
  // The lists' state, one for each of the two. Everything outlives this.
  Pickers(app::AppState& state, NameListState& numberNames, NameListState& groupNames)
      : state_(state), numberNames_(numberNames), groupNames_(groupNames) {}

  std::optional<NumberName> OpenNumberNamePicker(int button, ui::WindowHandle owner);
  // The boxes of `current` are checked at first.
  std::optional<GroupSelection> OpenGroupPicker(int button, ui::WindowHandle owner,
                                                const GroupSelection& current);

 private:
  app::AppState& state_;
  NameListState& numberNames_;
  NameListState& groupNames_;
};

}  // namespace kelpin::editor
