#include "views/service_numbers.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "app/app_state.h"
#include "app/card_error.h"
#include "app/list_message.h"
#include "app/readiness.h"
#include "platform/radio_interface.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/menus.h"
#include "res/strings.h"
#include "sim/ril_client.h"
#include "sim/sim_text.h"
#include "ui/keys.h"
#include "views/make_call.h"
#include "views/record_list.h"
#include "views/view_dialog.h"

namespace kelpin::views {
namespace {

constexpr std::uint32_t kServiceNumberFile = 0x6F49;  // EF_SDN
constexpr std::uint32_t kExtensionFile = 0x6F4C;      // EF_EXT3
constexpr std::uint8_t kNoExtension = 0xFF;
constexpr std::uint32_t kNotificationClass = 0x00400000;
static_assert(kNotificationClass == platform::kRilClassMiscellaneous);

constexpr int kColumnRecord = 0;
constexpr int kColumnName = 1;
constexpr int kColumnPhone = 2;
constexpr int kUnit = 36;
constexpr int kHighResUnit = 72;

constexpr std::uint32_t kOpeningStyle = ui::kListNoHorizontalScroll | ui::kListFullRowSelect;
static_assert(kOpeningStyle == 0x10000020);

int Unit(const app::AppState& state) {
  return state.isSmartphone == 0 && state.isHighRes != 0 ? kHighResUnit : kUnit;
}

}  // namespace

// The thread holds it, so that closing the dialog ends the thread and not the other way round.
struct ServiceNumbersDialog::Reader {
  Reader(app::AppState& theState, int theUnit)
      : state(theState),
        unit(theUnit),
        numbers(theState.ports.radio, theState.ports.kernel, theState.ports.devices),
        extensions(theState.ports.radio, theState.ports.kernel, theState.ports.devices) {}

  void Run();
  void Fill(ui::ListView& list);
  bool ReadRecords(ui::ListView& list);  // false when the card has failed
  bool ReadOne(ui::ListView& list, std::uint32_t record);
  std::u16string Extension(std::uint8_t record);
  bool TellNotRead();  // true when the card has failed

  app::AppState& state;
  const int unit;
  sim::RilClient numbers;
  sim::RilClient extensions;
  std::shared_ptr<ui::Dialog> dialog;
  std::atomic<bool> closed = false;
  bool extensionsMeasured = false;
  bool extensionsThere = false;
};

void ServiceNumbersDialog::Reader::Run() {
  state.ports.screen.SetWaitCursor(true);
  if (ui::ListView* const list = dialog->List(res::kServiceNumbersList)) {
    Fill(*list);
  }
  state.ports.screen.SetWaitCursor(false);
}

void ServiceNumbersDialog::Reader::Fill(ui::ListView& list) {
  list.SetMessage(app::MakeListMessage(res::kTextReadingCard));
  const bool cardFailed = !ReadRecords(list);
  if (closed) {
    return;
  }
  // Wide enough for a number with its extension, which is then scrolled to.
  list.SetColumnWidth(kColumnPhone, dialog->ClientSize().width / 2 + 4 * unit);
  list.SetExtendedStyle(ui::kListFullRowSelect);
  ShowRecordsRead(list, cardFailed, res::kTextNoServiceNumbers);
}

bool ServiceNumbersDialog::Reader::ReadRecords(ui::ListView& list) {
  if (!numbers.GetFileInfo(kServiceNumberFile)) {
    return !TellNotRead();
  }
  const std::uint32_t count = numbers.RecordCount();
  for (std::uint32_t record = 1; record <= count; ++record) {
    if (!ReadOne(list, record)) {
      return !TellNotRead();
    }
  }
  return true;
}

bool ServiceNumbersDialog::Reader::ReadOne(ui::ListView& list, std::uint32_t record) {
  std::vector<std::uint8_t> response;
  if (!numbers.ReadRecord(kServiceNumberFile, record, response)) {
    return false;
  }
  std::u16string name;
  std::u16string number;
  sim::DecodeAlphaRaw(response, name, numbers.RecordLength(), numbers.MaxAlphaLength());
  sim::DecodeAdnNumber(response, number, numbers.RecordLength(), numbers.MaxDigits());
  const auto bytes = sim::RecordBytes(response);
  const std::uint8_t extension = bytes.empty() ? kNoExtension : bytes.back();
  if (extension != kNoExtension) {
    number += Extension(extension);
  }
  if (!name.empty() || !number.empty()) {
    list.InsertRow(list.ItemCount(), {res::Format(u"%d", {record}), name, number}, nullptr);
  }
  return true;
}

// The digits that did not fit the record; none when they cannot be read, and the number is shown
// without them.
std::u16string ServiceNumbersDialog::Reader::Extension(std::uint8_t record) {
  if (!extensionsMeasured) {
    extensionsMeasured = true;
    extensionsThere = extensions.GetFileInfo(kExtensionFile);
  }
  std::vector<std::uint8_t> response;
  std::u16string digits;
  if (extensionsThere && extensions.ReadRecord(kExtensionFile, record, response)) {
    sim::DecodeExtRaw(response, digits);
  }
  return digits;
}

// A card without the file is no failure of the card.
bool ServiceNumbersDialog::Reader::TellNotRead() {
  if (closed) {
    return false;
  }
  const platform::SimResult result = state.simPhonebook.ReadCaps();
  if (!closed && !state.closing) {
    app::ShowCardError(state, dialog->Handle(), result);
  }
  return result != platform::SimResult::kOk;
}

ServiceNumbersDialog::ServiceNumbersDialog(app::AppState& state)
    : state_(state), unit_(Unit(state)), reader_(std::make_shared<Reader>(state, unit_)) {}

ServiceNumbersDialog::~ServiceNumbersDialog() = default;

void ServiceNumbersDialog::OnInit(ui::Dialog& dialog) {
  dialog.SetFullScreen(false, true);
  dialog.SetTitle(state_.appTitle);
  ui::MenuBar* const bar = CreateBar(dialog, res::kBarServiceNumbers);
  dialog.SetText(res::kServiceNumbersHeader, res::LoadString(res::kStringServiceNumbersHeader));
  if (ui::ListView* const list = dialog.List(res::kServiceNumbersList)) {
    list->SetExtendedStyle(kOpeningStyle);
    list->InsertColumn(kColumnRecord, res::LoadString(res::kStringNumberSign), 0);
    list->InsertColumn(kColumnName, res::LoadString(res::kStringName), 0);
    list->InsertColumn(kColumnPhone, res::LoadString(res::kStringPhone), 0);
  }
  if (bar != nullptr) {
    bar->EnableSoftKey(0, false);
  }
  if (reader_->numbers.Open(kNotificationClass)) {
    reader_->extensions.Open(kNotificationClass);
  }
  reader_->dialog = dialog.shared_from_this();
  dialog.PostMessage(res::kMessageFillServiceNumbers);
}

void ServiceNumbersDialog::OnSize(ui::Dialog& dialog, ui::Size client) {
  ui::ListView* const list = dialog.List(res::kServiceNumbersList);
  if (list == nullptr || client == size_) {
    return;
  }
  size_ = client;
  const int header = std::min(state_.ports.screen.GetMetrics().headerHeight, client.height);
  dialog.SetBounds(res::kServiceNumbersHeader, {0, 0, client.width, header});
  dialog.SetBounds(res::kServiceNumbersList, {0, header, client.width, client.height - header});
  list->SetColumnWidth(kColumnRecord, unit_);
  list->SetColumnWidth(kColumnName, client.width / 2 - unit_ / 2);
  list->SetColumnWidth(kColumnPhone, client.width / 2 - unit_ / 2);
}

void ServiceNumbersDialog::OnCommand(ui::Dialog& dialog, int command) {
  switch (command) {
    case res::kOk:
      if (state_.isSmartphone != 0) {
        Call(dialog);
      } else {
        dialog.Close();
      }
      break;
    case res::kCancel:
    case res::kServiceNumbersClose:
      dialog.Close();
      break;
    case res::kServiceNumbersCall:
      Call(dialog);
      break;
    default:
      break;
  }
}

void ServiceNumbersDialog::OnNotify(ui::Dialog& dialog, const ui::Notification& notification) {
  ui::ListView* const list = dialog.List(res::kServiceNumbersList);
  if (notification.control != res::kServiceNumbersList || list == nullptr) {
    return;
  }
  switch (notification.code) {
    case ui::NotifyCode::kItemActivated:
      if (!press_.IsSecondPress(state_.ports.clock)) {
        Call(dialog);
      }
      break;
    case ui::NotifyCode::kClick:
      if (list->SelectedCount() == 1) {
        press_.Clicked(state_.ports.clock);
        Call(dialog);
      }
      break;
    case ui::NotifyCode::kItemChanged:
      if (const auto bar = dialog.Bar()) {
        bar->EnableSoftKey(0, list->SelectedCount() > 0);
      }
      break;
    case ui::NotifyCode::kContextMenu:
      if (list->SelectedCount() > 0) {
        dialog.ShowPopup(std::make_shared<ui::Menu>(res::ServiceNumberMenu()), notification.point);
      }
      break;
    default:
      break;
  }
}

bool ServiceNumbersDialog::OnHotKey(ui::Dialog& dialog, int virtualKey, unsigned modifiers) {
  if (virtualKey != ui::kVirtualKeyTalk || modifiers != ui::kNoModifier) {
    return false;
  }
  Call(dialog);
  return true;
}

void ServiceNumbersDialog::OnMessage(ui::Dialog& /*dialog*/, std::uint32_t message,
                                     std::uint32_t /*first*/, std::uint32_t /*second*/) {
  if (message == res::kMessageFillServiceNumbers) {
    static_cast<void>(state_.ports.kernel.CreateThread([reader = reader_] { reader->Run(); }));
  }
}

void ServiceNumbersDialog::OnHelp(ui::Dialog& /*dialog*/) {
  ShowHelp(state_);
}

void ServiceNumbersDialog::OnClose(ui::Dialog& dialog) {
  dialog.DestroyMenuBar();
  CloseClients();
  dialog.End(ui::kDialogDone);
}

void ServiceNumbersDialog::OnDestroy(ui::Dialog& /*dialog*/) {
  CloseClients();
}

// Ends the reads under way, too.
void ServiceNumbersDialog::CloseClients() {
  if (!reader_->closed.exchange(true)) {
    reader_->numbers.Close();
    reader_->extensions.Close();
  }
}

void ServiceNumbersDialog::Call(ui::Dialog& dialog) {
  const ui::ListView* const list = dialog.List(res::kServiceNumbersList);
  if (list == nullptr) {
    return;
  }
  int row = list->NextItem(-1, ui::kItemSelected);
  if (row < 0) {
    row = list->FocusedItem();
  }
  if (row < 0) {
    return;
  }
  const std::u16string name = list->ItemText(row, kColumnName);
  const std::u16string number = list->ItemText(row, kColumnPhone);
  const platform::SimResult result = state_.simPhonebook.ReadCaps();
  if (!Succeeded(result)) {
    app::ShowCardError(state_, dialog.Handle(), result);
    return;
  }
  MakeCall(state_, dialog.Handle(), name, number);
}

void ShowServiceNumbers(app::AppState& state) {
  if (!app::CardIsReady(state)) {
    return;
  }
  ServiceNumbersDialog numbers(state);
  RunDialog(state, res::kDialogServiceNumbers, state.mainDialog, numbers);
}

}  // namespace kelpin::views
