#pragma once

#include <string>

namespace kelpin::test {

// A key as the user presses it: it comes to the window that has the keyboard, or to none. `name` is
// X's ("y", "Return", "Escape"). False when no window has the keyboard.
bool PressKey(const std::string& name);

}  // namespace kelpin::test
