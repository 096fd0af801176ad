#pragma once

namespace kelpin::ui {

enum class Key {
  kNone,
  kUp,
  kDown,
  kLeft,
  kRight,
  kPageUp,
  kPageDown,
  kHome,
  kEnd,
  kEnter,
  kEscape,
  kSpace,
  kDelete,
  kBackspace,
  kTab,
  kMenu,  // the context-menu key
  kF1,
  kF2,
  kF3,
  kF4,
  kF5,
  kTalk,       // the phone's call key
  kBack,       // the phone's back key
  kCharacter,  // any other; `character` tells which, upper case for letters
};

inline constexpr unsigned kNoModifier = 0;
inline constexpr unsigned kShift = 1;
inline constexpr unsigned kControl = 2;
inline constexpr unsigned kAlt = 4;

struct KeyPress {
  Key key = Key::kNone;
  unsigned modifiers = kNoModifier;
  char16_t character = 0;
  bool operator==(const KeyPress&) const = default;
};

// Virtual keys that reach a dialog as hot keys.
inline constexpr int kVirtualKeyBack = 27;
inline constexpr int kVirtualKeyTalk = 0x72;

}  // namespace kelpin::ui
