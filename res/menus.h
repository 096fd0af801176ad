#pragma once

#include <span>

#include "ui/templates.h"

namespace kelpin::res {

// The soft-key bars in English, by rising number: those of the dialogs and the call chooser's.
std::span<const ui::MenuBarTemplate> MenuBars();

// In the language in use, as are the pop-ups. Null for a number that no bar has. The template lives
// as long as the program.
const ui::MenuBarTemplate* FindMenuBar(int id);

// Pop-ups that a press on a list or an edit opens.
std::span<const ui::MenuItemTemplate> MainListMenu();
std::span<const ui::MenuItemTemplate> OwnNumberMenu();
std::span<const ui::MenuItemTemplate> ServiceNumberMenu();
std::span<const ui::MenuItemTemplate> EditMenu();

}  // namespace kelpin::res
