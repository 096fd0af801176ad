#include "app/list_loader.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "app/app_state.h"
#include "app/card_error.h"
#include "app/card_unlock.h"
#include "app/commands.h"
#include "app/list_message.h"
#include "app/list_turn.h"
#include "app/own_number_header.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "ui/screen.h"

namespace kelpin::app {
namespace {

using platform::RilPhonebookEntry;
using platform::RilPhonebookEntryEx;
using platform::SimResult;

constexpr std::uint32_t kBatch = 10;  // locations asked for at once
constexpr std::uint32_t kSelectedFocused = ui::kItemSelected | ui::kItemFocused;

ui::ListView& List(AppState& state) {
  return *state.dialog->List(res::kMainList);
}

bool IsHidden(const RilPhonebookEntry& /*entry*/) {
  return false;
}

bool IsHidden(const RilPhonebookEntryEx& entry) {
  return (entry.params & platform::kRilEntryHidden) != 0 && entry.hidden != 0;
}

// The number as the user writes it: the radio tells of the '+' in the address type.
template <typename Entry>
std::u16string NumberText(const Entry& entry) {
  const std::u16string number = entry.address;
  return entry.addressType == platform::kAddressTypeInternational ? u"+" + number : number;
}

template <typename Entry>
void AddEntry(AppState& state, const Entry& entry, std::uint32_t total) {
  if (entry.index > total) {
    return;
  }
  state.simPhonebook.MarkSlot(entry.index, 1);
  if (!IsHidden(entry)) {
    // Without memory for it the row is left out.
    InsertListRow(state, entry.index, NumberText(entry).c_str(), entry.text);
  }
}

// What the list says in place of rows when the card could not be read.
struct Failure {
  int text;
  int hint;
};

Failure FailureText(std::uint32_t code) {
  switch (static_cast<SimResult>(code)) {
    case SimResult::kNoSim:
    case SimResult::kNotInserted:
      return {res::kTextNoCard, res::kTextNoCardHint};
    case SimResult::kPhSimPinRequired:
    case SimResult::kPhFsimPinRequired:
    case SimResult::kPhFsimPukRequired:
    case SimResult::kPinRequired:
    case SimResult::kPukRequired:
    case SimResult::kPin2Required:
    case SimResult::kPuk2Required:
      return {res::kTextCardLocked, res::kTextCardLockedHint};
    default:
      return {res::kTextCardNotRead, res::kTextCardNotReadHint};
  }
}

}  // namespace

int ListLoader::StartLoad() {
  // One load that has not begun yet reads all there is by then.
  if (queued_.exchange(true)) {
    return 1;
  }
  if (state_.ports.kernel.CreateThread([this] { Load(); }) != 0) {
    return 1;
  }
  queued_ = false;
  ShowOutcome({true, 0});
  return 0;
}

void ListLoader::Refresh() {
  if (state_.ports.cardUse != nullptr) {
    state_.ports.cardUse->ReadAfresh();
  }
  const bool unasked = state_.cardChanged.exchange(false);
  UnlockForReading(state_, !unasked);
  const SimResult result = state_.simPhonebook.ReadStatus();
  if (!Succeeded(result)) {
    if (unasked) {
      ShowUnaskedCardError(state_, state_.mainDialog, result);
    } else {
      ShowCardError(state_, state_.mainDialog, result);
    }
    return;
  }
  state_.ports.screen.SetWaitCursor(true);
  // A load that runs fills the list, and the one that waits for it empties it.
  if (!IsListLoading(state_)) {
    ShowProgress(0, 0);
    List(state_).DeleteAllItems();
  }
  commands_.SetCommandsEnabled(false);
  StartLoad();
  state_.ports.screen.SetWaitCursor(false);
}

void ListLoader::Load() {
  const MutexLock running(running_);
  if (state_.closing) {
    return;
  }
  ui::ListView& list = List(state_);
  ShowLoading();
  troublesBefore_ = state_.troubles.Count();
  if (!CardIsLocked(state_)) {
    UpdateOwnNumberHeader(state_, troublesBefore_);
  }
  if (!TakeList(state_)) {
    return;
  }
  queued_ = false;
  // Who had the rows until now has shown them at rest.
  ShowLoading();
  list.DeleteAllItems();
  list.SetSortArrow(-1, ui::SortArrow::kNone);
  if (wiring_.loadLayout) {
    wiring_.loadLayout(state_);
  }
  const Outcome outcome = ReadCard();
  if (!outcome.failed) {
    state_.troubles.CardIsReached();
  }
  CopyNewSim();
  ShowOutcome(outcome);
  commands_.SetLoadCommandsEnabled(true);
  state_.ports.screen.SetWaitCursor(false);
  GiveListBack(state_);
  commands_.FollowSelection();
  list.SetVisible(true);
  if (wiring_.listLoaded) {
    wiring_.listLoaded(state_);
  }
}

void ListLoader::ShowLoading() {
  ShowProgress(0, 0);
  List(state_).SetVisible(false);
  state_.ports.screen.SetWaitCursor(true);
  commands_.SetLoadCommandsEnabled(false);
}

ListLoader::Outcome ListLoader::Fail(SimResult result) {
  // A card that is being closed fails, and nobody wants to know.
  if (!state_.closing) {
    ShowCardError(state_, state_.mainDialog, static_cast<std::uint32_t>(result), troublesBefore_);
  }
  return {true, static_cast<std::uint32_t>(result)};
}

ListLoader::Outcome ListLoader::ReadCard() {
  SimResult result = state_.simPhonebook.ReadStatus();
  if (!Succeeded(result)) {
    return Fail(result);
  }
  result = state_.simPhonebook.ReadCaps();
  if (!Succeeded(result)) {
    return Fail(result);
  }
  // An empty card needs its map as well: new entries take their locations from it.
  state_.simPhonebook.PrepareSlotMap();
  const std::uint32_t used = state_.simPhonebook.Used();
  const std::uint32_t total = state_.simPhonebook.Total();
  if (used == 0) {
    return {};
  }
  ShowProgress(0, used);
  return state_.settings.QRVmaskW1 != 0 ? ReadEntries<RilPhonebookEntryEx>(used, total)
                                        : ReadEntries<RilPhonebookEntry>(used, total);
}

template <typename Entry>
ListLoader::Outcome ListLoader::ReadEntries(std::uint32_t used, std::uint32_t total) {
  std::size_t read = 0;
  for (std::uint64_t first = 1; first <= total && read < used; first += kBatch) {
    const auto from = static_cast<std::uint32_t>(first);
    const auto to = static_cast<std::uint32_t>(std::min<std::uint64_t>(first + kBatch - 1, total));
    std::vector<std::uint8_t> data;
    const bool answered = std::is_same_v<Entry, RilPhonebookEntryEx>
                              ? state_.radio.ReadPhonebookEntriesEx(from, to, data)
                              : state_.radio.ReadPhonebookEntries(from, to, data);
    if (!answered) {
      return Fail(state_.simPhonebook.ReadStatus());
    }
    const std::size_t count = data.size() / sizeof(Entry);
    for (std::size_t at = 0; at < count; ++at) {
      Entry entry;
      std::memcpy(&entry, data.data() + at * sizeof(Entry), sizeof(Entry));
      entry.address[platform::kRilTextLength - 1] = 0;
      entry.text[platform::kRilTextLength - 1] = 0;
      AddEntry(state_, entry, total);
    }
    read += count;
    ShowProgress(static_cast<std::uint32_t>(std::min<std::size_t>(read, used)), used);
  }
  ui::ListView& list = List(state_);
  if (list.ItemCount() > 0) {
    state_.sortColumn = kColumnName;
    SortMainList(state_);
    list.SetItemState(0, kSelectedFocused, kSelectedFocused);
    list.EnsureVisible(0);
  }
  return {};
}

void ListLoader::ShowProgress(std::uint32_t done, std::uint32_t used) {
  ui::ListMessage message;
  message.done = static_cast<int>(done);
  message.total = static_cast<int>(used);
  message.text = used == 0
                     ? std::u16string(res::LoadString(res::kTextReadingCard))
                     : res::Format(res::LoadString(res::kTextReadingCardProgress), {done, used});
  List(state_).SetMessage(std::move(message));
}

void ListLoader::ShowOutcome(const Outcome& outcome) {
  const Failure failure = FailureText(outcome.code);
  // What cannot be pressed is not to be advised.
  const int emptyHint = commands_.Knows(res::kCommandNew) ? res::kTextNoEntriesHint : 0;
  List(state_).SetMessage(outcome.failed ? MakeListMessage(failure.text, failure.hint)
                                         : MakeListMessage(res::kTextNoEntries, emptyHint));
}

void ListLoader::CopyNewSim() {
  if (state_.settings.QueryNewSIM == 1) {
    state_.dialog->PostCommand(res::kCommandSelectAll);
    state_.dialog->PostCommand(res::kCommandSaveToContacts);
    state_.settings.QueryNewSIM = 0;
  }
}

}  // namespace kelpin::app
