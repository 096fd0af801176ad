#pragma once

namespace kelpin::qt {

// Makes a dialog's pop-up menu a part of the accessible tree for as long as it is open, drawn words
// texts, and message boxes alerts. Once, after the application object was made.
void InstallDialogAccessibility();

// The property that a widget has which draws words and nothing else.
inline constexpr char kIsText[] = "isText";

}  // namespace kelpin::qt
