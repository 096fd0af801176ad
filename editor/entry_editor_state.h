#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "editor/pickers.h"
#include "sim/ril_ext_phonebook.h"
#include "ui/dialog.h"

namespace kelpin::editor {

inline constexpr std::size_t kGroupTextRoom = 260;  // UTF-16 units, with its end

// 1 where a save writes the field, or where the number names can be picked. Set when the dialog
// opens.
struct FieldAvailability {
  std::uint32_t number2 = 0;
  std::uint32_t email = 0;
  std::uint32_t numberName = 0;
  std::uint32_t group = 0;
  std::uint32_t nickname = 0;
  std::uint32_t number3 = 0;
};

// What one of the two entry dialogs works on beside the texts in its fields. There is one for the
// New dialog and one for the Edit dialog; each opening starts it afresh. What is picked goes into
// it. Screen thread.
struct EntryEditorState {
  ui::WindowHandle owner = 0;

  FieldAvailability available;
  // 1 while the dialog itself writes that the field is not available: that text is not filtered.
  std::uint32_t suppressNumber2 = 0;
  std::uint32_t suppressNumber3 = 0;
  std::uint32_t suppressEmail = 0;
  // Records of the number names; 0 for none.
  std::uint32_t number2NameId = 0;
  std::uint32_t number3NameId = 0;

  // The entry that is edited. Where the opening found its fields, kNoRecord for nowhere.
  std::uint32_t location = 0;
  int row = -1;
  std::u16string name;
  std::u16string number;
  std::uint32_t number2Record = sim::kNoRecord;
  std::uint32_t number3Record = sim::kNoRecord;
  std::uint32_t emailRecord = sim::kNoRecord;
  std::uint32_t nicknameRecord = sim::kNoRecord;

  GroupSelection groups;
  std::size_t groupCount = 0;  // bytes of the card's record
};

}  // namespace kelpin::editor
