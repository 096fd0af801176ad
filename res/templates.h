#pragma once

#include <span>

#include "ui/templates.h"

namespace kelpin::res {

// The 24 dialogs in English, by rising number. Controls stand in Tab order, which is also their
// order on the screen; every edit and list names the label that names it. A label's text is a
// default: the dialog's handler writes the one that the settings ask for.
std::span<const ui::DialogTemplate> Dialogs();

// In the language in use. Null for a number that no dialog has. The template lives as long as the
// program.
const ui::DialogTemplate* FindDialog(int id);

}  // namespace kelpin::res
