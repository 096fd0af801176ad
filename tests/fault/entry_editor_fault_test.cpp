#include <map>
#include <string>

#include "tests/editor/entry_editor_fixture.h"

// A new entry and a change with one platform call failing: the first, the second, … until a run
// makes fewer calls than that. Whatever fails, the form takes input again or has closed, the list
// says what the card has, and pressing Done again ends with everything on the card.
namespace kelpin::editor {
namespace {

constexpr std::uint32_t kCallLimit = 200;  // more calls than any run makes
constexpr std::uint32_t kEntry = 2;

// One run, with everything made anew.
class FaultRun : public EntryEditorTest {
 public:
  void TestBody() override {}

  void Prepare() {
    device.sim.SetEntry(kEntry, u"Anna", u"111");
    SetRecord(6, 2, {0, 3, 0x81, 0x21, 0xF3});
    SetRecord(7, 1, {0, 2, 0x81, 0x5A});
    SetRecord(2, 1, Letters("a@b.c"));
    SetRecord(40, 1, Letters("Ann"));
    SetRecord(1, 2, {1, 1, 1});
    SetRecord(3, 2, {2, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    PutNames();
    Open();
  }
  // False when the dialog did not open.
  bool Run(bool isNew, std::uint32_t failingCall) {
    const EntryControls& controls = isNew ? kNewEntryControls : kEditEntryControls;
    bool opened = false;
    bool ended = false;
    device.screen.ScriptDialog(controls.dialog, [&](ui::Dialog& dialog) {
      opened = true;
      Serve();
      TypeAll(dialog, controls);
      Done(dialog);
      ExpectTruthful(dialog);
      failed_ = device.failures.Failed();
      if (!dialog.Ended()) {
        device.failures.FailCall(0);
        Done(dialog);
        ExpectTruthful(dialog);
      }
      ended = dialog.Ended();
      if (!dialog.Ended()) dialog.Close();
    });
    if (!isNew) Select(app::FindListRow(*state, kEntry));
    device.failures.FailCall(failingCall);
    theCommands->Run(isNew ? res::kCommandNew : res::kCommandEdit);
    Serve();
    failed_ = failed_ || device.failures.Failed();
    EXPECT_EQ(ended, opened);
    return opened;
  }
  bool Failed() const { return failed_; }
  void ExpectSaved(std::uint32_t location) {
    EXPECT_EQ(device.sim.Name(location), u"Dora");
    EXPECT_EQ(device.sim.Number(location), u"+49444");
    EXPECT_FALSE(device.screen.WaitCursor());
    EXPECT_EQ(device.screen.OpenDialogs(), 1u);
  }

  using EntryEditorTest::device;
  using EntryEditorTest::Leave;

 private:
  static void TypeAll(ui::Dialog& dialog, const EntryControls& controls) {
    Type(dialog, controls.name.edit, u"Dora");
    Type(dialog, controls.number.edit, u"+49444");
    Type(dialog, controls.number2.edit, u"55");
    Type(dialog, controls.number3.edit, u"66");
    Type(dialog, controls.email.edit, u"d.e");
    Type(dialog, controls.nickname.edit, u"Do");
  }
  void ExpectTruthful(ui::Dialog& dialog) {
    device.sim.Drain();
    if (!dialog.Ended()) {
      EXPECT_TRUE(dialog.Bar()->KeyAt(0).enabled);
      EXPECT_TRUE(dialog.Bar()->KeyAt(1).enabled);
      EXPECT_TRUE(dialog.Enabled(dialog.Resource() == res::kDialogNewEntry ? res::kNewName
                                                                           : res::kEditName));
    }
    EXPECT_FALSE(device.screen.WaitCursor());
    EXPECT_FALSE(app::IsListLoading(*state));
    std::map<std::uint32_t, std::u16string> listed;
    for (int row = 0; row < List().ItemCount(); ++row) {
      std::uint32_t index = 0;
      std::u16string name;
      EXPECT_EQ(app::GetListRow(*state, row, &index, &name, nullptr), 1);
      EXPECT_TRUE(listed.emplace(index, name).second) << index << " twice";
    }
    std::map<std::uint32_t, std::u16string> onTheCard;
    for (const auto& [index, entry] : device.sim.Entries()) {
      onTheCard[index] = device.sim.Name(index);
      EXPECT_EQ(state->simPhonebook.Slot(index), 1u);
    }
    EXPECT_EQ(listed, onTheCard);
  }

  bool failed_ = false;
};

void RunAll(bool isNew) {
  std::uint32_t call = 1;
  for (;; ++call) {
    ASSERT_LT(call, kCallLimit);
    FaultRun run;
    run.Prepare();
    const bool opened = run.Run(isNew, call);
    SCOPED_TRACE("call " + std::to_string(call) + " failed");
    if (opened) {
      run.ExpectSaved(isNew ? 1 : kEntry);
    } else {
      // The card was asked whether it is ready.
      EXPECT_EQ(run.device.screen.Boxes().back().text, u"SIM failure was detected. ");
    }
    run.device.failures.FailCall(0);
    run.Leave();
    EXPECT_EQ(run.device.sim.OpenSessions(), 0u);
    if (!run.Failed()) {
      EXPECT_TRUE(run.device.screen.Boxes().empty());
      break;
    }
    if (testing::Test::HasFailure()) break;
  }
  // Every call of a save is among them: at least the entry and two commands a field.
  EXPECT_GT(call, 10u);
}

TEST(EntryEditorFault, ANewEntry) {
  RunAll(true);
}

TEST(EntryEditorFault, AChange) {
  RunAll(false);
}

}  // namespace
}  // namespace kelpin::editor
