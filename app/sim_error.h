#pragma once

#include <cstdint>

#include "platform/sim_result.h"
#include "ui/dialog.h"

namespace kelpin::ui {
class Screen;
}

namespace kelpin::app {

// The program's own result codes: the entry was written, one of its extended fields was not.
inline constexpr std::uint32_t kNumber2NotWritten = 256;
inline constexpr std::uint32_t kEmailNotWritten = 257;
inline constexpr std::uint32_t kNumber3NotWritten = 258;
inline constexpr std::uint32_t kNicknameNotWritten = 259;

// The number of the string that tells what `code` means; a general one for codes not known.
int SimErrorString(std::uint32_t code);

// Tells the user what a result code means; nothing for 0. Any thread; returns when the box is
// closed.
void ShowSimError(ui::Screen& screen, ui::WindowHandle owner, std::uint32_t code);
void ShowSimError(ui::Screen& screen, ui::WindowHandle owner, platform::SimResult result);

}  // namespace kelpin::app
