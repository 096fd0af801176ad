#include "app/watchers.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "app/app_state.h"
#include "app/card_error.h"
#include "app/commands.h"
#include "app/list_turn.h"
#include "app/own_number_header.h"
#include "res/ids.h"
#include "ui/screen.h"

namespace kelpin::app {
namespace {

using platform::SimResult;
using platform::WaitResult;

constexpr std::uint32_t kSelectedFocused = ui::kItemSelected | ui::kItemFocused;

// What a watcher of entries does with the list while it has it: soft keys off, and the wait cursor
// as long as it works under the user's eyes.
class ListWork {
 public:
  ListWork(AppState& state, Commands& commands) : state_(state), commands_(commands) {
    commands_.EnableSoftKeys(false);
  }
  ~ListWork() {
    commands_.EnableSoftKeys(true);
    if (waiting_) {
      state_.ports.screen.SetWaitCursor(false);
    }
  }
  ListWork(const ListWork&) = delete;
  ListWork& operator=(const ListWork&) = delete;

  void BeginEntry() {
    if (state_.active) {
      state_.ports.screen.SetWaitCursor(true);
      waiting_ = true;
    }
  }

 private:
  AppState& state_;
  Commands& commands_;
  bool waiting_ = false;
};

void GiveListBackChanged(AppState& state, Commands& commands) {
  GiveListBack(state);
  commands.FollowSelection();
}

// Reads the entry anew and lists it. The row it had, -1 when it had none.
int ListStoredEntry(AppState& state, ui::ListView& list, std::uint32_t index) {
  const int row = FindListRow(state, index);
  if (row >= 0) {
    list.DeleteItem(row);
  }
  std::u16string name;
  std::u16string number;
  const SimResult result = state.simPhonebook.ReadEntry(index, &name, &number);
  if (Succeeded(result)) {
    // Without memory for it the row is left out.
    InsertListRow(state, index, number.c_str(), name.c_str());
  } else if (!state.closing) {
    ShowUnaskedCardError(state, state.mainDialog, result);
  }
  return row;
}

void SelectReplacedRow(ui::ListView& list, int row) {
  const int last = list.ItemCount() - 1;
  if (row < 0 || last < 0) {
    return;
  }
  // To the list, row -1 is every row.
  if (const int mark = list.SelectionMark(); mark >= 0) {
    list.SetItemState(mark, 0, ui::kItemSelected);
  }
  list.SetItemState(std::min(row, last), kSelectedFocused, kSelectedFocused);
  list.EnsureVisible(0);
}

void ListStoredEntries(AppState& state, Commands& commands) {
  if (!TakeList(state)) {
    return;
  }
  std::uint32_t index = 0;
  if (state.simPhonebook.TakeStored(index) == 0) {
    GiveListBack(state);
    return;
  }
  {
    ui::ListView& list = *state.dialog->List(res::kMainList);
    ListWork work(state, commands);
    int replaced = -1;
    do {
      work.BeginEntry();
      if (const int row = ListStoredEntry(state, list, index); row >= 0) {
        replaced = row;
      }
    } while (state.simPhonebook.TakeStored(index) != 0);
    SortMainList(state);
    SelectReplacedRow(list, replaced);
  }
  GiveListBackChanged(state, commands);
}

void UnlistDeletedEntries(AppState& state, Commands& commands) {
  if (!TakeList(state)) {
    return;
  }
  {
    ui::ListView& list = *state.dialog->List(res::kMainList);
    ListWork work(state, commands);
    std::uint32_t index = 0;
    while (state.simPhonebook.TakeDeleted(index) != 0) {
      work.BeginEntry();
      // A location that is in use again has another entry by now, whose row stays.
      const int row = state.simPhonebook.Slot(index) == 0 ? FindListRow(state, index) : -1;
      if (row >= 0) {
        list.DeleteItem(row);
      }
    }
  }
  GiveListBackChanged(state, commands);
}

// What came to a queue while it was worked on was told by a pulse that nobody waited for.
void WatchStored(AppState& state, Commands& commands) {
  while (state.simPhonebook.WaitStored() == WaitResult::kSignaled) {
    do {
      ListStoredEntries(state, commands);
    } while (state.simPhonebook.StoredCount() > 0 && !state.closing);
  }
}

void WatchDeleted(AppState& state, Commands& commands) {
  while (state.simPhonebook.WaitDeleted() == WaitResult::kSignaled) {
    do {
      UnlistDeletedEntries(state, commands);
    } while (state.simPhonebook.DeletedCount() > 0 && !state.closing);
  }
}

void WatchOwnNumbers(AppState& state) {
  while (state.radio.WaitOwnNumbers() == WaitResult::kSignaled) {
    UpdateOwnNumberHeader(state);
  }
}

void WatchPhonebook(AppState& state) {
  while (state.radio.WaitPhonebook() == WaitResult::kSignaled) {
    state.cardChanged = true;
    state.dialog->PostCommand(res::kCommandRefresh);
  }
}

}  // namespace

void StartWatchers(AppState& state, Commands& commands) {
  platform::KernelObjects& kernel = state.ports.kernel;
  // The conjunction stops at the first thread that is not made.
  static_cast<void>(kernel.CreateThread([&] { WatchStored(state, commands); }) != 0 &&
                    kernel.CreateThread([&] { WatchDeleted(state, commands); }) != 0 &&
                    kernel.CreateThread([&] { WatchOwnNumbers(state); }) != 0 &&
                    kernel.CreateThread([&] { WatchPhonebook(state); }) != 0);
}

}  // namespace kelpin::app
