#include "editor/pickers.h"

#include "app/app_state.h"
#include "editor/editor_dialog.h"
#include "editor/name_list_state.h"
#include "editor/name_picker.h"
#include "res/strings.h"

namespace kelpin::editor {
namespace {

// The label of the number that the button stands by, when it has no name.
std::u16string_view UsualLabel(int button) {
  const bool third = button == res::kNewNumber3Button || button == res::kEditNumber3Button;
  return res::LoadString(third ? res::kStringNumber3Label : res::kStringNumber2Label);
}

}  // namespace

std::optional<NumberName> Pickers::OpenNumberNamePicker(int button, ui::WindowHandle owner) {
  numberNames_.button = button;
  NumberNamePicker picker(state_, numberNames_);
  RunDialog(state_, kNumberNames.picker, owner, picker);
  if (!picker.Chosen()) {
    return std::nullopt;
  }
  const std::uint32_t id = numberNames_.record;
  return NumberName{id, id == 0 ? std::u16string(UsualLabel(button)) : numberNames_.name};
}

std::optional<GroupSelection> Pickers::OpenGroupPicker(int button, ui::WindowHandle owner,
                                                       const GroupSelection& current) {
  groupNames_.button = button;
  groupNames_.groups = current;
  GroupPicker picker(state_, groupNames_);
  RunDialog(state_, kGroupNames.picker, owner, picker);
  if (!picker.Chosen()) {
    return std::nullopt;
  }
  return groupNames_.groups;
}

}  // namespace kelpin::editor
