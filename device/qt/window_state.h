#pragma once

#include <filesystem>
#include <optional>

#include "ui/geometry.h"

namespace kelpin::qt {

// The main window's size, remembered in the file "window" of the program's state folder, one line
// a screen: a phone fills its own and has a window on the monitor that it is put to.
struct WindowState {
  ui::Size size = {480, 640};
  bool maximized = false;
  bool operator==(const WindowState&) const = default;
};

// What was saved for a screen of this size. Nothing when there is none or it does not make sense.
std::optional<WindowState> LoadWindowState(const std::filesystem::path& folder, ui::Size screen);
// Makes the folder when it is not there; false when it could not be saved. The sizes for the
// screens that were used last are kept.
bool SaveWindowState(const std::filesystem::path& folder, ui::Size screen,
                     const WindowState& state);

// $XDG_STATE_HOME/kelpin, else ~/.local/state/kelpin; empty when there is no home.
std::filesystem::path DefaultStateFolder();

}  // namespace kelpin::qt
