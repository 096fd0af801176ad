#include "views/own_numbers.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/app_state.h"
#include "app/card_error.h"
#include "app/card_hold.h"
#include "app/own_number_header.h"
#include "app/readiness.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/menus.h"
#include "res/strings.h"
#include "views/own_number_editor.h"
#include "views/view_dialog.h"

namespace kelpin::views {
namespace {

constexpr int kRecordWidth = 36;
constexpr int kHighResRecordWidth = 72;
constexpr int kListHeight = 90;
constexpr int kHighResListHeight = 180;
constexpr int kSmartphoneListHeight = 124;
constexpr std::uint8_t kErased = 0xFF;

// The question before a row is erased, with the row: after the list was read again the first one is
// selected, which need not be the one that the user thinks of.
std::u16string EraseQuestion(const ui::ListView& list, int row) {
  std::u16string question(res::LoadString(res::kStringDeleteFromSimQuestion));
  question += res::Format(u"\n\n#%s", {list.ItemText(row, kOwnNumberColumnRecord)});
  std::u16string_view link = u": ";
  for (const int column : {kOwnNumberColumnName, kOwnNumberColumnPhone}) {
    if (const std::u16string text = list.ItemText(row, column); !text.empty()) {
      question += link;
      question += text;
      link = u", ";
    }
  }
  return question;
}

}  // namespace

OwnNumbersDialog::OwnNumbersDialog(app::AppState& state, std::shared_ptr<OwnNumberWatcher> watcher)
    : state_(state),
      watcher_(std::move(watcher)),
      reader_(std::make_shared<OwnNumberReader>(state)) {}

OwnNumbersDialog::~OwnNumbersDialog() {
  watcher_->SetList(nullptr);
  reader_->Close();
}

bool OwnNumbersDialog::ReadOnly() const {
  return state_.settings.ReadOnly_OwnNumber != 0;
}

void OwnNumbersDialog::OnInit(ui::Dialog& dialog) {
  recordWidth_ = state_.isHighRes != 0 ? kHighResRecordWidth : kRecordWidth;
  listHeight_ = state_.isSmartphone != 0 ? kSmartphoneListHeight
                : state_.isHighRes != 0  ? kHighResListHeight
                                         : kListHeight;
  dialog.SetFullScreen(true, true);
  dialog.SetTitle(state_.appTitle);
  CreateBar(dialog, ReadOnly() ? res::kBarOk : res::kBarOwnNumbers);
  dialog.SetText(res::kOwnNumbersHeader, res::LoadString(res::kStringOwnNumbersHeader));
  if (ui::ListView* const list = dialog.List(res::kOwnNumbersList)) {
    const int width = dialog.ClientSize().width / 2 - recordWidth_ / 2;
    list->SetExtendedStyle(ui::kListFullRowSelect);
    list->InsertColumn(kOwnNumberColumnRecord, res::LoadString(res::kStringNumberSign),
                       recordWidth_);
    list->InsertColumn(kOwnNumberColumnName, res::LoadString(res::kStringName), width);
    list->InsertColumn(kOwnNumberColumnPhone, res::LoadString(res::kStringPhone), width);
  }
  Place(dialog, dialog.ClientSize().width, listHeight_);
  reader_->Open(dialog.shared_from_this());
  reader_->EnableCommands(false);
  dialog.PostMessage(res::kMessageStartOwnNumbers);
}

void OwnNumbersDialog::OnSize(ui::Dialog& dialog, ui::Size client) {
  ui::ListView* const list = dialog.List(res::kOwnNumbersList);
  if (list == nullptr || client == size_) {
    return;
  }
  size_ = client;
  const int header = state_.ports.screen.GetMetrics().headerHeight;
  Place(dialog, client.width, std::max(listHeight_, client.height - header));
  const int width = client.width / 2 - recordWidth_ / 2;
  list->SetColumnWidth(kOwnNumberColumnRecord, recordWidth_);
  list->SetColumnWidth(kOwnNumberColumnName, width);
  list->SetColumnWidth(kOwnNumberColumnPhone, width);
}

void OwnNumbersDialog::Place(ui::Dialog& dialog, int width, int listHeight) {
  const int header = state_.ports.screen.GetMetrics().headerHeight;
  dialog.SetBounds(res::kOwnNumbersHeader, {0, 0, width, header});
  dialog.SetBounds(res::kOwnNumbersList, {0, header, width, listHeight});
}

void OwnNumbersDialog::OnMessage(ui::Dialog& /*dialog*/, std::uint32_t message,
                                 std::uint32_t /*first*/, std::uint32_t /*second*/) {
  if (message == res::kMessageResolveOwnNumbers) {
    reader_->ResolveDoubts();
    return;
  }
  if (message != res::kMessageStartOwnNumbers || reader_->StartFill() == 0) {
    return;
  }
  watcher_->SetList(reader_);
  watcher_->Start();
}

void OwnNumbersDialog::OnCommand(ui::Dialog& dialog, int command) {
  switch (command) {
    case res::kOwnNumbersEdit:
      changed_ = true;
      Edit(dialog);
      break;
    case res::kOwnNumbersErase:
      changed_ = true;
      Erase(dialog);
      break;
    case res::kOwnNumbersRefresh:
      reader_->Refresh();
      break;
    case res::kOk:
    case res::kViewOk:
      if (state_.isSmartphone != 0 && !ReadOnly()) {
        changed_ = true;
        Edit(dialog);
      } else {
        Leave(dialog);
      }
      break;
    case res::kCancel:
      Leave(dialog);
      break;
    default:
      break;
  }
}

void OwnNumbersDialog::OnNotify(ui::Dialog& dialog, const ui::Notification& notification) {
  ui::ListView* const list = dialog.List(res::kOwnNumbersList);
  if (notification.control != res::kOwnNumbersList || list == nullptr || ReadOnly()) {
    return;
  }
  switch (notification.code) {
    case ui::NotifyCode::kContextMenu:
      if (list->SelectedCount() > 0) {
        dialog.ShowPopup(std::make_shared<ui::Menu>(res::OwnNumberMenu()), notification.point);
      }
      break;
    case ui::NotifyCode::kItemActivated:
      changed_ = true;
      Edit(dialog);
      break;
    case ui::NotifyCode::kClick:
      if (list->SelectedCount() == 1) {
        changed_ = true;
        Edit(dialog);
      }
      break;
    case ui::NotifyCode::kItemChanged:
      reader_->EnableCommands(list->SelectedCount() > 0);
      break;
    default:
      break;
  }
}

int OwnNumbersDialog::RowToChange(ui::Dialog& dialog) {
  const ui::ListView* const list = dialog.List(res::kOwnNumbersList);
  const int row = list == nullptr ? -1 : list->NextItem(-1, ui::kItemSelected);
  if (row < 0) {
    return -1;
  }
  const platform::SimResult result = state_.simPhonebook.ReadStatus();
  app::ShowCardError(state_, dialog.Handle(), result);
  return Succeeded(result) ? row : -1;
}

void OwnNumbersDialog::Edit(ui::Dialog& dialog) {
  if (const int row = RowToChange(dialog); row >= 0) {
    OwnNumberEditor editor(state_, *reader_, dialog, row);
    RunDialog(state_, res::kDialogEditOwnNumber, dialog.Handle(), editor);
    ResolveDoubts(dialog);
  }
}

// Once what was asked for is done.
void OwnNumbersDialog::ResolveDoubts(ui::Dialog& dialog) {
  if (reader_->InDoubt()) {
    dialog.PostMessage(res::kMessageResolveOwnNumbers);
  }
}

void OwnNumbersDialog::Erase(ui::Dialog& dialog) {
  const int row = RowToChange(dialog);
  if (row < 0) {
    return;
  }
  const ui::BoxAnswer answer = state_.ports.screen.MessageBox(
      dialog.Handle(), EraseQuestion(*dialog.List(res::kOwnNumbersList), row),
      res::LoadString(res::kStringWarning), ui::kBoxQuestion);
  if (answer != ui::BoxAnswer::kYes) {
    return;
  }
  state_.ports.screen.SetWaitCursor(true);
  const std::vector<std::uint8_t> record(reader_->Client().RecordLength(), kErased);
  const std::uint32_t number = static_cast<std::uint32_t>(row) + 1;
  if (!reader_->Client().UpdateRecord(kOwnNumberFile, number, record)) {
    platform::SimResult result = state_.simPhonebook.ReadStatus();
    if (Succeeded(result) && app::CardIsExchanged(state_)) {
      result = platform::SimResult::kWrongSim;
    }
    reader_->Doubt(number, record, !Succeeded(result));
    ResolveDoubts(dialog);
    if (!Succeeded(result)) {
      state_.ports.screen.SetWaitCursor(false);
      app::ShowCardError(state_, dialog.Handle(), result);
      return;
    }
  }
  ui::ListView& list = *dialog.List(res::kOwnNumbersList);
  list.SetItemText(row, kOwnNumberColumnName, {});
  list.SetItemText(row, kOwnNumberColumnPhone, {});
  list.RedrawItem(row);
  state_.ports.screen.SetWaitCursor(false);
}

void OwnNumbersDialog::OnHelp(ui::Dialog& /*dialog*/) {
  ShowHelp(state_);
}

void OwnNumbersDialog::Leave(ui::Dialog& dialog) {
  if (changed_) {
    app::UpdateOwnNumberHeader(state_);
  }
  dialog.DestroyMenuBar();
  watcher_->SetList(nullptr);
  reader_->Close();
  dialog.End(ui::kDialogDone);
}

void OwnNumbersDialog::OnClose(ui::Dialog& dialog) {
  Leave(dialog);
}

void ShowOwnNumbers(app::AppState& state, ui::WindowHandle owner,
                    const std::shared_ptr<OwnNumberWatcher>& watcher) {
  if (!app::CardIsReady(state)) {
    return;
  }
  const app::CardHold hold(state);
  OwnNumbersDialog dialog(state, watcher);
  RunDialog(state, res::kDialogOwnNumbers, owner, dialog);
}

}  // namespace kelpin::views
