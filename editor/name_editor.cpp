#include "editor/name_editor.h"

#include <algorithm>
#include <string>

#include "app/app_state.h"
#include "editor/editor_dialog.h"
#include "editor/name_list_fill.h"
#include "editor/name_records.h"
#include "res/strings.h"
#include "ui/keys.h"

namespace kelpin::editor {
namespace {

constexpr std::size_t kShownLimit = 512;  // UTF-16 units of a row's name

bool IsAscii(const std::u16string& text) {
  return std::ranges::all_of(text, [](char16_t unit) { return unit < 0x80; });
}

}  // namespace

NameEditor::NameEditor(app::AppState& state, NameListState& listState, const NameFamily& family)
    : state_(state), names_(listState), family_(family), menu_(state.ports.screen) {}

void NameEditor::OnInit(ui::Dialog& dialog) {
  SetUpDialog(state_, dialog, family_.nameBar, false);
  dialog.SetText(family_.nameLabel, res::LoadString(res::kStringNameLabel));
  dialog.SetLimit(family_.name,
                  static_cast<int>(NameRecords(state_.extPhonebook, family_).Length()));
  if (state_.sipAutoDeployOff == 0) {
    state_.ports.shell.ShowInputPanel(true);
  }
  dialog.SetInputMode(family_.name, ui::InputMode::kSpell);
  const std::u16string name = names_.name.substr(0, kShownLimit);
  dialog.SetText(family_.name, name);
  const int end = static_cast<int>(name.size());
  dialog.SetSelection(family_.name, end, end);
  if (state_.isSmartphone == 0) {
    menu_.Attach(dialog, family_.name);
  }
}

void NameEditor::OnNotify(ui::Dialog& /*dialog*/, const ui::Notification& notification) {
  static_cast<void>(menu_.OnNotify(notification));
}

void NameEditor::OnCommand(ui::Dialog& dialog, int command) {
  if (menu_.OnCommand(command)) {
    return;
  }
  if (command == family_.save || command == res::kOk) {
    Save(dialog);
  } else if (command == family_.cancel || command == res::kCancel) {
    OnClose(dialog);
  }
}

bool NameEditor::Fits(const std::u16string& name) const {
  return IsAscii(name) || 2 * name.size() < NameRecords(state_.extPhonebook, family_).Length();
}

void NameEditor::Save(ui::Dialog& dialog) {
  ui::Screen& screen = state_.ports.screen;
  names_.name = dialog.Text(family_.name).substr(0, kNameRoom - 1);
  if (!Fits(names_.name)) {
    screen.MessageBox(dialog.Handle(), res::LoadString(res::kStringNameTooLong),
                      res::LoadString(res::kStringError), ui::kBoxError);
    dialog.SetFocus(family_.name);
    return;
  }
  screen.SetWaitCursor(true);
  const bool written = NameRecords(state_.extPhonebook, family_).Write(names_.record, names_.name);
  screen.SetWaitCursor(false);
  if (!written && !CardAnswers(state_, dialog)) {
    dialog.SetFocus(family_.name);
    return;
  }
  ShowInList();
  OnClose(dialog);
}

void NameEditor::ShowInList() const {
  ui::ListView* const list = names_.dialog == nullptr ? nullptr : names_.dialog->List(family_.list);
  if (list == nullptr) {
    return;
  }
  const int row = RowOfRecord(*list, names_.record);
  list->SetItemText(row, kNameColumnName, names_.name);
  list->RedrawItem(row);
}

bool NameEditor::OnHotKey(ui::Dialog& /*dialog*/, int virtualKey, unsigned /*modifiers*/) {
  if (state_.isSmartphone == 0 || virtualKey != ui::kVirtualKeyBack) {
    return false;
  }
  state_.ports.shell.SendBackKey();
  return true;
}

void NameEditor::OnHelp(ui::Dialog& /*dialog*/) {
  ShowHelp(state_);
}

void NameEditor::OnClose(ui::Dialog& dialog) {
  menu_.Detach();
  if (state_.sipAutoDeployOff == 0) {
    state_.ports.shell.ShowInputPanel(false);
  }
  dialog.DestroyMenuBar();
  dialog.End(ui::kDialogDone);
}

}  // namespace kelpin::editor
