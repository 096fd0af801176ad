#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "ui/keys.h"

// What a resource is made of. All of it is constant data; texts live as long as the program.
namespace kelpin::ui {

enum class ControlKind {
  kLabel,  // static text
  kEdit,   // one line
  kButton,
  kCheckBox,
  kList,  // report view
  kProgress,
  kPicture,
  kIcon,
};

// Styles, added up.
inline constexpr std::uint32_t kStyleNone = 0;
inline constexpr std::uint32_t kStyleReadOnly = 1;
inline constexpr std::uint32_t kStyleDisabled = 2;
inline constexpr std::uint32_t kStyleHidden = 4;
inline constexpr std::uint32_t kStyleCentered = 8;
inline constexpr std::uint32_t kStyleBold = 16;
inline constexpr std::uint32_t kStyleSingleSelection = 32;  // a list; else several rows at once
inline constexpr std::uint32_t kStyleHeader = 64;           // a label drawn as the dialog's heading
// A label that shows a looked-up value; with kStyleHeader, a caption and then the value.
inline constexpr std::uint32_t kStyleValue = 128;
// An edit that shows dots for what it holds and gives none of it away, not to the clipboard either.
inline constexpr std::uint32_t kStyleSecret = 256;

struct ControlTemplate {
  int id = 0;
  ControlKind kind = ControlKind::kLabel;
  std::u16string_view text = {};
  std::uint32_t style = kStyleNone;
  int labelledBy = 0;  // id of the label that names this control, 0 when none
  int resource = 0;    // of a picture or an icon
};

struct DialogTemplate {
  int id = 0;
  std::span<const ControlTemplate> controls = {};
  std::u16string_view helpSection = {};  // anchor in the help file
};

struct MenuItemTemplate {
  int command = 0;  // 0: a separator, or a sub-menu
  std::u16string_view text = {};
  std::string_view icon = {};                    // name of a drawing, empty when none
  std::u16string_view keys = {};                 // shortcut as shown, "Ctrl+A"
  std::span<const MenuItemTemplate> items = {};  // of a sub-menu
};

struct SoftKeyTemplate {
  int command = 0;
  std::u16string_view text = {};
  std::string_view icon = {};
  std::span<const MenuItemTemplate> menu = {};  // not empty: a drop-down
};

struct MenuBarTemplate {
  int id = 0;
  std::span<const SoftKeyTemplate> keys = {};  // none, one or two; left first
};

struct Accelerator {
  KeyPress press = {};
  int command = 0;
};

}  // namespace kelpin::ui
