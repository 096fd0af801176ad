#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/app_state.h"
#include "app/list_loader.h"
#include "app/main_dialog.h"
#include "app/start_up.h"
#include "app/wiring.h"
#include "device/card/card_channel.h"
#include "device/card/card_devices.h"
#include "device/card/sim_service.h"
#include "program.h"
#include "res/ids.h"
#include "tests/app/fake_device.h"
#include "tests/support/list_texts.h"

namespace kelpin::test {

// The whole program, every command of it, on a card that outlives it and on fakes of all else.
class ProgramOnCard : public FakeDevice<> {
 public:
  enum class Threads {
    kReal,  // and the watchers run
    kHeld,  // kept until RunThreads, and nothing watches
  };

  explicit ProgramOnCard(device::card::CardChannel& channel, Threads threads = Threads::kReal,
                         platform::ContactsStore* store = nullptr)
      : service(channel),
        ports(PortsTo(service, service, devices, store != nullptr ? *store : contacts, &service,
                      &service)),
        wiring(ProgramWiring()) {
    if (threads == Threads::kHeld) {
      kernel.SetThreadMode(FakeKernel::ThreadMode::kHold);
      wiring.startWatchers = nullptr;
    }
    wiring.fillCommands = [this, fill = wiring.fillCommands](
                              app::AppState& app, app::Commands& commands, app::ListLoader& list) {
      loader_ = &list;
      fill(app, commands, list);
    };
  }
  ~ProgramOnCard() { Leave(state); }
  ProgramOnCard(const ProgramOnCard&) = delete;
  ProgramOnCard& operator=(const ProgramOnCard&) = delete;

  // The list, read and at rest.
  void Open() {
    mainDialog_ = std::make_unique<app::MainDialog>(state, wiring);
    ASSERT_EQ(app::InitInstance(state, *mainDialog_, 1, 0), 1);
    RunThreads();
    ASSERT_TRUE(Settle());
  }
  void RunThreads() {
    kernel.RunHeldThreads();
    screen.RunPending();
  }
  // Serves the screen until nothing is left to do; false when that takes too long.
  bool Settle() {
    return screen.RunUntil([this] {
      return (wiring.startWatchers == nullptr || EveryWatcherWaits()) &&
             !app::IsListLoading(state) && !loader_->IsWaiting() && List().Visible() &&
             state.simPhonebook.StoredCount() == 0;
    });
  }

  ui::ListView& List() const { return *state.dialog->List(res::kMainList); }
  // "3|Name|Number", in order.
  std::vector<std::u16string> Rows() const { return RowsOf(List()); }

  device::card::SimService service;
  device::card::CardDevices devices;
  app::Ports ports;
  app::AppState state{ports};
  app::Wiring wiring;  // changed before Open, if at all

 private:
  app::ListLoader* loader_ = nullptr;
  std::unique_ptr<app::MainDialog> mainDialog_;
};

}  // namespace kelpin::test
