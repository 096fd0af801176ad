#pragma once

#include <filesystem>
#include <optional>

#include "ui/geometry.h"

namespace kelpin::qt {

// The main window's size, remembered in the file "window" of the program's state folder.
struct WindowState {
  ui::Size size = {480, 640};
  bool maximized = false;
  bool operator==(const WindowState&) const = default;
};

// Nothing when the file is not there or does not make sense.
std::optional<WindowState> LoadWindowState(const std::filesystem::path& folder);
// Makes the folder when it is not there; false when it could not be saved.
bool SaveWindowState(const std::filesystem::path& folder, const WindowState& state);

// $XDG_STATE_HOME/kelpin, else ~/.local/state/kelpin; empty when there is no home.
std::filesystem::path DefaultStateFolder();

}  // namespace kelpin::qt
