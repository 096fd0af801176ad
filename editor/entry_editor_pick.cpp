// How names of the card come into an entry's dialog.
#include "editor/entry_editor.h"
#include "res/ids.h"
#include "res/strings.h"

namespace kelpin::editor {

void EntryEditor::PickNumberName(const ExtendedField& field) {
  const FieldControls& place = controls_.*field.controls;
  const std::optional<NumberName> picked = pickers_.numberName(place.button, editor_.owner);
  if (picked && Open()) {
    editor_.*field.nameId = picked->id;
    dialog_->SetText(place.label, picked->label);
  }
}

void EntryEditor::PickGroup() {
  const std::optional<GroupSelection> picked =
      pickers_.group(controls_.group.button, editor_.owner, editor_.groups);
  if (!picked || !Open()) {
    return;
  }
  editor_.groups = *picked;
  dialog_->SetText(controls_.group.edit, picked->ids[0] == 0
                                             ? std::u16string(res::LoadString(res::kStringNoGroup))
                                             : picked->text);
}

}  // namespace kelpin::editor
