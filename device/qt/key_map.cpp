#include "device/qt/key_map.h"

#include <array>

namespace kelpin::qt {
namespace {

struct Pair {
  int qt;
  ui::Key key;
};
constexpr std::array kKeys = {
    Pair{Qt::Key_Up, ui::Key::kUp},
    Pair{Qt::Key_Down, ui::Key::kDown},
    Pair{Qt::Key_Left, ui::Key::kLeft},
    Pair{Qt::Key_Right, ui::Key::kRight},
    Pair{Qt::Key_PageUp, ui::Key::kPageUp},
    Pair{Qt::Key_PageDown, ui::Key::kPageDown},
    Pair{Qt::Key_Home, ui::Key::kHome},
    Pair{Qt::Key_End, ui::Key::kEnd},
    Pair{Qt::Key_Return, ui::Key::kEnter},
    Pair{Qt::Key_Enter, ui::Key::kEnter},
    Pair{Qt::Key_Select, ui::Key::kEnter},
    Pair{Qt::Key_Escape, ui::Key::kEscape},
    Pair{Qt::Key_Space, ui::Key::kSpace},
    Pair{Qt::Key_Delete, ui::Key::kDelete},
    Pair{Qt::Key_Backspace, ui::Key::kBackspace},
    Pair{Qt::Key_Tab, ui::Key::kTab},
    Pair{Qt::Key_Backtab, ui::Key::kTab},
    Pair{Qt::Key_Menu, ui::Key::kMenu},
    Pair{Qt::Key_F1, ui::Key::kF1},
    Pair{Qt::Key_Help, ui::Key::kF1},
    Pair{Qt::Key_F2, ui::Key::kF2},
    Pair{Qt::Key_F3, ui::Key::kF3},
    Pair{Qt::Key_F4, ui::Key::kF4},
    Pair{Qt::Key_F5, ui::Key::kF5},
    Pair{Qt::Key_Call, ui::Key::kTalk},
    Pair{Qt::Key_Back, ui::Key::kBack},
};

}  // namespace

unsigned ModifiersFromQt(Qt::KeyboardModifiers modifiers) {
  return (modifiers.testFlag(Qt::ShiftModifier) ? ui::kShift : 0U) |
         (modifiers.testFlag(Qt::ControlModifier) ? ui::kControl : 0U) |
         (modifiers.testFlag(Qt::AltModifier) ? ui::kAlt : 0U);
}

ui::KeyPress KeyFromQt(const QKeyEvent& event) {
  ui::KeyPress press;
  press.modifiers = ModifiersFromQt(event.modifiers());
  for (const Pair& pair : kKeys) {
    if (pair.qt == event.key()) {
      press.key = pair.key;
      return press;
    }
  }
  // With Ctrl the text is a control character; the key still tells the letter.
  const QString text = event.text();
  if (text.size() == 1 && text[0].isPrint()) {
    press.character = text[0].toUpper().unicode();
  } else if (event.key() > Qt::Key_Space && event.key() <= Qt::Key_ydiaeresis) {
    press.character = static_cast<char16_t>(event.key());
  } else {
    return press;
  }
  press.key = ui::Key::kCharacter;
  return press;
}

}  // namespace kelpin::qt
