#include "app/main_dialog.h"

#include "app/app_state.h"
#include "app/card_error.h"
#include "app/help.h"
#include "app/list_turn.h"
#include "res/accelerators.h"
#include "res/ids.h"
#include "res/menus.h"
#include "res/strings.h"
#include "ui/keys.h"
#include "ui/screen.h"

namespace kelpin::app {
namespace {

constexpr std::uint32_t kNotificationClasses = platform::kRilClassDeviceSpecific |
                                               platform::kRilClassRadioState |
                                               platform::kRilClassMiscellaneous;
static_assert(kNotificationClasses == 0x80C00000);
constexpr std::uint32_t kNoNotifications = 0;
constexpr std::uint32_t kPhonebookWasChanged = 1;

constexpr std::uint32_t kSelectedFocused = ui::kItemSelected | ui::kItemFocused;

std::uint32_t LowWord(std::uint32_t value) {
  return value & 0xFFFF;
}

// The row that a key goes to around the list's end, -1 when the list is to handle the key itself.
int RowAroundEnd(const ui::ListView& list, const ui::KeyPress& press) {
  const int last = list.ItemCount() - 1;
  const int focused = list.FocusedItem();
  if (press.modifiers != ui::kNoModifier || last < 0) {
    return -1;
  }
  if (press.key == ui::Key::kDown && focused == last) {
    return 0;
  }
  if (press.key == ui::Key::kUp && focused == 0) {
    return last;
  }
  return -1;
}

bool WrapAround(ui::ListView& list, const ui::KeyPress& press) {
  const int row = RowAroundEnd(list, press);
  if (row < 0) {
    return false;
  }
  list.SetItemState(-1, 0, ui::kItemSelected);
  list.SetItemState(row, kSelectedFocused, kSelectedFocused);
  list.SetSelectionMark(row);
  list.EnsureVisible(row);
  return true;
}

}  // namespace

MainDialog::MainDialog(AppState& state, const Wiring& wiring)
    : state_(state), wiring_(wiring), commands_(state), loader_(state, commands_, wiring) {
  if (wiring_.fillCommands) {
    wiring_.fillCommands(state_, commands_, loader_);
  }
}

void MainDialog::OnInit(ui::Dialog& dialog) {
  SetUpWindow(dialog);
  OpenSessions();
  AskAboutNewSim();
  commands_.RemoveSwitchedOff();
  TellPhonebookChanged();
  if (loader_.StartLoad() == 0) {
    return;
  }
  if (ui::ListView* const list = dialog.List(res::kMainList)) {
    list->SetKeyFilter(
        [list](const ui::KeyPress& press) { return WrapAround(*list, press); },
        [list](const ui::KeyPress& press) { return RowAroundEnd(*list, press) >= 0; });
  }
  dialog.PostMessage(res::kMessageStartWatchers);
}

void MainDialog::SetUpWindow(ui::Dialog& dialog) {
  state_.layout = MainListLayoutFor(state_.isSmartphone != 0, state_.isHighRes != 0);
  dialog.SetFullScreen(true, true);
  state_.mainDialog = dialog.Handle();
  state_.dialog = dialog.shared_from_this();
  LoadTitle(state_);
  dialog.SetTitle(state_.appTitle);

  if (const ui::MenuBarTemplate* const bar = res::FindMenuBar(res::kBarMain)) {
    dialog.CreateMenuBar(*bar);
    state_.menuBar = dialog.Bar();
  }
  dialog.SetAccelerators(res::MainAccelerators());
  commands_.GreyUnknown();
  commands_.SetCommandsEnabled(false);

  SetUpMainList(state_, dialog.ClientSize());
}

void MainDialog::OpenSessions() {
  const platform::SimResult result = state_.simPhonebook.Open();
  if (!Succeeded(result)) {
    ShowCardError(state_, state_.mainDialog, result);
    return;
  }
  // A session that does not open fails every command, and each command's caller handles that.
  state_.radio.Open(kNotificationClasses);
  state_.extPhonebook.Open(kNoNotifications);
  // Without settings every optional feature stays off.
  LoadSettings(state_.ports.registry, state_.settings);
  LoadLanguage(state_.ports.registry, state_.settings);
  state_.language = state_.settings.CurLang;
}

void MainDialog::AskAboutNewSim() {
  if (state_.settings.QueryNewSIM != 1) {
    return;
  }
  // Nobody is asked for what the program cannot do.
  const bool yes =
      commands_.Knows(res::kCommandSaveToContacts) &&
      state_.ports.screen.MessageBox(state_.mainDialog, res::LoadString(res::kStringNewSimQuestion),
                                     res::LoadString(res::kStringNewSim),
                                     ui::kBoxQuestion) == ui::BoxAnswer::kYes;
  if (!yes) {
    state_.settings.QueryNewSIM = 0;
  }
}

void MainDialog::TellPhonebookChanged() {
  if (state_.settings.Enable_PBCMsg == 0) {
    return;
  }
  std::uint32_t changed = 0;
  if (state_.radio.PhonebookChanged(changed) && changed == kPhonebookWasChanged) {
    state_.ports.screen.MessageBox(state_.mainDialog,
                                   res::LoadString(res::kStringAddressBookUpdated), state_.appTitle,
                                   ui::kBoxNotice);
  }
}

void MainDialog::OnCommand(ui::Dialog& dialog, int command) {
  switch (command) {
    case ui::kCommandOk:
      // On a Pocket PC the title bar's buttons are the shell's.
      if (state_.isSmartphone != 0) {
        dialog.Command(res::kCommandEdit);
      }
      break;
    case ui::kCommandCancel:
      break;
    default:
      commands_.Run(command);
      break;
  }
}

void MainDialog::OnNotify(ui::Dialog& dialog, const ui::Notification& notification) {
  ui::ListView* const list = dialog.List(res::kMainList);
  if (notification.control != res::kMainList || list == nullptr || IsListLoading(state_)) {
    return;
  }
  switch (notification.code) {
    case ui::NotifyCode::kContextMenu:
      if (list->SelectedCount() > 0) {
        dialog.ShowPopup(commands_.ContextMenu(), notification.point);
      }
      break;
    case ui::NotifyCode::kItemActivated:
      dialog.Command(res::kCommandEdit);
      break;
    case ui::NotifyCode::kClick:
      if (list->SelectedCount() == 1) {
        dialog.Command(res::kCommandEdit);
      }
      break;
    case ui::NotifyCode::kColumnClick:
      state_.sortAscending = state_.sortAscending == 0 ? 1 : 0;
      state_.sortColumn = notification.column;
      SortMainList(state_);
      break;
    case ui::NotifyCode::kItemInserted:
      list->SetItemState(-1, 0, ui::kItemSelected);
      list->SetItemState(notification.subItem, kSelectedFocused, kSelectedFocused);
      break;
    case ui::NotifyCode::kItemChanged:
      commands_.FollowSelection();
      break;
    default:
      break;
  }
}

void MainDialog::OnSize(ui::Dialog& /*dialog*/, ui::Size client) {
  if (client.width == size_.width || client.height == size_.height) {
    return;
  }
  size_ = client;
  PlaceMainList(state_, client);
}

void MainDialog::OnActivate(ui::Dialog& /*dialog*/, bool active) {
  state_.active = active;
}

bool MainDialog::OnHotKey(ui::Dialog& dialog, int virtualKey, unsigned modifiers) {
  if (virtualKey != ui::kVirtualKeyTalk || modifiers != ui::kNoModifier) {
    return false;
  }
  dialog.Command(res::kCommandCall);
  return true;
}

void MainDialog::OnMessage(ui::Dialog& /*dialog*/, std::uint32_t message, std::uint32_t /*first*/,
                           std::uint32_t second) {
  switch (message) {
    case res::kMessageStartWatchers:
      if (wiring_.startWatchers) {
        wiring_.startWatchers(state_, commands_, loader_);
      }
      break;
    case res::kMessageSetBusy:
      state_.ports.screen.SetWaitCursor(LowWord(second) == 1);
      break;
    default:
      break;
  }
}

void MainDialog::OnHelp(ui::Dialog& /*dialog*/) {
  ShowHelp(state_);
}

void MainDialog::OnClose(ui::Dialog& dialog) {
  if (!state_.mayClose || state_.mayClose()) {
    DialogHandler::OnClose(dialog);
  }
}

void MainDialog::OnDestroy(ui::Dialog& dialog) {
  state_.closing = true;
  EndListTurns(state_);
  if (wiring_.closing) {
    wiring_.closing();
  }
  CloseSessions();
  if (ui::ListView* const list = dialog.List(res::kMainList)) {
    list->SetKeyFilter(nullptr);
  }
  dialog.DestroyMenuBar();
  state_.ports.screen.PostQuit(0);
}

void MainDialog::CloseSessions() {
  state_.simPhonebook.Close();
  if (state_.radio.Close() != 0) {
    state_.extPhonebook.Close();
  }
}

}  // namespace kelpin::app
