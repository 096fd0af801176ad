#include "editor/name_picker.h"

#include <algorithm>
#include <string>

#include "app/app_state.h"
#include "editor/editor_dialog.h"

namespace kelpin::editor {

void NamePicker::OnInit(ui::Dialog& dialog) {
  names_.dialog = dialog.shared_from_this();
  names_.size = {};
  names_.idWidth = NameIdWidth(state_);
  SetUpDialog(state_, dialog, family_.pickerBar, true);
  SetKeys(dialog);
  if (ui::ListView* const list = dialog.List(family_.pickerList)) {
    list->SetExtendedStyle(ListStyle());
    InsertNameColumns(*list, names_.idWidth, dialog.ClientSize());
  }
  dialog.PostMessage(family_.fillPicker);
}

void NamePicker::OnSize(ui::Dialog& dialog, ui::Size client) {
  ui::ListView* const list = dialog.List(family_.pickerList);
  if (list == nullptr || client == names_.size) {
    return;
  }
  names_.size = client;
  dialog.SetBounds(family_.pickerList, {0, 0, client.width, client.height});
  SetNameColumnWidth(*list, names_.idWidth, client);
}

void NamePicker::OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t /*first*/,
                           std::uint32_t /*second*/) {
  if (message != family_.fillPicker || fill_ != nullptr) {
    return;
  }
  fill_ = std::make_shared<NameListFill>(state_, family_, dialog.shared_from_this(),
                                         family_.pickerList, Rows());
  fill_->Start();
}

void NamePicker::OnCommand(ui::Dialog& dialog, int command) {
  if (command == res::kOk || command == family_.pickerOk) {
    Confirm(dialog);
  } else if (command == res::kCancel || command == family_.pickerCancel) {
    OnClose(dialog);
  }
}

void NamePicker::Confirm(ui::Dialog& dialog) {
  ui::ListView* const list = dialog.List(family_.pickerList);
  if (list != nullptr && Choose(*list)) {
    chosen_ = true;
    OnClose(dialog);
  }
}

void NamePicker::OnHelp(ui::Dialog& /*dialog*/) {
  ShowHelp(state_);
}

void NamePicker::OnClose(ui::Dialog& dialog) {
  Release();
  dialog.DestroyMenuBar();
  dialog.End(ui::kDialogDone);
}

void NamePicker::Release() {
  if (fill_ != nullptr) {
    fill_->Stop();
  }
  names_.dialog.reset();
}

std::uint32_t NumberNamePicker::ListStyle() const {
  return ui::kListFullRowSelect | ui::kListNoHorizontalScroll;
}

NameRows NumberNamePicker::Rows() const {
  NameRows rows;
  rows.defaultName = true;
  return rows;
}

void NumberNamePicker::SetKeys(ui::Dialog& dialog) {
  const ui::ListView* const list = dialog.List(family_.pickerList);
  if (const auto bar = dialog.Bar(); bar != nullptr && list != nullptr) {
    bar->EnableSoftKey(0, list->SelectedCount() > 0);
  }
}

void NumberNamePicker::OnNotify(ui::Dialog& dialog, const ui::Notification& notification) {
  if (notification.control != family_.pickerList) {
    return;
  }
  if (notification.code == ui::NotifyCode::kItemChanged) {
    SetKeys(dialog);
  } else if (notification.code == ui::NotifyCode::kItemActivated) {
    Confirm(dialog);
  }
}

bool NumberNamePicker::Choose(ui::ListView& list) {
  const int mark = list.SelectionMark();
  const int row = mark >= 0 ? mark : list.NextItem(-1, ui::kItemSelected);
  if (list.SelectedCount() == 0 || row < 0) {
    return false;
  }
  names_.record = RecordOfRow(list, row);
  names_.name = list.ItemText(row, kNameColumnName).substr(0, kNameRoom - 1);
  return true;
}

std::uint32_t GroupPicker::ListStyle() const {
  return ui::kListCheckBoxes | ui::kListFullRowSelect | ui::kListNoHorizontalScroll;
}

NameRows GroupPicker::Rows() const {
  NameRows rows;
  rows.checked = true;
  rows.groups = names_.groups.ids;
  const bool none = NameRecords(state_.extPhonebook, family_).Count() == 0;
  rows.nothing = none ? family_.noRecords : res::kTextNoNamedGroups;
  rows.hint = none ? 0 : res::kTextNoNamedGroupsHint;
  return rows;
}

void GroupPicker::SetKeys(ui::Dialog& dialog) {
  if (const auto bar = dialog.Bar()) {
    bar->EnableSoftKey(0, false);
    bar->EnableSoftKey(1, false);
  }
}

bool GroupPicker::Choose(ui::ListView& list) {
  if (!Filled()) {
    return false;
  }
  GroupSelection groups;
  std::size_t used = 0;
  const int rows = std::min(list.ItemCount(), static_cast<int>(kGroupIds));
  for (int row = 0; row < rows; ++row) {
    if ((list.ItemState(row) & ui::kItemStateImageMask) == ui::kItemUnchecked) {
      continue;
    }
    if (used > 0) {
      groups.text += u", ";
    }
    groups.ids[used++] = static_cast<std::uint8_t>(RecordOfRow(list, row));
    groups.text += list.ItemText(row, kNameColumnName);
  }
  groups.text.resize(std::min(groups.text.size(), kGroupTextLimit));
  names_.groups = groups;
  return true;
}

}  // namespace kelpin::editor
