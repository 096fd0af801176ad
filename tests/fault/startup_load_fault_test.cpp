#include <set>

#include "tests/app/app_fixture.h"

// Start-up and the first load with one platform call failing: the first, the second, … until a run
// makes fewer calls than that. Whatever fails, the program ends in order and says what is so.
namespace kelpin::app {
namespace {

using platform::RegistryRoot;

constexpr std::uint32_t kEntries = 23;
constexpr std::uint32_t kCapacity = 30;
constexpr std::uint32_t kCallLimit = 2000;  // more calls than any run makes

// What a run left behind when the list was at rest, before the program was closed.
struct Seen {
  bool opened = false;
  std::vector<std::uint32_t> rows;
};

class StartUpLoadFaultTest : public testing::TestWithParam<bool> {
 protected:
  static void PutCard(Device& device, bool extended) {
    device.sim.SetCapacity(kCapacity);
    for (std::uint32_t index = 1; index <= kEntries; ++index) {
      device.sim.SetEntry(index, u"Name", u"+4912");
    }
    device.radio.SetEntrySource([&device] { return test::RadioEntries(device.sim); });
    test::FakeRadio::File own;
    own.recordLength = 28;
    own.records.assign(2, std::vector<std::uint8_t>(28, 0xFF));
    device.radio.SetFile(0x6F40, own);
    constexpr std::u16string_view kKey = u"Software\\OEM\\KELPIN";
    device.registry.PutDword(RegistryRoot::kLocalMachine, kKey, u"QueryNewSIM", 1);
    device.registry.PutDword(RegistryRoot::kLocalMachine, kKey, u"Enable_PBCMsg", 1);
    device.registry.PutDword(RegistryRoot::kLocalMachine, u"Drivers\\BuiltIn\\RIL", u"QRVmaskW1",
                             extended ? 0x00010000 : 0);
  }

  static Wiring MakeWiring() {
    Wiring wiring;
    wiring.fillCommands = [](AppState& app, Commands& commands, ListLoader& loader) {
      commands.Register(res::kCommandNew, [] {});
      commands.Register(res::kCommandSelectAll, [&app] { SelectAllRows(app); });
      commands.Register(res::kCommandRefresh, [&loader] { loader.Refresh(); });
    };
    return wiring;
  }

  // The dialog as the user meets it when no load runs: nothing is left off, nothing is made up.
  static void ExpectTruthful(Device& device, AppState& state, Seen& seen) {
    ui::Dialog& dialog = *state.dialog;
    ui::ListView& list = *dialog.List(res::kMainList);
    EXPECT_FALSE(IsListLoading(state));
    EXPECT_TRUE(list.Notifying());
    EXPECT_TRUE(list.Visible());
    EXPECT_FALSE(device.screen.WaitCursor());
    EXPECT_TRUE(dialog.Bar()->KeyAt(0).enabled);
    EXPECT_TRUE(dialog.Bar()->KeyAt(1).enabled);
    EXPECT_TRUE(dialog.Bar()->SubMenu(res::kCommandMenu)->IsEnabled(res::kCommandRefresh));
    std::set<std::uint32_t> listed;
    for (int row = 0; row < list.ItemCount(); ++row) {
      std::uint32_t index = 0;
      std::u16string name;
      std::u16string number;
      EXPECT_EQ(GetListRow(state, row, &index, &name, &number), 1);
      EXPECT_TRUE(index >= 1 && index <= kEntries) << index;
      EXPECT_TRUE(listed.insert(index).second) << index << " twice";
      EXPECT_EQ(name, u"Name");
      EXPECT_EQ(number, u"+4912");
      EXPECT_EQ(state.simPhonebook.Slot(index), 1);
    }
    seen.rows.assign(listed.begin(), listed.end());
    if (seen.rows.size() < kEntries) {
      EXPECT_EQ(list.Message().text, u"The card could not be read");
    }
  }

  // One run with real threads, from the entry point to its end.
  static Seen RunOnce(Device& device, bool extended) {
    PutCard(device, extended);
    Seen seen;
    {
      AppState state(device.ports);
      MainDialog mainDialog(state, MakeWiring());
      if (InitInstance(state, mainDialog, 1, 0) != 0) {
        seen.opened = true;
        // The load is over when it has shown the list again, or when there is none.
        const bool loads = device.journal.Count("CreateThread") > 0 &&
                           device.failures.FailedKind() != "CreateThread";
        if (loads) {
          EXPECT_TRUE(device.screen.RunUntil([&] {
            const std::vector<bool> cursor = device.screen.WaitCursorLog();
            return cursor.size() >= 2 && !cursor.back() &&
                   state.dialog->List(res::kMainList)->Visible();
          }));
        }
        device.screen.RunPending();
        ExpectTruthful(device, state, seen);
        state.dialog->PostClose();
        EXPECT_EQ(device.screen.RunMessageLoop(), 0);
        EXPECT_TRUE(state.dialog->Ended());
      }
      device.kernel.EndThreads();
    }
    EXPECT_EQ(device.registry.OpenHandles(), 0u);
    EXPECT_EQ(device.kernel.OpenEvents(), 0u);
    return seen;
  }
};

TEST_P(StartUpLoadFaultTest, WhateverFailsTheProgramStaysTruthful) {
  std::uint32_t call = 1;
  std::uint32_t opened = 0;
  for (;; ++call) {
    ASSERT_LT(call, kCallLimit);
    Device device;
    device.failures.FailCall(call);
    const Seen seen = RunOnce(device, GetParam());
    SCOPED_TRACE("call " + std::to_string(call) + " failed: " + device.failures.FailedKind());
    opened += seen.opened ? 1 : 0;
    if (!device.failures.Failed()) {
      EXPECT_EQ(seen.rows.size(), kEntries);
      EXPECT_TRUE(device.screen.Boxes().empty());
      break;
    }
    if (HasFailure()) break;
  }
  EXPECT_GT(call, 60u);    // every setting alone is one call
  EXPECT_GT(opened, 50u);  // and none of those keeps the program from opening
}

INSTANTIATE_TEST_SUITE_P(BothLoaders, StartUpLoadFaultTest, testing::Values(false, true),
                         [](const testing::TestParamInfo<bool>& loader) {
                           return loader.param ? "Extended" : "Plain";
                         });

}  // namespace
}  // namespace kelpin::app
