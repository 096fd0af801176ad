#pragma once

#include <atomic>
#include <chrono>
#include <string>

#include "app/app_state.h"
#include "device/qt/qt_screen.h"

namespace kelpin::start {

using SteadyTime = std::chrono::steady_clock::time_point;

// Whether all that was printed reached who reads it. What went wrong is told.
bool PrintedAll();

// Prints the card readers, and ends with the code that is returned.
int PrintReaders();

// Saves the picture, prints the list and ends the program. Screen thread, after the list was drawn.
void Report(qt::QtScreen& screen, app::AppState& state, const std::string& file, SteadyTime start,
            bool& saved);

// Prints boxes instead of showing them: nobody is there to answer one while a picture is taken.
// `failed` is set by one that tells of an error.
qt::QtScreen::BoxListener PrintBoxes(std::atomic<bool>& failed);

}  // namespace kelpin::start
