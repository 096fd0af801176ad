#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/app_state.h"
#include "app/extended_fields.h"
#include "app/list_commands.h"
#include "app/list_loader.h"
#include "app/main_dialog.h"
#include "app/start_up.h"
#include "app/watchers.h"
#include "contacts/contacts_commands.h"
#include "device/card/card_channel.h"
#include "device/card/card_devices.h"
#include "device/card/sim_service.h"
#include "res/ids.h"
#include "sim/ril_ext_phonebook.h"
#include "tests/support/fake_clock.h"
#include "tests/support/fake_contacts.h"
#include "tests/support/fake_kernel.h"
#include "tests/support/fake_log.h"
#include "tests/support/fake_programs.h"
#include "tests/support/fake_registry.h"
#include "tests/support/fake_shell.h"
#include "tests/support/fake_telephone.h"
#include "tests/support/headless_screen.h"

namespace kelpin::contacts {

// The program with its contacts commands on a card and on a store that outlive it. Threads run on
// the test's own thread, when it says so, until it asks for real ones with the watchers.
class CardProgram {
 public:
  CardProgram(device::card::CardChannel& channel, platform::ContactsStore& contacts,
              bool realThreads = false)
      : service(channel),
        ports{service,  service, devices, registry, kernel,  shell, programs, telephone,
              contacts, clock,   log,     screen,   nullptr, true,  &service},
        state(ports) {
    kernel.SetThreadMode(realThreads ? test::FakeKernel::ThreadMode::kRun
                                     : test::FakeKernel::ThreadMode::kHold);
    Put(u"Enable_Move_Func", 1);
    Put(u"Mobile_Tel_Flag", 1);
    wiring.loadLayout = app::LoadExtendedLayout;
    wiring.fillCommands = [this](app::AppState& app, app::Commands& commands,
                                 app::ListLoader& list) {
      loader = &list;
      commands.Register(res::kCommandNew, [] {});
      commands.Register(res::kCommandRefresh, [&list] { list.Refresh(); });
      RegisterContactsCommands(app, commands, list);
    };
    if (realThreads) {
      wiring.startWatchers = [](app::AppState& app, app::Commands& commands, app::ListLoader&) {
        app::StartWatchers(app, commands);
      };
    }
  }
  ~CardProgram() {
    if (state.dialog != nullptr && !state.dialog->Ended()) {
      state.dialog->PostClose();
      screen.RunMessageLoop();
    }
    kernel.EndThreads();
  }
  CardProgram(const CardProgram&) = delete;
  CardProgram& operator=(const CardProgram&) = delete;

  void Put(std::u16string_view name, std::uint32_t value) {
    registry.PutDword(platform::RegistryRoot::kLocalMachine, u"Software\\OEM\\KELPIN", name, value);
  }

  // The list, read and at rest.
  void Open() {
    mainDialog = std::make_unique<app::MainDialog>(state, wiring);
    ASSERT_EQ(app::InitInstance(state, *mainDialog, 1, 0), 1);
    RunThreads();
    ASSERT_TRUE(screen.RunUntil(
        [this] { return !app::IsListLoading(state) && !loader->IsWaiting() && List().Visible(); }));
  }
  void RunThreads() {
    kernel.RunHeldThreads();
    screen.RunPending();
  }

  // The whole command with everything that is offered.
  void Copy(int command) {
    screen.ScriptDialog(205, [this](ui::Dialog& picker) {
      RunThreads();
      EXPECT_TRUE(screen.RunUntil([&] { return picker.Bar()->KeyAt(0).enabled; }));
      picker.PressSoftKey(0);
      RunThreads();
      EXPECT_TRUE(screen.RunUntil([&] { return picker.Ended(); }));
    });
    state.dialog->Command(command);
    screen.RunPending();
  }

  ui::ListView& List() { return *state.dialog->List(res::kMainList); }
  // "Name|Number", sorted as the list is.
  std::vector<std::u16string> Rows() {
    std::vector<std::u16string> rows;
    for (int row = 0; row < List().ItemCount(); ++row) {
      rows.push_back(List().ItemText(row, 1) + u"|" + List().ItemText(row, 2));
    }
    return rows;
  }
  // The location of an entry of this name, 0 when it is not listed.
  std::uint32_t Find(std::u16string_view name) {
    for (int row = 0; row < List().ItemCount(); ++row) {
      std::uint32_t index = 0;
      std::u16string there;
      if (app::GetListRow(state, row, &index, &there, nullptr) != 0 && there == name) return index;
    }
    return 0;
  }
  std::u16string Number2(std::uint32_t index) {
    std::uint32_t existing = sim::kNoRecord;
    sim::NumberField field;
    static_cast<void>(
        state.extPhonebook.ReadNumberField(sim::FieldSlot::kSecondNumber, index, existing, field));
    return field.number;
  }
  std::u16string Email(std::uint32_t index) {
    std::uint32_t existing = sim::kNoRecord;
    std::u16string text;
    static_cast<void>(
        state.extPhonebook.ReadTextField(sim::FieldSlot::kEmail, index, false, existing, text));
    return text;
  }

  device::card::SimService service;
  device::card::CardDevices devices;
  test::Journal journal;
  test::FailPlan failures;
  test::FakeClock clock{journal};
  test::HeadlessScreen screen{journal, failures};
  test::FakeRegistry registry{journal, failures};
  test::FakeShell shell{journal, failures};
  test::FakePrograms programs{journal, failures};
  test::FakeTelephone telephone{journal, failures};
  test::FakeLog log;
  test::FakeKernel kernel{journal, failures, &clock};
  app::Ports ports;
  app::AppState state;
  app::Wiring wiring;
  app::ListLoader* loader = nullptr;
  std::unique_ptr<app::MainDialog> mainDialog;
};

}  // namespace kelpin::contacts
