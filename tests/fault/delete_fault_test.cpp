#include <set>

#include "app/delete_entries.h"
#include "tests/app/app_fixture.h"

// Deleting with one platform call failing: the first, the second, … until a run makes fewer calls
// than that. What the list says is what the card has, and the next Delete works.
namespace kelpin::app {
namespace {

constexpr std::uint32_t kEntries = 6;
constexpr std::uint32_t kCallLimit = 200;  // more calls than any run makes

class DeleteFaultTest : public testing::Test {
 protected:
  static Wiring MakeWiring() {
    Wiring wiring;
    wiring.fillCommands = [](AppState& app, Commands& commands, ListLoader& loader) {
      commands.Register(res::kCommandNew, [] {});
      commands.Register(res::kCommandSelectAll, [&app] { SelectAllRows(app); });
      commands.Register(res::kCommandRefresh, [&loader] { loader.Refresh(); });
      RegisterDelete(app, commands, loader, nullptr);
    };
    return wiring;
  }

  static std::set<std::uint32_t> Listed(const AppState& state) {
    std::set<std::uint32_t> listed;
    const int rows = state.dialog->List(res::kMainList)->ItemCount();
    for (int row = 0; row < rows; ++row) {
      std::uint32_t index = 0;
      EXPECT_EQ(GetListRow(state, row, &index, nullptr, nullptr), 1);
      EXPECT_TRUE(listed.insert(index).second) << index << " twice";
    }
    return listed;
  }

  static std::set<std::uint32_t> OnTheCard(const Device& device) {
    std::set<std::uint32_t> indexes;
    for (const auto& [index, entry] : device.sim.Entries()) indexes.insert(index);
    return indexes;
  }

  static void ExpectTruthful(Device& device, AppState& state) {
    EXPECT_EQ(Listed(state), OnTheCard(device));
    EXPECT_FALSE(IsListLoading(state));
    EXPECT_TRUE(state.dialog->List(res::kMainList)->Notifying());
    EXPECT_FALSE(device.screen.WaitCursor());
    EXPECT_TRUE(state.dialog->Bar()->KeyAt(0).enabled);
    EXPECT_TRUE(state.dialog->Bar()->KeyAt(1).enabled);
    EXPECT_EQ(state.simPhonebook.CollectDeletions(), 1u);
    for (std::uint32_t index = 1; index <= kEntries; ++index) {
      EXPECT_EQ(state.simPhonebook.Slot(index), OnTheCard(device).count(index)) << index;
    }
  }
};

TEST_F(DeleteFaultTest, WhateverFailsTheListIsAsTheCardIs) {
  std::uint32_t call = 1;
  for (;; ++call) {
    ASSERT_LT(call, kCallLimit);
    Device device;
    device.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kHold);
    for (std::uint32_t index = 1; index <= kEntries; ++index) {
      device.sim.SetEntry(index, u"Name", u"+4912");
    }
    device.radio.SetEntrySource([&device] { return test::RadioEntries(device.sim); });
    device.screen.SetDefaultAnswers(ui::BoxAnswer::kOk, ui::BoxAnswer::kYes);
    AppState state(device.ports);
    MainDialog mainDialog(state, MakeWiring());
    ASSERT_EQ(InitInstance(state, mainDialog, 1, 0), 1);
    device.kernel.RunHeldThreads();
    device.screen.RunPending();

    device.failures.FailCall(call);
    const std::size_t boxes = device.screen.Boxes().size();
    state.dialog->Command(res::kCommandSelectAll);
    state.dialog->Command(res::kCommandDelete);
    device.screen.RunPending();
    const std::string failed = device.failures.FailedKind();
    SCOPED_TRACE("call " + std::to_string(call) + " failed: " + failed);
    device.sim.Drain();
    ExpectTruthful(device, state);
    if (failed.empty()) {
      EXPECT_TRUE(Listed(state).empty());
      EXPECT_EQ(device.screen.Boxes().size(), boxes + 1);  // the question
      state.dialog->PostClose();
      device.screen.RunMessageLoop();
      break;
    }
    EXPECT_EQ(device.screen.Boxes().back().text, u"SIM failure was detected. ");

    device.failures.FailCall(0);
    state.dialog->Command(res::kCommandDelete);  // what is left is still selected
    device.screen.RunPending();
    EXPECT_TRUE(OnTheCard(device).empty());
    EXPECT_TRUE(Listed(state).empty());
    state.dialog->PostClose();
    device.screen.RunMessageLoop();
    device.kernel.EndThreads();
    EXPECT_EQ(device.sim.OpenSessions(), 0u);
    if (HasFailure()) break;
  }
  EXPECT_EQ(call, kEntries + 2);  // the status, each deletion, and the run without a failure
}

}  // namespace
}  // namespace kelpin::app
