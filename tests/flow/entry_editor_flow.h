#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "app/app_state.h"
#include "app/delete_entries.h"
#include "app/extended_fields.h"
#include "app/list_commands.h"
#include "app/list_loader.h"
#include "app/main_dialog.h"
#include "app/start_up.h"
#include "app/watchers.h"
#include "device/card/card_devices.h"
#include "device/card/sim_service.h"
#include "editor/editor_commands.h"
#include "res/ids.h"
#include "tests/card/soft_card.h"
#include "tests/support/call_text.h"
#include "tests/support/fake_clock.h"
#include "tests/support/fake_contacts.h"
#include "tests/support/fake_kernel.h"
#include "tests/support/fake_log.h"
#include "tests/support/fake_programs.h"
#include "tests/support/fake_registry.h"
#include "tests/support/fake_shell.h"
#include "tests/support/fake_telephone.h"
#include "tests/support/headless_screen.h"
#include "views/view_commands.h"

namespace kelpin::editor {

using device::card::ImageChange;
using device::card::SoftCard;
using Texts = std::vector<std::u16string>;

// The program with its watchers on a software card, every field switched on.
class EntryFlow {
 public:
  // What stands between the program and the card; it lives as long as the flow.
  using Between =
      std::function<std::unique_ptr<device::card::CardChannel>(device::card::CardChannel& card)>;

  explicit EntryFlow(const std::string& sample, const ImageChange& change = nullptr,
                     const Between& between = nullptr)
      : card(sample, change), between_(between ? between(card.Channel()) : nullptr) {
    for (const char16_t* const name : {u"Enable_SNE", u"Enable_AAS", u"Enable_GAS"}) {
      SetSwitch(name, 1);
    }
    wiring_.fillCommands = [this](app::AppState& app, app::Commands& commands,
                                  app::ListLoader& list) {
      loader_ = &list;
      commands.Register(res::kCommandSelectAll, [&app] { app::SelectAllRows(app); });
      commands.Register(res::kCommandRefresh, [&list] { list.Refresh(); });
      app::RegisterDelete(app, commands, list, nullptr);
      RegisterEditorCommands(app, commands, list);
      views::RegisterViewCommands(app, commands, list);
    };
    wiring_.loadLayout = app::LoadExtendedLayout;
    wiring_.startWatchers = [](app::AppState& app, app::Commands& commands, app::ListLoader&) {
      app::StartWatchers(app, commands);
    };
  }

  ~EntryFlow() {
    if (state.dialog != nullptr && !state.dialog->Ended()) {
      state.dialog->PostClose();
      screen.RunMessageLoop();
    }
    kernel.EndThreads();
  }
  EntryFlow(const EntryFlow&) = delete;
  EntryFlow& operator=(const EntryFlow&) = delete;

  void SetSwitch(std::u16string_view name, std::uint32_t value) {
    registry.PutDword(platform::RegistryRoot::kLocalMachine, u"Software\\OEM\\KELPIN", name, value);
  }

  // The list, read and at rest, with every watcher waiting.
  void Open() {
    mainDialog_ = std::make_unique<app::MainDialog>(state, wiring_);
    ASSERT_EQ(app::InitInstance(state, *mainDialog_, 1, 0), 1);
    ASSERT_TRUE(Settle());
  }
  bool Settle() {
    return screen.RunUntil([this] {
      return kernel.Waiters(sim::kStoredEventName) == 1 &&
             kernel.Waiters(sim::kDeletedEventName) == 1 &&
             kernel.Waiters(sim::kPhonebookEventName) == 1 && !app::IsListLoading(state) &&
             !loader_->IsWaiting() && state.simPhonebook.StoredCount() == 0;
    });
  }

  using Script = std::function<void(ui::Dialog& dialog)>;

  void InNew(const Script& script) { In(res::kDialogNewEntry, res::kCommandNew, script); }
  void InEdit(std::uint32_t location, const Script& script) {
    ui::ListView& list = *state.dialog->List(res::kMainList);
    list.SetItemState(-1, 0, ui::kItemSelected);
    const int row = app::FindListRow(state, location);
    ASSERT_GE(row, 0);
    list.SetItemState(row, ui::kItemSelected, ui::kItemSelected);
    In(res::kDialogEditEntry, res::kCommandEdit, script);
  }
  // Runs `script` in the dialog when it is ready, and closes it where it is still open.
  void In(int resource, int command, const Script& script) {
    bool opened = false;
    screen.ScriptDialog(resource, [&](ui::Dialog& dialog) {
      opened = true;
      ASSERT_TRUE(screen.RunUntil([&] { return dialog.Bar()->KeyAt(0).enabled; }));
      script(dialog);
      if (!dialog.Ended()) dialog.Close();
    });
    state.dialog->Command(command);
    EXPECT_TRUE(opened);
    EXPECT_TRUE(Settle());
  }
  // Presses Done and waits until the dialog has closed or takes input again.
  void Done(ui::Dialog& dialog) {
    dialog.PressSoftKey(0);
    EXPECT_TRUE(screen.RunUntil([&] {
      return dialog.Ended() || (!screen.WaitCursor() && dialog.Bar()->KeyAt(0).enabled);
    }));
  }
  static void Type(ui::Dialog& dialog, int edit, std::u16string_view text) {
    dialog.SetFocus(edit);
    dialog.SetSelection(edit, 0, -1);
    dialog.ReplaceSelection(edit, text);
  }
  // The next pick of a number's name takes this row of the picker.
  void PickName(ui::Dialog& dialog, int button, int row) {
    screen.ScriptDialog(res::kDialogNumberNamePicker, [this, row](ui::Dialog& picker) {
      ui::ListView& list = *picker.List(res::kNumberNamePickerList);
      // The worker that selects the first row tells of it a moment later.
      ASSERT_TRUE(screen.RunUntil([&] { return picker.Bar()->KeyAt(0).enabled; }));
      list.Click(row, 0, ui::kNoModifier);
      screen.RunPending();
      picker.PressSoftKey(0);
      screen.RunPending();
    });
    dialog.PressButton(button);
  }
  // Checks these rows of the group picker alone.
  void PickGroups(ui::Dialog& dialog, int button, const std::vector<int>& rows) {
    screen.ScriptDialog(res::kDialogGroupPicker, [this, &rows](ui::Dialog& picker) {
      ui::ListView& list = *picker.List(res::kGroupPickerList);
      ASSERT_TRUE(screen.RunUntil([&] { return list.SelectedCount() > 0; }));
      list.SetCheck(-1, false);
      for (const int row : rows) list.SetCheck(row, true);
      picker.Command(ui::kCommandOk);
      screen.RunPending();
    });
    dialog.PressButton(button);
  }

  // A record of the card's phone book, in hex; `bytes` of text padded with FF.
  std::string Record(const std::string& file, std::size_t number) const {
    nlohmann::json image = card.Image();
    return device::card::ImageRecord(image, {"7F10", "5F3A", file}, number);
  }
  static std::string Padded(std::string hex, std::size_t bytes) {
    while (hex.size() < 2 * bytes) hex += "FF";
    return hex;
  }
  Texts BoxTexts() const {
    Texts texts;
    for (const test::ShownBox& box : screen.Boxes()) texts.push_back(box.text);
    return texts;
  }
  // How often the list has a location, and what it says there.
  int RowsOf(std::uint32_t location, std::u16string* text = nullptr) const {
    int rows = 0;
    const ui::ListView& list = *state.dialog->List(res::kMainList);
    for (int row = 0; row < list.ItemCount(); ++row) {
      std::uint32_t index = 0;
      if (app::GetListRow(state, row, &index, nullptr, nullptr) == 0 || index != location) continue;
      ++rows;
      if (text != nullptr) *text = list.ItemText(row, 1) + u"|" + list.ItemText(row, 2);
    }
    return rows;
  }

  SoftCard card;

 private:
  const std::unique_ptr<device::card::CardChannel> between_;

 public:
  device::card::SimService service{between_ ? *between_ : card.Channel()};
  device::card::CardDevices devices;
  test::Journal journal;
  test::FailPlan failures;
  test::FakeClock clock{journal};
  test::HeadlessScreen screen{journal, failures};
  test::FakeRegistry registry{journal, failures};
  test::FakeShell shell{journal, failures};
  test::FakePrograms programs{journal, failures};
  test::FakeTelephone telephone{journal, failures};
  test::FakeContacts contacts{journal, failures};
  test::FakeLog log;
  test::FakeKernel kernel{journal, failures, &clock};
  app::Ports ports{service,  service, devices, registry, kernel,  shell, programs, telephone,
                   contacts, clock,   log,     screen,   nullptr, true,  &service};
  app::AppState state{ports};

 private:
  app::Wiring wiring_;
  app::ListLoader* loader_ = nullptr;
  std::unique_ptr<app::MainDialog> mainDialog_;
};

}  // namespace kelpin::editor
