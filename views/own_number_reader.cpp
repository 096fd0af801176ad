#include "views/own_number_reader.h"

#include <algorithm>
#include <utility>

#include "app/app_state.h"
#include "app/card_error.h"
#include "app/card_hold.h"
#include "app/list_message.h"
#include "platform/radio_interface.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "sim/sim_text.h"
#include "views/record_list.h"

namespace kelpin::views {
namespace {

constexpr std::uint32_t kNotificationClass = 0x00400000;
static_assert(kNotificationClass == platform::kRilClassMiscellaneous);

}  // namespace

OwnNumberReader::OwnNumberReader(app::AppState& state)
    : state_(state), client_(state.ports.radio, state.ports.kernel, state.ports.devices) {}

void OwnNumberReader::Open(std::shared_ptr<ui::Dialog> dialog) {
  dialog_ = std::move(dialog);
  client_.Open(kNotificationClass);
}

void OwnNumberReader::Close() {
  if (!closed_.exchange(true)) {
    client_.Close();
  }
}

int OwnNumberReader::StartFill() {
  const std::uint32_t turn = ++turn_;
  return state_.ports.kernel.CreateThread([reader = shared_from_this(), turn] {
    ui::Screen& screen = reader->state_.ports.screen;
    screen.SetWaitCursor(true);
    if (ui::ListView* const list = reader->dialog_->List(res::kOwnNumbersList)) {
      const MutexLock guard(reader->filling_);
      reader->Fill(*list, turn);
    }
    screen.SetWaitCursor(false);
    if (reader->state_.settings.ReadOnly_OwnNumber != 0) {
      reader->EnableCommands(true);
    }
  });
}

void OwnNumberReader::Refresh() {
  ui::ListView* const list = dialog_ == nullptr ? nullptr : dialog_->List(res::kOwnNumbersList);
  if (list == nullptr || closed_ || refreshing_.exchange(true)) {
    return;
  }
  const platform::SimResult result = state_.simPhonebook.ReadStatus();
  if (!Succeeded(result)) {
    // The guard stays: a card that does not answer is not asked at each of its events.
    if (!closed_ && !state_.closing) {
      app::ShowCardError(state_, dialog_->Handle(), result);
    }
    return;
  }
  state_.ports.screen.SetWaitCursor(true);
  {
    const MutexLock guard(rows_);
    ++turn_;  // a fill under way ends, and adds no row any more
    list->DeleteAllItems();
  }
  EnableCommands(false);
  if (StartFill() != 0) {
    state_.ports.screen.SetWaitCursor(false);
    refreshing_ = false;
  }
}

void OwnNumberReader::EnableCommands(bool enabled) {
  const auto bar = dialog_ == nullptr ? nullptr : dialog_->Bar();
  if (bar == nullptr) {
    return;
  }
  if (state_.settings.ReadOnly_OwnNumber == 0) {
    if (ui::Menu* const menu = bar->SubMenu(res::kOwnNumbersMenu)) {
      menu->EnableItem(res::kOwnNumbersErase, enabled);
      menu->EnableItem(res::kOwnNumbersRefresh, enabled);
    }
  }
  bar->EnableSoftKey(0, enabled);
}

bool OwnNumberReader::NameFromSettings(std::uint32_t record) const {
  return record >= 1 && record <= nameFromSettings_.size() && nameFromSettings_[record - 1];
}

void OwnNumberReader::Fill(ui::ListView& list, std::uint32_t turn) {
  if (!Wanted(turn)) {
    return;
  }
  list.SetMessage(app::MakeListMessage(res::kTextReadingCard));
  bool cardFailed = false;
  if (!client_.GetFileInfo(kOwnNumberFile)) {
    cardFailed = TellStatus();
  } else {
    const std::uint32_t count = client_.RecordCount();
    for (std::uint32_t record = 1; record <= count && Wanted(turn); ++record) {
      if (!ReadRecord(list, record, turn)) {
        cardFailed = TellStatus();
        break;
      }
    }
  }
  if (!Wanted(turn)) {
    return;
  }
  ShowRecordsRead(list, cardFailed, res::kTextNoOwnNumbers);
}

bool OwnNumberReader::ReadRecord(ui::ListView& list, std::uint32_t record, std::uint32_t turn) {
  std::vector<std::uint8_t> response;
  if (!client_.ReadRecord(kOwnNumberFile, record, response)) {
    return false;
  }
  const Texts texts = Decode(response, record);
  const MutexLock guard(rows_);
  if (Wanted(turn)) {
    list.InsertRow(list.ItemCount(), {res::Format(u"%d", {record}), texts.name, texts.number},
                   nullptr);
  }
  return true;
}

OwnNumberReader::Texts OwnNumberReader::Decode(std::span<const std::uint8_t> response,
                                               std::uint32_t record) {
  Texts texts;
  sim::DecodeAlphaRaw(response, texts.name, client_.RecordLength(), client_.MaxAlphaLength());
  sim::DecodeAdnNumber(response, texts.number, client_.RecordLength(), client_.MaxDigits());
  if (texts.name.empty() && record <= app::kOwnNumberRecordCount) {
    texts.name = state_.settings.ownNumberRecords[record - 1];
    if (!texts.name.empty()) {
      nameFromSettings_[record - 1] = true;
    }
  }
  return texts;
}

void OwnNumberReader::Doubt(std::uint32_t record, std::vector<std::uint8_t> meant, bool told) {
  doubts_.push_back({record, std::move(meant), told});
}

void OwnNumberReader::ResolveDoubts() {
  for (const Unconfirmed& update : std::exchange(doubts_, {})) {
    Resolve(update);
  }
}

void OwnNumberReader::Resolve(const Unconfirmed& update) {
  ui::ListView* const list = dialog_->List(res::kOwnNumbersList);
  // The record of another card says nothing of the update.
  if (list == nullptr || closed_ || app::CardIsExchanged(state_)) {
    return;
  }
  state_.ports.screen.SetWaitCursor(true);
  std::vector<std::uint8_t> response;
  const bool read = client_.ReadRecord(kOwnNumberFile, update.record, response);
  const bool asMeant = read && std::ranges::equal(sim::RecordBytes(response), update.meant);
  if (read && (update.told || !asMeant)) {
    const Texts texts = Decode(response, update.record);
    const MutexLock guard(rows_);
    const int row = static_cast<int>(update.record) - 1;
    if (row < list->ItemCount()) {
      list->SetItemText(row, kOwnNumberColumnName, texts.name);
      list->SetItemText(row, kOwnNumberColumnPhone, texts.number);
      list->RedrawItem(row);
    }
  }
  state_.ports.screen.SetWaitCursor(false);
  if (!asMeant && !update.told) {
    const int text = read ? res::kTextChangeNotTaken : res::kTextChangeNotConfirmed;
    state_.ports.screen.MessageBox(dialog_->Handle(), res::LoadString(text),
                                   res::LoadString(res::kStringError), ui::kBoxError);
  }
}

// A card that answers, but has no such file or record, is no failure.
bool OwnNumberReader::TellStatus() {
  if (closed_) {
    return false;
  }
  const platform::SimResult result = state_.simPhonebook.ReadStatus();
  if (!closed_ && !state_.closing) {
    app::ShowCardError(state_, dialog_->Handle(), result);
  }
  return result != platform::SimResult::kOk;
}

void OwnNumberWatcher::Start() {
  {
    const MutexLock guard(lock_);
    if (started_) {
      return;
    }
    started_ = true;
  }
  event_ = state_.ports.kernel.CreateEvent(sim::kOwnNumbersEventName);
  if (event_ != nullptr) {
    static_cast<void>(
        state_.ports.kernel.CreateThread([self = shared_from_this()] { self->Watch(); }));
  }
}

void OwnNumberWatcher::SetList(std::shared_ptr<OwnNumberReader> reader) {
  const MutexLock guard(lock_);
  list_ = std::move(reader);
}

std::shared_ptr<OwnNumberReader> OwnNumberWatcher::List() const {
  const MutexLock guard(lock_);
  return list_;
}

void OwnNumberWatcher::Watch() {
  while (event_->Wait(platform::kInfinite) == platform::WaitResult::kSignaled) {
    if (const auto list = List(); list != nullptr && !list->Closed()) {
      list->Refresh();
    } else {
      event_->EventModify(platform::EventAction::kPulse);
    }
  }
}

}  // namespace kelpin::views
