#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "app/list_turn.h"
#include "app/watchers.h"
#include "sim/ril_client.h"
#include "sim/sim_phonebook.h"
#include "tests/app/app_fixture.h"

namespace kelpin::app {

// The program with its watchers on threads of their own.
class WatchersTest : public AppTest {
 protected:
  WatchersTest() {
    device.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kRun);
    wiring.startWatchers = [](AppState& app, Commands& commands, ListLoader&) {
      StartWatchers(app, commands);
    };
  }

  // Up to the end of the first load, with every watcher waiting.
  void OpenWatched() {
    ASSERT_EQ(Start(), 1);
    ASSERT_TRUE(Settle());
    device.journal.Clear();
  }

  // Serves the screen until nothing is left to do; false when that takes too long.
  bool Settle() {
    return device.screen.RunUntil([this] { return device.EveryWatcherWaits() && ListRests(); });
  }
  bool ListRests() {
    return !IsListLoading(*state) && !theLoader->IsWaiting() && List().Visible() &&
           Menu().IsEnabled(res::kCommandDelete) == (List().SelectedCount() > 0);
  }

  // Takes the list as a load would, so that watchers that were told wait for it.
  void HoldList() { ASSERT_TRUE(TakeList(*state)); }
  void LetListGo() { GiveListBack(*state); }

  void TellStored(std::uint32_t index) {
    device.sim.NotifyChange(platform::kSimNotifyPhonebookEntryStored, index);
  }
  void TellDeleted(std::uint32_t index) {
    device.sim.NotifyChange(platform::kSimNotifyPhonebookEntryDeleted, index);
  }
  // What another program does to tell this one.
  void Pulse(std::u16string_view name) {
    const std::unique_ptr<platform::Event> event = device.kernel.CreateEvent(name);
    ASSERT_TRUE(event->EventModify(platform::EventAction::kPulse));
  }
  void TellRadio(std::int32_t change) {
    device.radio.Notify(platform::kRilNotifyMiscellaneousSim, &change, sizeof(change));
  }
};

}  // namespace kelpin::app
