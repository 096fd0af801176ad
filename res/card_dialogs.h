#pragma once

#include "ui/templates.h"

// What is asked about the card before it is read: dialogs and soft keys of the program's own.
namespace kelpin::res {

inline constexpr int kDialogCardPin = 1001;
inline constexpr int kDialogCardPuk = 1002;
inline constexpr int kDialogOpeningCard = 1003;

inline constexpr int kBarCardCode = 1011;
inline constexpr int kBarOpeningCard = 1012;

inline constexpr int kCardCodeSend = 1021;
inline constexpr int kCardCodeCancel = 1022;
inline constexpr int kOpeningCancel = 1023;

// Controls of the PIN and of the PUK dialog; the first three are in both.
inline constexpr int kCardCodeTitle = 1031;
inline constexpr int kCardCodeText = 1032;
inline constexpr int kCardCodeProblem =
    1033;  // why it is asked again; shown when there is a reason
inline constexpr int kCardPinLabel = 1034;
inline constexpr int kCardPin = 1035;
inline constexpr int kCardPukLabel = 1036;
inline constexpr int kCardPuk = 1037;
inline constexpr int kNewPinLabel = 1038;
inline constexpr int kNewPin = 1039;
inline constexpr int kNewPinAgainLabel = 1040;
inline constexpr int kNewPinAgain = 1041;

inline constexpr int kOpeningTitle = 1042;
inline constexpr int kOpeningText = 1043;

// They live as long as the program.
const ui::DialogTemplate& CardPinDialog();
const ui::DialogTemplate& CardPukDialog();
const ui::DialogTemplate& OpeningCardDialog();
const ui::MenuBarTemplate& CardCodeBar();
const ui::MenuBarTemplate& OpeningCardBar();

}  // namespace kelpin::res
