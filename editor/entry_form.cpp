#include "editor/entry_form.h"

#include <algorithm>

#include "app/settings.h"
#include "res/ids.h"

namespace kelpin::editor {

const EntryControls kNewEntryControls = {
    .dialog = res::kDialogNewEntry,
    .bar = res::kBarNewEntry,
    .done = res::kNewEntryDone,
    .cancel = res::kNewEntryCancel,
    .location = {},
    .name = {res::kNewNameLabel, res::kNewName},
    .nickname = {res::kNewNicknameLabel, res::kNewNickname},
    .number = {res::kNewNumberLabel, res::kNewNumber},
    .number2 = {res::kNewNumber2Label, res::kNewNumber2, res::kNewNumber2Button},
    .number3 = {res::kNewNumber3Label, res::kNewNumber3, res::kNewNumber3Button},
    .email = {res::kNewEmailLabel, res::kNewEmail},
    .group = {res::kNewGroupLabel, res::kNewGroup, res::kNewGroupButton},
};

const EntryControls kEditEntryControls = {
    .dialog = res::kDialogEditEntry,
    .bar = res::kBarEditEntry,
    .done = res::kEditEntryDone,
    .cancel = res::kEditEntryCancel,
    .location = {res::kEditLocationLabel, res::kEditLocation},
    .name = {res::kEditNameLabel, res::kEditName},
    .nickname = {res::kEditNicknameLabel, res::kEditNickname},
    .number = {res::kEditNumberLabel, res::kEditNumber},
    .number2 = {res::kEditNumber2Label, res::kEditNumber2, res::kEditNumber2Button},
    .number3 = {res::kEditNumber3Label, res::kEditNumber3, res::kEditNumber3Button},
    .email = {res::kEditEmailLabel, res::kEditEmail},
    .group = {res::kEditGroupLabel, res::kEditGroup, res::kEditGroupButton},
};

const std::array<ExtendedField, kExtendedFieldCount>& ExtendedFields() {
  static constexpr std::array<ExtendedField, kExtendedFieldCount> kFields = {{
      {sim::FieldSlot::kSecondNumber, true, res::kStringNumber2Label, &EntryControls::number2,
       &FieldAvailability::number2, &EntryEditorState::number2Record,
       &EntryEditorState::suppressNumber2, &EntryEditorState::number2NameId},
      {sim::FieldSlot::kThirdNumber, true, res::kStringNumber3Label, &EntryControls::number3,
       &FieldAvailability::number3, &EntryEditorState::number3Record,
       &EntryEditorState::suppressNumber3, &EntryEditorState::number3NameId},
      {sim::FieldSlot::kEmail, false, res::kStringEmailLabel, &EntryControls::email,
       &FieldAvailability::email, &EntryEditorState::emailRecord, &EntryEditorState::suppressEmail,
       nullptr},
      {sim::FieldSlot::kNickname, false, res::kStringNicknameLabel, &EntryControls::nickname,
       &FieldAvailability::nickname, &EntryEditorState::nicknameRecord, nullptr, nullptr},
  }};
  return kFields;
}

bool IsShown(const ExtendedField& field, const app::AppSettings& settings) {
  switch (field.slot) {
    case sim::FieldSlot::kSecondNumber:
      return settings.Disable_ANR == 0;
    case sim::FieldSlot::kThirdNumber:
      return settings.Disable_ANRA == 0;
    case sim::FieldSlot::kEmail:
      return settings.Disable_EMAIL == 0;
    case sim::FieldSlot::kNickname:
      return settings.Enable_SNE != 0;
  }
  return false;
}

const ExtendedField* FieldOfEdit(const EntryControls& controls, int edit) {
  const auto& fields = ExtendedFields();
  const auto* const found = std::find_if(fields.begin(), fields.end(), [&](const auto& field) {
    return (controls.*field.controls).edit == edit;
  });
  return found == fields.end() ? nullptr : found;
}

}  // namespace kelpin::editor
