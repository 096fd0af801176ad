#include "views/mark_editor.h"

#include <cstddef>

#include "app/app_state.h"
#include "app/settings.h"
#include "res/ids.h"
#include "res/strings.h"
#include "ui/keys.h"
#include "ui/screen.h"
#include "views/view_dialog.h"

namespace kelpin::views {
namespace {

// Characters that are read of the row's texts.
constexpr std::size_t kTypeLimit = 130;
constexpr std::size_t kMarkReadLimit = 10;

// The selected row that the user pressed last.
int SelectedRow(const ui::ListView& list) {
  const int mark = list.SelectionMark();
  if (list.SelectedCount() == 0 || mark < 0) {
    return -1;
  }
  const bool markIsSelected = (list.ItemState(mark) & ui::kItemSelected) != 0;
  return markIsSelected ? mark : list.NextItem(-1, ui::kItemSelected);
}

}  // namespace

MarkEditor::MarkEditor(app::AppState& state, ui::Dialog& options, int list, int row)
    : state_(state), options_(options), list_(list), row_(row), menu_(state.ports.screen) {}

void MarkEditor::OnInit(ui::Dialog& dialog) {
  dialog.SetFullScreen(true, false);
  dialog.SetTitle(state_.appTitle);
  dialog.SetText(res::kMarkTypeLabel, res::LoadString(res::kStringPhoneTypeLabel));
  dialog.SetText(res::kMarkTextLabel, res::LoadString(res::kStringMarkLabel));
  CreateBar(dialog, res::kBarMarkEditor);
  dialog.SetLimit(res::kMarkText, static_cast<int>(app::kMarkLimit));
  if (state_.sipAutoDeployOff == 0) {
    state_.ports.shell.ShowInputPanel(true);
  }
  if (const ui::ListView* const list = options_.List(list_)) {
    type_ = list->ItemText(row_, kPhoneTypeColumnName).substr(0, kTypeLimit);
    mark_ = list->ItemText(row_, kPhoneTypeColumnMark).substr(0, kMarkReadLimit);
  }
  dialog.SetText(res::kMarkType, type_);
  dialog.SetText(res::kMarkText, mark_);
  if (state_.isSmartphone == 0) {
    menu_.Attach(dialog, res::kMarkText);
  }
  // What there is to change has the focus, with the old mark ready to be typed over.
  dialog.SetFocus(res::kMarkText);
  dialog.SetSelection(res::kMarkText, 0, -1);
}

void MarkEditor::OnCommand(ui::Dialog& dialog, int command) {
  if (menu_.OnCommand(command)) {
    return;
  }
  switch (command) {
    case res::kOk:
    case res::kMarkSave:
      Save(dialog);
      dialog.Close();
      break;
    case res::kCancel:
    case res::kMarkCancel:
      dialog.Close();
      break;
    default:
      break;
  }
}

void MarkEditor::Save(ui::Dialog& dialog) {
  mark_ = dialog.Text(res::kMarkText).substr(0, app::kMarkLimit);
  state_.ports.screen.SetWaitCursor(true);
  if (ui::ListView* const list = options_.List(list_)) {
    list->SetItemText(row_, kPhoneTypeColumnMark, mark_);
    list->RedrawItem(row_);
  }
  state_.ports.screen.SetWaitCursor(false);
}

void MarkEditor::OnNotify(ui::Dialog& /*dialog*/, const ui::Notification& notification) {
  menu_.OnNotify(notification);
}

bool MarkEditor::OnHotKey(ui::Dialog& /*dialog*/, int virtualKey, unsigned /*modifiers*/) {
  if (virtualKey != ui::kVirtualKeyBack) {
    return false;
  }
  state_.ports.shell.SendBackKey();
  return true;
}

void MarkEditor::OnHelp(ui::Dialog& /*dialog*/) {
  ShowHelp(state_);
}

void MarkEditor::OnClose(ui::Dialog& dialog) {
  menu_.Detach();
  if (state_.sipAutoDeployOff == 0) {
    state_.ports.shell.ShowInputPanel(false);
  }
  dialog.DestroyMenuBar();
  dialog.End(ui::kDialogDone);
}

void EditMark(app::AppState& state, ui::Dialog& options, int list) {
  const ui::ListView* const rows = options.List(list);
  const int row = rows == nullptr ? -1 : SelectedRow(*rows);
  if (row < 0) {
    return;
  }
  MarkEditor editor(state, options, list, row);
  RunDialog(state, res::kDialogMarkEditor, options.Handle(), editor);
}

}  // namespace kelpin::views
