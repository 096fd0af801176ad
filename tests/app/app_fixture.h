#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/app_state.h"
#include "app/list_commands.h"
#include "app/list_loader.h"
#include "app/main_dialog.h"
#include "app/start_up.h"
#include "res/ids.h"
#include "tests/app/fake_device.h"
#include "tests/support/call_text.h"
#include "tests/support/fake_devices.h"
#include "tests/support/fake_radio.h"
#include "tests/support/fake_sim.h"
#include "tests/support/list_texts.h"
#include "tests/support/radio_entries.h"

namespace kelpin::app {

// A SIM that lets a test look around at the moment a session is opened, an entry is read or
// deleted.
class ProbingSim : public test::FakeSim {
 public:
  using FakeSim::FakeSim;
  platform::SimResult SimInitialize(std::uint32_t flags, platform::SimNotifyCallback callback,
                                    void* parameter, platform::SimHandle& sim) override {
    if (callback != nullptr && onOpen) onOpen();
    return FakeSim::SimInitialize(flags, callback, parameter, sim);
  }
  platform::SimResult SimReadPhonebookEntry(platform::SimHandle sim, std::uint32_t storage,
                                            std::uint32_t index,
                                            platform::SimPhonebookEntry& entry) override {
    if (onRead) onRead(index);
    return FakeSim::SimReadPhonebookEntry(sim, storage, index, entry);
  }
  platform::SimResult SimDeletePhonebookEntry(platform::SimHandle sim, std::uint32_t storage,
                                              std::uint32_t index) override {
    if (onDelete) onDelete(index);
    return FakeSim::SimDeletePhonebookEntry(sim, storage, index);
  }
  // Set while nobody calls.
  std::function<void()> onOpen;
  std::function<void(std::uint32_t index)> onRead;
  std::function<void(std::uint32_t index)> onDelete;
};

// A screen that lets a test look around when the wait cursor comes and goes.
class ProbingScreen : public test::HeadlessScreen {
 public:
  using HeadlessScreen::HeadlessScreen;
  void SetWaitCursor(bool wait) override {
    HeadlessScreen::SetWaitCursor(wait);
    if (onWaitCursor) onWaitCursor(wait);
  }
  std::function<void(bool wait)> onWaitCursor;  // set while nobody calls
};

// The device with all its fakes.
struct Device : test::FakeDevice<ProbingScreen> {
  ProbingSim sim{journal, failures};
  test::FakeRadio radio{journal, failures};
  test::FakeDevices devices{journal, failures};
  Ports ports = PortsTo(sim, radio, devices, contacts);
};

// The program on a device, taken apart so that a test can look at its state. Loads run when the
// test says so, on the test's own thread, unless it asks for real threads.
class AppTest : public testing::Test {
 protected:
  static constexpr std::u16string_view kProgramKey = u"Software\\OEM\\KELPIN";
  static constexpr std::u16string_view kDriverKey = u"Drivers\\BuiltIn\\RIL";

  AppTest() {
    device.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kHold);
    device.radio.SetEntrySource([this] { return test::RadioEntries(device.sim); });
    SetOwnNumbers({});
    wiring.fillCommands = [this](AppState& app, Commands& commands, ListLoader& loader) {
      theCommands = &commands;
      theLoader = &loader;
      for (const int command : known) {
        commands.Register(command, [this, command] { ran.push_back(command); });
      }
      commands.Register(res::kCommandSelectAll, [&app] { SelectAllRows(app); });
      commands.Register(res::kCommandRefresh, [&loader] { loader.Refresh(); });
      commands.Register(res::kCommandCopyNumber, [&app] { CopyNumbers(app); });
    };
    wiring.startWatchers = [this](AppState&, Commands&, ListLoader&) { ++watchersStarted; };
  }

  ~AppTest() override { Leave(); }

  // The program's objects, before anything of it ran.
  void Make() {
    state = std::make_unique<AppState>(device.ports);
    mainDialog = std::make_unique<MainDialog>(*state, wiring);
  }

  // Start-up, up to the main dialog.
  int Start(ModuleHandle instance = 1) {
    if (state == nullptr) Make();
    return InitInstance(*state, *mainDialog, instance, 0);
  }

  // Start-up, the first load and what was posted meanwhile.
  void Open() {
    ASSERT_EQ(Start(), 1);
    Load();
  }

  void Load() {
    device.kernel.RunHeldThreads();
    device.screen.RunPending();
  }

  void Refresh() {
    Dialog().Command(res::kCommandRefresh);
    Load();
  }

  // Ends what is open, as the program's end does.
  void Leave() {
    if (state == nullptr) return;
    device.Leave(*state);
    mainDialog.reset();
    state.reset();
  }

  ui::Dialog& Dialog() { return *state->dialog; }
  ui::ListView& List() { return *state->dialog->List(res::kMainList); }
  ui::Menu& Menu() { return *state->dialog->Bar()->SubMenu(res::kCommandMenu); }
  std::u16string Header() { return state->dialog->Text(res::kMainHeader); }
  bool SoftKeyEnabled(std::size_t key) { return state->dialog->Bar()->KeyAt(key).enabled; }
  std::vector<test::ShownBox> Boxes() { return device.screen.Boxes(); }
  std::vector<std::u16string> BoxTexts() { return device.BoxTexts(); }

  // "3|Name|Number" of a row.
  std::u16string RowText(int row) { return test::RowText(List(), row); }
  std::vector<std::u16string> Rows() { return test::RowsOf(List()); }
  std::vector<std::uint32_t> RowIndexes() {
    std::vector<std::uint32_t> indexes;
    for (int row = 0; row < List().ItemCount(); ++row) {
      std::uint32_t index = 0;
      EXPECT_EQ(GetListRow(*state, row, &index, nullptr, nullptr), 1);
      indexes.push_back(index);
    }
    return indexes;
  }

  void PutThree() {
    device.sim.SetEntry(1, u"Anna", u"111");
    device.sim.SetEntry(2, u"Bert", u"222");
    device.sim.SetEntry(3, u"Cem", u"333");
  }
  // This row alone, as a press on it would leave it.
  void Select(int row) {
    constexpr std::uint32_t kState = ui::kItemSelected | ui::kItemFocused;
    List().SetItemState(-1, 0, ui::kItemSelected);
    List().SetItemState(row, kState, kState);
    List().SetSelectionMark(row);
  }

  // No load runs, and everything that one turns off is on again.
  void ExpectAtRest() {
    EXPECT_FALSE(IsListLoading(*state));
    EXPECT_TRUE(List().Notifying());
    EXPECT_TRUE(List().Visible());
    EXPECT_FALSE(device.screen.WaitCursor());
    EXPECT_TRUE(Menu().IsEnabled(res::kCommandRefresh));
    EXPECT_TRUE(SoftKeyEnabled(0));
    EXPECT_TRUE(SoftKeyEnabled(1));
    EXPECT_EQ(Menu().IsEnabled(res::kCommandDelete), List().SelectedCount() > 0);
  }

  void SetSwitch(std::u16string_view name, std::uint32_t value) { device.SetSwitch(name, value); }
  void SetDriverValue(std::u16string_view name, std::uint32_t value) {
    device.registry.PutDword(platform::RegistryRoot::kLocalMachine, kDriverKey, name, value);
  }

  // Records of 28 bytes, each all FF but the number part given: length, TON/NPI and digits.
  void SetOwnNumbers(const std::vector<std::vector<std::uint8_t>>& numberParts) {
    test::FakeRadio::File file;
    file.recordLength = 28;
    for (const std::vector<std::uint8_t>& part : numberParts) {
      std::vector<std::uint8_t> record(28, 0xFF);
      for (std::size_t at = 0; at < part.size(); ++at) record[14 + at] = part[at];
      file.records.push_back(std::move(record));
    }
    device.radio.SetFile(0x6F40, std::move(file));
  }

  // How often a port was called in this way.
  std::size_t Calls(std::string_view prefix) { return device.journal.Count(prefix); }
  // Where in the journal the first such line stands; its size when there is none.
  std::size_t Position(std::string_view prefix) {
    const std::vector<std::string> entries = device.journal.Entries();
    std::size_t at = 0;
    while (at < entries.size() && !entries[at].starts_with(prefix)) ++at;
    return at;
  }
  // The first and last locations of the bulk reads, in order, "1-10".
  std::vector<std::string> Batches() {
    std::vector<std::string> batches;
    for (const test::FakeRadio::Command& command : device.radio.Commands()) {
      if (command.name == "RIL_ReadPhonebookEntries") {
        batches.push_back(std::to_string(command.first) + "-" + std::to_string(command.last));
      }
    }
    return batches;
  }

  Device device;
  Wiring wiring;
  // Commands that this test's program knows beside those of the list itself.
  std::vector<int> known = {res::kCommandNew,
                            res::kCommandEdit,
                            res::kCommandDelete,
                            res::kCommandCall,
                            res::kCommandSend,
                            res::kCommandSaveToContacts,
                            res::kCommandMoveToContacts,
                            res::kCommandContactsToSim,
                            res::kCommandMoveContactsToSim,
                            res::kCommandDeleteContacts,
                            res::kCommandNumberNames,
                            res::kCommandGroupNames,
                            res::kCommandOwnNumbers,
                            res::kCommandServiceNumbers,
                            res::kCommandSimInformation,
                            res::kCommandOptions,
                            res::kCommandAbout};
  std::vector<int> ran;  // in order
  int watchersStarted = 0;
  Commands* theCommands = nullptr;
  ListLoader* theLoader = nullptr;
  std::unique_ptr<AppState> state;
  std::unique_ptr<MainDialog> mainDialog;
};

}  // namespace kelpin::app
