#include "views/value_chooser.h"

#include <algorithm>
#include <memory>

#include "app/app_state.h"
#include "res/ids.h"
#include "res/strings.h"
#include "ui/keys.h"
#include "views/view_dialog.h"

namespace kelpin::views {
namespace {

constexpr std::uint32_t kSelectedFocused = ui::kItemSelected | ui::kItemFocused;

struct ValueRow : ui::RowData {
  AddressKind kind = AddressKind::kNumber;
};

}  // namespace

void ValueChooser::OnInit(ui::Dialog& dialog) {
  dialog.SetFullScreen(true, true);
  dialog.SetTitle(state_.appTitle);
  if (ui::MenuBar* const bar = CreateBar(dialog, resources_.bar)) {
    bar->EnableSoftKey(0, false);
  }
  dialog.SetText(resources_.label, res::LoadString(resources_.labelText));
  if (ui::ListView* const list = dialog.List(resources_.list)) {
    list->SetExtendedStyle(ui::kListFullRowSelect);
    list->InsertColumn(0, res::LoadString(resources_.columnText), 0);
  }
  dialog.PostMessage(resources_.fillMessage);
}

void ValueChooser::OnSize(ui::Dialog& dialog, ui::Size client) {
  ui::ListView* const list = dialog.List(resources_.list);
  if (list == nullptr || client == size_) {
    return;
  }
  size_ = client;
  const ui::Metrics metrics = state_.ports.screen.GetMetrics();
  const int top = 2 * metrics.gap + metrics.labelHeight;
  dialog.SetBounds(resources_.label,
                   {metrics.margin, metrics.gap, std::max(0, client.width - 2 * metrics.margin),
                    metrics.labelHeight});
  dialog.SetBounds(resources_.list, {0, top, client.width, std::max(0, client.height - top)});
  list->SetColumnWidth(0, client.width);
}

void ValueChooser::OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t /*first*/,
                             std::uint32_t /*second*/) {
  if (message == resources_.fillMessage) {
    Fill(dialog);
  }
}

void ValueChooser::Fill(ui::Dialog& dialog) {
  ui::ListView* const list = dialog.List(resources_.list);
  if (list == nullptr) {
    return;
  }
  for (auto value = values_.rbegin(); value != values_.rend(); ++value) {
    if (!value->text.empty()) {
      auto row = std::make_unique<ValueRow>();
      row->kind = value->kind;
      list->InsertItem(0, value->text, std::move(row));
    }
  }
  if (list->ItemCount() > 0) {
    list->SetItemState(0, kSelectedFocused, kSelectedFocused);
    list->SetSelectionMark(0);
  }
}

void ValueChooser::OnCommand(ui::Dialog& dialog, int command) {
  if (command == resources_.choose || (command == res::kOk && state_.isSmartphone != 0)) {
    Choose(dialog);
  } else if (command == resources_.cancel || command == res::kOk || command == res::kCancel) {
    dialog.Close();
  }
}

void ValueChooser::OnNotify(ui::Dialog& dialog, const ui::Notification& notification) {
  ui::ListView* const list = dialog.List(resources_.list);
  if (notification.control != resources_.list || list == nullptr) {
    return;
  }
  switch (notification.code) {
    case ui::NotifyCode::kItemActivated:
      if (!press_.IsSecondPress(state_.ports.clock)) {
        Choose(dialog);
      }
      break;
    case ui::NotifyCode::kClick:
      if (list->SelectedCount() == 1) {
        press_.Clicked(state_.ports.clock);
        Choose(dialog);
      }
      break;
    case ui::NotifyCode::kItemChanged:
      if (const auto bar = dialog.Bar()) {
        bar->EnableSoftKey(0, list->SelectedCount() > 0);
      }
      break;
    default:
      break;
  }
}

bool ValueChooser::OnHotKey(ui::Dialog& dialog, int virtualKey, unsigned modifiers) {
  if (virtualKey != ui::kVirtualKeyTalk || modifiers != ui::kNoModifier) {
    return false;
  }
  Choose(dialog);
  return true;
}

void ValueChooser::Choose(ui::Dialog& dialog) {
  const ui::ListView* const list = dialog.List(resources_.list);
  const int row = list == nullptr ? -1 : list->SelectionMark();
  if (row < 0) {
    return;
  }
  const auto data = std::dynamic_pointer_cast<const ValueRow>(list->ItemData(row));
  if (data != nullptr) {
    Chosen(dialog, {list->ItemText(row, 0), data->kind});
  }
}

void ValueChooser::OnHelp(ui::Dialog& /*dialog*/) {
  ShowHelp(state_);
}

void ValueChooser::OnClose(ui::Dialog& dialog) {
  dialog.DestroyMenuBar();
  dialog.End(ui::kDialogDone);
}

}  // namespace kelpin::views
