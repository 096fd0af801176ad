#pragma once

#include <QTest>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/app_state.h"
#include "app/commands.h"
#include "app/list_commands.h"
#include "app/list_loader.h"
#include "app/main_dialog.h"
#include "app/start_up.h"
#include "res/ids.h"
#include "tests/app/app_fixture.h"
#include "tests/gui/gui_support.h"
#include "tests/support/fake_clock.h"
#include "tests/support/fake_contacts.h"
#include "tests/support/fake_devices.h"
#include "tests/support/fake_kernel.h"
#include "tests/support/fake_log.h"
#include "tests/support/fake_programs.h"
#include "tests/support/fake_radio.h"
#include "tests/support/fake_registry.h"
#include "tests/support/fake_shell.h"
#include "tests/support/fake_sim.h"
#include "tests/support/fake_telephone.h"
#include "tests/support/radio_entries.h"

namespace kelpin::test {

// The program's main window as it is drawn, over a device of fakes. Its commands note that they
// came. Loads run on the screen's own thread, when the test says so.
class MainWindowTest : public GuiTest {
 protected:
  MainWindowTest() {
    kernel.SetThreadMode(FakeKernel::ThreadMode::kHold);
    radio.SetEntrySource([this] { return RadioEntries(sim); });
    for (const char16_t* const name :
         {u"Enable_SDN", u"Enable_AAS", u"Enable_GAS", u"Enable_Move_Func"}) {
      registry.PutDword(platform::RegistryRoot::kLocalMachine, u"Software\\OEM\\KELPIN", name, 1);
    }
    wiring.fillCommands = [this](app::AppState& /*app*/, app::Commands& commands,
                                 app::ListLoader& loader) {
      theLoader = &loader;
      for (const int command : kCommands) {
        commands.Register(command, [this, command] { ran.push_back(command); });
      }
    };
  }

  void TearDown() override {
    GuiTest::TearDown();
    if (state != nullptr) {
      if (!state->dialog->Ended()) state->dialog->End(ui::kDialogDone);
      screen_->RunMessageLoop();
      kernel.EndThreads();
    }
  }

  // Start-up, the first load, and the window drawn with the first row selected.
  void Open() {
    state = std::make_unique<app::AppState>(ports);
    mainDialog = std::make_unique<app::MainDialog>(*state, wiring);
    ASSERT_EQ(app::InitInstance(*state, *mainDialog, 1, 0), 1);
    kernel.RunHeldThreads();
    ASSERT_TRUE(QTest::qWaitForWindowActive(Window()));
    Settle();
  }

  // The commands of the window that can be given, as menus and keys name them.
  static constexpr int kCommands[] = {res::kCommandNew,
                                      res::kCommandEdit,
                                      res::kCommandDelete,
                                      res::kCommandCall,
                                      res::kCommandSend,
                                      res::kCommandDeleteContacts,
                                      res::kCommandSaveToContacts,
                                      res::kCommandMoveToContacts,
                                      res::kCommandContactsToSim,
                                      res::kCommandMoveContactsToSim,
                                      res::kCommandSelectAll,
                                      res::kCommandRefresh,
                                      res::kCommandNumberNames,
                                      res::kCommandGroupNames,
                                      res::kCommandOwnNumbers,
                                      res::kCommandServiceNumbers,
                                      res::kCommandSimInformation,
                                      res::kCommandOptions,
                                      res::kCommandAbout,
                                      res::kCommandCopyNumber};

  qt::DialogWindow* Window() { return WindowOf(*state->dialog); }
  ui::ListView& List() { return *state->dialog->List(res::kMainList); }
  qt::ListTable* Rows() { return Table(*state->dialog, res::kMainList); }
  qt::SoftKeyButton* Key(int number) {
    return Find<qt::SoftKeyButton>(*state->dialog, "key" + std::to_string(number));
  }
  // The commands that ran since the last question.
  std::vector<int> Ran() {
    std::vector<int> commands;
    commands.swap(ran);
    return commands;
  }
  bool Runs(int command) {
    return ServeUntil([this] { return !ran.empty(); }) && Ran() == std::vector<int>{command};
  }

  Journal journal;
  FailPlan failures;
  FakeClock clock{journal};
  app::ProbingSim sim{journal, failures};
  FakeRadio radio{journal, failures};
  FakeDevices devices{journal, failures};
  FakeRegistry registry{journal, failures};
  FakeShell shell{journal, failures};
  FakePrograms programs{journal, failures};
  FakeTelephone telephone{journal, failures};
  FakeContacts contacts{journal, failures};
  FakeLog log;
  FakeKernel kernel{journal, failures, &clock};
  app::Ports ports{sim,      radio,     devices,  registry, kernel, shell,
                   programs, telephone, contacts, clock,    log,    *screen_};
  app::Wiring wiring;
  app::ListLoader* theLoader = nullptr;
  std::unique_ptr<app::AppState> state;
  std::unique_ptr<app::MainDialog> mainDialog;
  std::vector<int> ran;
};

}  // namespace kelpin::test
