#include "contacts/contact_picker.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "app/app_state.h"
#include "app/list_message.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "ui/screen.h"

namespace kelpin::contacts {
namespace {

constexpr std::size_t kLeftKey = 0;
constexpr std::size_t kRightKey = 1;

std::uint32_t FreeRecords(const app::AppState& state) {
  const std::uint32_t total = state.simPhonebook.Total();
  return total - std::min(total, state.simPhonebook.Used());
}

// What an empty list says.
ui::ListMessage EndMessage(EnumerationEnd end, bool perContact, bool anyContact) {
  return end != EnumerationEnd::kNotOpened && anyContact && !perContact
             ? app::MakeListMessage(res::kTextNoChosenNumbers, res::kTextNoChosenNumbersHint)
             : NoContactsMessage(end);
}

}  // namespace

struct ContactPicker::Shared {
  Shared(app::AppState& theState) : state(theState), rules(theState) {}

  app::AppState& state;
  const PickRules rules;
  std::shared_ptr<ui::Dialog> dialog;
  std::atomic<bool> stop = false;
  std::atomic<bool> anyContact = false;
};

ContactPicker::ContactPicker(app::AppState& state, bool move, Work work)
    : ContactListDialog(state, res::kContactPickerList, res::kMessageFillContactPicker),
      move_(move),
      work_(std::move(work)),
      shared_(std::make_shared<Shared>(state)) {}

ContactPicker::~ContactPicker() = default;

void ContactPicker::OnInit(ui::Dialog& dialog) {
  SetUp(dialog, move_ ? res::kBarMovePicker : res::kBarCopyPicker, res::kStringPhone);
  ShowCounter(dialog);
  shared_->dialog = dialog.shared_from_this();
  PostFillStarts(dialog);
}

void ContactPicker::StartFill(ui::Dialog& dialog) {
  ui::ListView* const list = dialog.List(res::kContactPickerList);
  state_.ports.screen.SetWaitCursor(true);
  EnableCheckCommands(dialog, false);
  // The rows are counted when all are there, not one by one as they come.
  list->SetNotifying(false);
  const int started = state_.ports.kernel.CreateThread([shared = shared_] {
    app::AppState& app = shared->state;
    ui::ListView& rows = *shared->dialog->List(res::kContactPickerList);
    const FillOutcome outcome = FillPicker(app.ports.contacts, shared->rules, shared->stop, rows);
    shared->anyContact = outcome.anyContact;
    app.ports.screen.SetWaitCursor(false);
    PostFillEnded(*shared->dialog, res::kMessageFillContactPicker, outcome.end);
  });
  if (started == 0) {
    state_.ports.screen.SetWaitCursor(false);
    EndFill(dialog, EnumerationEnd::kNotOpened);
  }
}

void ContactPicker::EndFill(ui::Dialog& dialog, EnumerationEnd end) {
  ui::ListView& list = *dialog.List(res::kContactPickerList);
  list.SetNotifying(true);
  checked_ = 0;
  const int rows = list.ItemCount();
  for (int row = 0; row < rows; ++row) {
    checked_ += list.Checked(row) ? 1 : 0;
  }
  list.SetMessage(EndMessage(end, shared_->rules.perContact, shared_->anyContact));
  stage_ = Stage::kChoosing;
  EnableCheckCommands(dialog, true);
  ShowCounter(dialog);
}

void ContactPicker::EnableCheckCommands(ui::Dialog& dialog, bool enabled) {
  const std::shared_ptr<ui::MenuBar> bar = dialog.Bar();
  if (bar == nullptr) {
    return;
  }
  bar->EnableSoftKey(kLeftKey, enabled);
  if (ui::Menu* const menu = bar->SubMenu(move_ ? res::kMovePickerMenu : res::kCopyPickerMenu)) {
    menu->EnableItem(move_ ? res::kMovePickerCheckAll : res::kCopyPickerCheckAll, enabled);
    menu->EnableItem(move_ ? res::kMovePickerUncheckAll : res::kCopyPickerUncheckAll, enabled);
  }
}

void ContactPicker::ShowCounter(ui::Dialog& dialog) {
  const std::uint32_t freeRecords = FreeRecords(state_);
  const bool tooMany = checked_ > 0 && static_cast<std::uint32_t>(checked_) > freeRecords;
  dialog.SetText(res::kContactPickerCounter, res::Format(u"(%d / %d)", {checked_, freeRecords}));
  dialog.SetBold(res::kContactPickerCounter, tooMany);
  dialog.SetColor(res::kContactPickerCounter,
                  tooMany ? ui::TextColor::kError : ui::TextColor::kNormal);
}

void ContactPicker::OnSize(ui::Dialog& dialog, ui::Size client) {
  const ui::Metrics metrics = state_.ports.screen.GetMetrics();
  const int top = std::min(metrics.labelHeight + 2 * metrics.gap, client.height);
  dialog.SetBounds(res::kContactPickerCounter,
                   {metrics.margin, metrics.gap, std::max(0, client.width - 2 * metrics.margin),
                    metrics.labelHeight});
  PlaceList(dialog, {0, top, client.width, client.height - top});
}

void ContactPicker::OnCommand(ui::Dialog& dialog, int command) {
  switch (command) {
    case res::kOk:
    case res::kCopyPickerDone:
    case res::kMovePickerMove:
      StartWork(dialog);
      break;
    case res::kCancel:
    case res::kCopyPickerCancel:
    case res::kMovePickerCancel:
      dialog.Close();
      break;
    case res::kCopyPickerCheckAll:
    case res::kMovePickerCheckAll:
      CheckAll(dialog, true);
      break;
    case res::kCopyPickerUncheckAll:
    case res::kMovePickerUncheckAll:
      CheckAll(dialog, false);
      break;
    default:
      break;
  }
}

void ContactPicker::CheckAll(ui::Dialog& dialog, bool checked) {
  if (stage_ != Stage::kChoosing) {
    return;
  }
  checkingAll_ = true;
  dialog.List(res::kContactPickerList)->SetCheck(-1, checked);
  checkingAll_ = false;
  ShowCounter(dialog);
}

void ContactPicker::OnNotify(ui::Dialog& dialog, const ui::Notification& notification) {
  if (notification.control != res::kContactPickerList ||
      notification.code != ui::NotifyCode::kItemChanged) {
    return;
  }
  const std::uint32_t before = notification.oldState & ui::kItemStateImageMask;
  const std::uint32_t after = notification.newState & ui::kItemStateImageMask;
  if (before == after) {
    return;
  }
  checked_ += after == ui::kItemChecked ? 1 : -1;
  if (!checkingAll_) {
    ShowCounter(dialog);
  }
}

void ContactPicker::StartWork(ui::Dialog& dialog) {
  const std::shared_ptr<ui::MenuBar> bar = dialog.Bar();
  if (stage_ != Stage::kChoosing || bar == nullptr) {
    return;
  }
  stage_ = Stage::kWorking;
  bar->EnableSoftKey(kLeftKey, false);
  bar->EnableSoftKey(kRightKey, false);
  const int started = state_.ports.kernel.CreateThread([shared = shared_, work = work_] {
    work(*shared->dialog, shared->stop);
    shared->dialog->End(ui::kDialogDone);
  });
  if (started == 0) {
    stage_ = Stage::kChoosing;
    bar->EnableSoftKey(kLeftKey, true);
    bar->EnableSoftKey(kRightKey, true);
  }
}

// A copy that runs ends the dialog itself, after the row it is at.
void ContactPicker::OnClose(ui::Dialog& dialog) {
  shared_->stop = true;
  if (stage_ != Stage::kWorking) {
    dialog.DestroyMenuBar();
    dialog.End(ui::kDialogDone);
  }
}

void ContactPicker::OnDestroy(ui::Dialog& /*dialog*/) {
  shared_->stop = true;
}

}  // namespace kelpin::contacts
