#include "views/own_number_editor.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/app_state.h"
#include "app/card_error.h"
#include "app/card_hold.h"
#include "res/ids.h"
#include "res/strings.h"
#include "sim/sim_text.h"
#include "ui/keys.h"
#include "views/own_number_reader.h"
#include "views/view_dialog.h"

namespace kelpin::views {
namespace {

constexpr std::size_t kTextLimit = 256;  // UTF-16 units read from an edit
constexpr std::uint8_t kPadding = 0xFF;

bool IsAscii(std::u16string_view text) {
  return std::ranges::all_of(text, [](char16_t unit) { return unit < 0x80; });
}

}  // namespace

OwnNumberEditor::OwnNumberEditor(app::AppState& state, OwnNumberReader& reader, ui::Dialog& list,
                                 int row)
    : state_(state),
      reader_(reader),
      list_(list),
      row_(row),
      nameMenu_(state.ports.screen),
      numberMenu_(state.ports.screen) {}

void OwnNumberEditor::OnInit(ui::Dialog& dialog) {
  const sim::RilClient& client = reader_.Client();
  dialog.SetFullScreen(true, false);
  dialog.SetTitle(state_.appTitle);
  CreateBar(dialog, res::kBarEditOwnNumber);
  dialog.SetText(res::kOwnNumberNameLabel, res::LoadString(res::kStringNameLabel));
  dialog.SetText(res::kOwnNumberNumberLabel, res::LoadString(res::kStringNumberLabel));
  dialog.SetLimit(res::kOwnNumberName, static_cast<int>(client.MaxAlphaLength()));
  dialog.SetLimit(res::kOwnNumberNumber, static_cast<int>(client.MaxDigits()));
  if (state_.sipAutoDeployOff == 0) {
    state_.ports.shell.ShowInputPanel(true);
  }
  dialog.SetInputMode(res::kOwnNumberName, ui::InputMode::kSpell);
  dialog.SetInputMode(res::kOwnNumberNumber, ui::InputMode::kNumbers);
  if (const ui::ListView* const list = list_.List(res::kOwnNumbersList)) {
    dialog.SetText(res::kOwnNumberName,
                   list->ItemText(row_, kOwnNumberColumnName).substr(0, client.MaxAlphaLength()));
    dialog.SetText(res::kOwnNumberNumber, list->ItemText(row_, kOwnNumberColumnPhone));
  }
  if (state_.isSmartphone == 0) {
    nameMenu_.Attach(dialog, res::kOwnNumberName);
    numberMenu_.Attach(dialog, res::kOwnNumberNumber);
  }
}

void OwnNumberEditor::OnNotify(ui::Dialog& dialog, const ui::Notification& notification) {
  if (nameMenu_.OnNotify(notification) || numberMenu_.OnNotify(notification) ||
      notification.control != res::kOwnNumberNumber) {
    return;
  }
  const std::optional<std::u16string> filtered = sim::FilterEditInput(
      static_cast<int>(notification.code), notification.control, dialog.Text(notification.control),
      static_cast<std::size_t>(std::max(0, dialog.Limit(notification.control))));
  if (filtered) {
    dialog.SetText(notification.control, *filtered);
    const int end = static_cast<int>(filtered->size());
    dialog.SetSelection(notification.control, end, end);
  }
}

void OwnNumberEditor::OnCommand(ui::Dialog& dialog, int command) {
  if (nameMenu_.OnCommand(command) || numberMenu_.OnCommand(command)) {
    return;
  }
  switch (command) {
    case res::kOk:
    case res::kOwnNumberSave:
      Save(dialog);
      break;
    case res::kCancel:
    case res::kOwnNumberCancel:
      dialog.Close();
      break;
    default:
      break;
  }
}

void OwnNumberEditor::Save(ui::Dialog& dialog) {
  sim::RilClient& client = reader_.Client();
  std::u16string name = dialog.Text(res::kOwnNumberName).substr(0, kTextLimit);
  std::u16string number = dialog.Text(res::kOwnNumberNumber).substr(0, kTextLimit);
  if (2 * name.size() >= client.MaxAlphaLength() && !IsAscii(name)) {
    Refuse(dialog, res::kStringNameTooLong, res::kOwnNumberName);
    return;
  }
  if (number.empty()) {
    Refuse(dialog, res::kStringNumberEmpty, res::kOwnNumberNumber);
    return;
  }
  ui::Screen& screen = state_.ports.screen;
  screen.SetWaitCursor(true);
  std::vector<std::uint8_t> record(client.RecordLength(), kPadding);
  if (sim::EncodeAdnRecord(record, name, number, client.RecordLength(), client.MaxAlphaLength()) ==
      0) {
    // The name alone can be too long for its field, by its bytes.
    screen.SetWaitCursor(false);
    dialog.SetFocus(res::kOwnNumberName);
    return;
  }
  const std::uint32_t place = static_cast<std::uint32_t>(row_) + 1;
  if (!client.UpdateRecord(kOwnNumberFile, place, record)) {
    platform::SimResult result = state_.simPhonebook.ReadStatus();
    if (Succeeded(result) && app::CardIsExchanged(state_)) {
      result = platform::SimResult::kWrongSim;
    }
    reader_.Doubt(place, record, !Succeeded(result));
    if (!Succeeded(result)) {
      screen.SetWaitCursor(false);
      app::ShowCardError(state_, dialog.Handle(), result);
      return;
    }
  }
  if (ui::ListView* const list = list_.List(res::kOwnNumbersList)) {
    list->SetItemText(row_, kOwnNumberColumnName, name);
    list->SetItemText(row_, kOwnNumberColumnPhone, number);
    list->RedrawItem(row_);
  }
  screen.SetWaitCursor(false);
  dialog.Close();
}

void OwnNumberEditor::Refuse(ui::Dialog& dialog, int text, int control) {
  state_.ports.screen.MessageBox(dialog.Handle(), res::LoadString(text),
                                 res::LoadString(res::kStringError), ui::kBoxError);
  dialog.SetFocus(control);
}

bool OwnNumberEditor::OnHotKey(ui::Dialog& /*dialog*/, int virtualKey, unsigned /*modifiers*/) {
  if (virtualKey != ui::kVirtualKeyBack) {
    return false;
  }
  state_.ports.shell.SendBackKey();
  return true;
}

void OwnNumberEditor::OnHelp(ui::Dialog& /*dialog*/) {
  ShowHelp(state_);
}

void OwnNumberEditor::OnClose(ui::Dialog& dialog) {
  nameMenu_.Detach();
  numberMenu_.Detach();
  if (state_.sipAutoDeployOff == 0) {
    state_.ports.shell.ShowInputPanel(false);
  }
  dialog.DestroyMenuBar();
  dialog.End(ui::kDialogDone);
}

}  // namespace kelpin::views
