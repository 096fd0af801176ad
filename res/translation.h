#pragma once

#include <span>
#include <string_view>

#include "ui/templates.h"

namespace kelpin::res {

// A resource in the language in use; in English the one that is given. What is returned lives
// until the language is changed.
std::u16string_view Translated(int id, std::u16string_view english);
const ui::DialogTemplate& Translated(const ui::DialogTemplate& english);
const ui::MenuBarTemplate& Translated(const ui::MenuBarTemplate& english);
std::span<const ui::MenuItemTemplate> Translated(std::span<const ui::MenuItemTemplate> english);

}  // namespace kelpin::res
