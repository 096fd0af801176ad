#include "editor/name_list_editor.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "app/app_state.h"
#include "app/readiness.h"
#include "editor/editor_dialog.h"
#include "editor/name_editor.h"
#include "editor/name_records.h"
#include "res/strings.h"

namespace kelpin::editor {

void NameListEditor::OnInit(ui::Dialog& dialog) {
  names_.dialog = dialog.shared_from_this();
  names_.size = {};
  names_.idWidth = NameIdWidth(state_);
  SetUpDialog(state_, dialog, family_.listBar, true);
  EnableKeys(dialog);
  const std::array<ui::Accelerator, 2> keys = {{
      {{ui::Key::kF2}, family_.edit},
      {{ui::Key::kDelete}, family_.erase},
  }};
  dialog.SetAccelerators(keys);
  dialog.SetText(family_.heading, res::LoadString(family_.headingText));
  if (ui::ListView* const list = dialog.List(family_.list)) {
    list->SetExtendedStyle(ui::kListFullRowSelect);
    InsertNameColumns(*list, names_.idWidth, dialog.ClientSize());
  }
  dialog.PostMessage(family_.fillList);
}

void NameListEditor::OnSize(ui::Dialog& dialog, ui::Size client) {
  ui::ListView* const list = dialog.List(family_.list);
  if (list == nullptr || client == names_.size) {
    return;
  }
  names_.size = client;
  const int heading = state_.ports.screen.GetMetrics().headerHeight;
  dialog.SetBounds(family_.heading, {0, 0, client.width, heading});
  dialog.SetBounds(family_.list, {0, heading, client.width, std::max(0, client.height - heading)});
  SetNameColumnWidth(*list, names_.idWidth, client);
}

void NameListEditor::OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t /*first*/,
                               std::uint32_t /*second*/) {
  if (message != family_.fillList || fill_ != nullptr) {
    return;
  }
  NameRows rows;
  rows.erased = true;
  rows.nothing = family_.noRecords;
  fill_ = std::make_shared<NameListFill>(state_, family_, dialog.shared_from_this(), family_.list,
                                         rows);
  fill_->Start();
}

void NameListEditor::OnCommand(ui::Dialog& dialog, int command) {
  if (command == family_.edit) {
    Edit(dialog);
  } else if (command == family_.erase) {
    Erase(dialog);
  } else if (command == res::kOk && state_.isSmartphone != 0) {
    Edit(dialog);
  } else if (command == res::kOk || command == res::kCancel) {
    OnClose(dialog);
  }
}

void NameListEditor::OnNotify(ui::Dialog& dialog, const ui::Notification& notification) {
  const ui::ListView* const list = dialog.List(family_.list);
  if (notification.control != family_.list || list == nullptr) {
    return;
  }
  switch (notification.code) {
    case ui::NotifyCode::kItemActivated:
      Edit(dialog);
      break;
    case ui::NotifyCode::kClick:
      if (list->SelectedCount() == 1) {
        Edit(dialog);
      }
      break;
    case ui::NotifyCode::kItemChanged:
      EnableKeys(dialog);
      break;
    default:
      break;
  }
}

void NameListEditor::EnableKeys(ui::Dialog& dialog) const {
  const ui::ListView* const list = dialog.List(family_.list);
  const auto bar = dialog.Bar();
  if (bar == nullptr || list == nullptr) {
    return;
  }
  const bool selected = list->SelectedCount() > 0;
  bar->EnableSoftKey(0, selected);
  bar->EnableSoftKey(1, selected);
}

bool NameListEditor::MayChange(ui::Dialog& dialog) const {
  const ui::ListView* const list = dialog.List(family_.list);
  return list != nullptr && list->SelectedCount() > 0 && CardAnswers(state_, dialog);
}

void NameListEditor::Edit(ui::Dialog& dialog) {
  if (!MayChange(dialog)) {
    return;
  }
  const ui::ListView& list = *dialog.List(family_.list);
  const int mark = list.SelectionMark();
  const int row = mark >= 0 ? mark : list.NextItem(-1, ui::kItemSelected);
  names_.record = RecordOfRow(list, row);
  if (names_.record == 0) {
    return;
  }
  names_.name = list.ItemText(row, kNameColumnName);
  NameEditor editor(state_, names_, family_);
  RunDialog(state_, family_.nameDialog, dialog.Handle(), editor);
}

void NameListEditor::Erase(ui::Dialog& dialog) {
  if (!MayChange(dialog)) {
    return;
  }
  const ui::ListView& list = *dialog.List(family_.list);
  std::vector<std::uint32_t> records;
  for (int row = list.NextItem(-1, ui::kItemSelected); row >= 0;
       row = list.NextItem(row, ui::kItemSelected)) {
    records.push_back(RecordOfRow(list, row));
  }
  const ui::BoxAnswer answer = state_.ports.screen.MessageBox(
      dialog.Handle(), res::LoadString(res::kStringDeleteFromSimQuestion),
      res::LoadString(res::kStringWarning), ui::kBoxQuestion);
  if (answer != ui::BoxAnswer::kYes) {
    return;
  }
  for (const std::uint32_t record : records) {
    if (!EraseRecord(dialog, record)) {
      break;
    }
  }
}

bool NameListEditor::EraseRecord(ui::Dialog& dialog, std::uint32_t record) const {
  std::u16string nothing;
  state_.ports.screen.SetWaitCursor(true);
  const bool written = NameRecords(state_.extPhonebook, family_).Write(record, nothing);
  state_.ports.screen.SetWaitCursor(false);
  if (!written && !CardAnswers(state_, dialog)) {
    return false;
  }
  ui::ListView& list = *dialog.List(family_.list);
  const int row = RowOfRecord(list, record);
  list.SetItemText(row, kNameColumnName, {});
  list.RedrawItem(row);
  return true;
}

void NameListEditor::OnHelp(ui::Dialog& /*dialog*/) {
  ShowHelp(state_);
}

void NameListEditor::OnClose(ui::Dialog& dialog) {
  Release();
  dialog.DestroyMenuBar();
  dialog.End(ui::kDialogDone);
}

void NameListEditor::Release() {
  if (fill_ != nullptr) {
    fill_->Stop();
  }
  names_.dialog.reset();
}

void OpenNameList(app::AppState& state, NameListState& listState, const NameFamily& family) {
  if (!app::CardIsReady(state)) {
    return;
  }
  NameListEditor editor(state, listState, family);
  RunDialog(state, family.listDialog, state.mainDialog, editor);
}

}  // namespace kelpin::editor
