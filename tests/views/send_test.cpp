#include "tests/views/call_fixture.h"
#include "views/call_and_send.h"
#include "views/compose_message.h"
#include "views/value_chooser.h"
#include "views/view_dialog.h"

namespace kelpin::views {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kSend = 1076;
constexpr int kChooser = 215;

class SendCommandTest : public CallTest {
 protected:
  void ShowChooser(const std::function<void(ui::Dialog&, ui::ListView&)>& script) {
    Show(kSend, kChooser, [&](ui::Dialog& dialog) { script(dialog, *dialog.List(1074)); });
  }
  std::vector<test::FakePrograms::Start> Started() { return device.programs.Started(); }
  // What the composer chosen by `mode` is handed for a value of this kind.
  void Compose(std::uint32_t mode, AddressKind kind, std::u16string_view address) {
    state->settings.Enable_SBMail = mode;
    ComposeMessage(*state, kind, u"Anna", address);
  }
};

TEST_F(SendCommandTest, TheChooserListsNumbersAndEmailFromTheTop) {
  OpenMain();
  SelectEntry(1);
  ShowChooser([&](ui::Dialog& dialog, ui::ListView& list) {
    EXPECT_EQ(dialog.Title(), u"Kelpin");
    EXPECT_TRUE(dialog.HasDoneButton());
    EXPECT_TRUE(dialog.InputPanelDown());
    EXPECT_EQ(dialog.Text(1073), u"Send to:");
    ASSERT_EQ(dialog.Bar()->Resource(), 363);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).command, 1077);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).text, u"Select");
    EXPECT_EQ(dialog.Bar()->KeyAt(1).command, 1078);
    EXPECT_EQ(dialog.Bar()->KeyAt(1).text, u"Cancel");
    EXPECT_THAT(RowsOf(list), ElementsAre(u"+49111", u"0123", u"+4917", u"anna@example.org"));
    EXPECT_EQ(list.NextItem(-1, kSelectedFocused), 0);
    EXPECT_TRUE(dialog.Bar()->KeyAt(0).enabled);
  });
}

// A chooser with numbers of its own, that looks at itself when it has been initialised.
class WatchedChooser final : public ValueChooser {
 public:
  explicit WatchedChooser(app::AppState& state)
      : ValueChooser(state,
                     {kChooser, 363, 1073, 1074, 1077, 1078, res::kTextSendChooser,
                      res::kStringContact, 0x046B},
                     {{u"1"}, {u""}, {u"2"}}) {}

  void OnInit(ui::Dialog& dialog) override {
    ValueChooser::OnInit(dialog);
    rowsAtFirst = dialog.List(1074)->ItemCount();
  }
  void OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t first,
                 std::uint32_t second) override {
    ValueChooser::OnMessage(dialog, message, first, second);
    messages.push_back(message);
    rows = dialog.List(1074)->ItemCount();
  }

  int rowsAtFirst = -1;
  int rows = -1;
  std::vector<std::uint32_t> messages;

 private:
  void Chosen(ui::Dialog& /*dialog*/, const Value& /*value*/) override {}
};

TEST_F(SendCommandTest, TheDialogShowsBeforeItsRowsComeOnAMessageOfItsOwn) {
  OpenMain();
  WatchedChooser chooser(*state);
  device.screen.ScriptDialog(kChooser, [&](ui::Dialog& dialog) {
    device.screen.RunPending();
    dialog.Close();
  });
  EXPECT_EQ(RunDialog(*state, kChooser, state->mainDialog, chooser), 16);
  EXPECT_EQ(chooser.rowsAtFirst, 0);
  EXPECT_THAT(chooser.messages, ElementsAre(0x046B));
  EXPECT_EQ(chooser.rows, 2);
}

TEST_F(SendCommandTest, NothingOfTheLastEntryIsLeftInTheNext) {
  OpenMain();
  SelectEntry(1);
  ShowChooser([](ui::Dialog&, ui::ListView& list) { EXPECT_EQ(list.ItemCount(), 4); });
  SelectEntry(2);
  ShowChooser(
      [](ui::Dialog&, ui::ListView& list) { EXPECT_THAT(RowsOf(list), ElementsAre(u"222")); });
}

TEST_F(SendCommandTest, WithoutASelectionTheFocusedRowIsTakenAndWithoutBothNone) {
  OpenMain();
  SelectEntry(2);
  List().SetItemState(-1, 0, ui::kItemSelected);
  bool shown = false;
  device.screen.ScriptDialog(kChooser, [&](ui::Dialog& dialog) {
    device.screen.RunPending();
    shown = true;
    EXPECT_THAT(RowsOf(*dialog.List(1074)), ElementsAre(u"222"));
    dialog.Close();
  });
  SendToSelectedEntry(*state);
  EXPECT_TRUE(shown);
  List().DeleteAllItems();
  device.journal.Clear();
  SendToSelectedEntry(*state);  // a chooser that opened would have no script and fail
  EXPECT_EQ(Calls("SimGetPhonebookStatus"), 0u);
}

TEST_F(SendCommandTest, ACardThatIsNotReadyIsNotWrittenFrom) {
  OpenMain();
  SelectEntry(1);
  device.radio.ClearCommands();
  device.sim.SetResult("SimGetPhonebookStatus", platform::SimResult::kSimBusy);
  Dialog().Command(kSend);
  EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM is busy."));
  EXPECT_THAT(FieldsRead(), IsEmpty());
  EXPECT_FALSE(device.screen.WaitCursor());
}

TEST_F(SendCommandTest, BeyondLocation1000NothingButTheNumberIsOffered) {
  OpenMain();
  SelectEntry(1001);
  device.radio.ClearCommands();
  ShowChooser(
      [&](ui::Dialog&, ui::ListView& list) { EXPECT_THAT(RowsOf(list), ElementsAre(u"444")); });
  EXPECT_THAT(FieldsRead(), IsEmpty());
}

TEST_F(SendCommandTest, AnEmailThatCannotBeReadIsNotOffered) {
  OpenMain();
  SelectEntry(1);
  device.radio.SetResponder([](const test::FakeRadio::Command& command) {
    std::optional<test::FakeRadio::Answer> answer;
    if (command.block.size() == 288 && command.block[8] == platform::kRilSimReadRecord &&
        command.block[12] == 2) {
      answer.emplace().code = platform::kRilResultError;
    }
    return answer;
  });
  ShowChooser([&](ui::Dialog&, ui::ListView& list) {
    EXPECT_THAT(RowsOf(list), ElementsAre(u"+49111", u"0123", u"+4917"));
  });
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(SendCommandTest, AnEntryWithItsNumberAloneStillShowsTheChooser) {
  OpenMain();
  SelectEntry(2);
  ShowChooser(
      [&](ui::Dialog&, ui::ListView& list) { EXPECT_THAT(RowsOf(list), ElementsAre(u"222")); });
  EXPECT_THAT(Started(), IsEmpty());
}

TEST_F(SendCommandTest, EmailIsReadForSendingAloneAndNotWhenSwitchedOff) {
  OpenMain();
  SelectEntry(1);
  device.radio.ClearCommands();
  ShowChooser([](ui::Dialog&, ui::ListView&) {});
  EXPECT_THAT(FieldsRead(), ElementsAre(6, 7, 2));
  state->settings.Disable_EMAIL = 1;
  ShowChooser([&](ui::Dialog&, ui::ListView& list) { EXPECT_EQ(list.ItemCount(), 3); });
  EXPECT_THAT(FieldsRead(), ElementsAre(6, 7));
}

TEST_F(SendCommandTest, EveryWayOfChoosingKeepsTheChooserOpen) {
  OpenMain();
  SelectEntry(1);
  ShowChooser([&](ui::Dialog& dialog, ui::ListView& list) {
    dialog.PressSoftKey(0);
    EXPECT_EQ(Started().size(), 1u);
    EXPECT_FALSE(dialog.HotKey(0x72, ui::kControl));
    EXPECT_TRUE(dialog.HotKey(0x72, ui::kNoModifier));
    EXPECT_EQ(Started().size(), 2u);
    list.KeyDown({ui::Key::kEnter, ui::kNoModifier});
    EXPECT_EQ(Started().size(), 3u);
    list.Click(3, 0, ui::kControl);  // two rows are selected now
    EXPECT_EQ(list.SelectedCount(), 2);
    EXPECT_EQ(Started().size(), 3u);
    list.Click(3, 0, ui::kNoModifier);
    EXPECT_EQ(Started().size(), 4u);
    EXPECT_EQ(Started()[3].commandLine, u"mailto:Anna<anna@example.org>");
    state->isSmartphone = 1;
    dialog.Command(1);
    EXPECT_EQ(Started().size(), 5u);
    state->isSmartphone = 0;
    EXPECT_FALSE(dialog.Ended());
    list.SetItemState(-1, 0, ui::kItemSelected);
    EXPECT_FALSE(dialog.Bar()->KeyAt(0).enabled);
  });
  for (const int command : {1, 2, 1078}) {
    ShowChooser([&](ui::Dialog& dialog, ui::ListView&) {
      dialog.Command(command);
      EXPECT_TRUE(dialog.Ended()) << command;
      EXPECT_EQ(dialog.Result(), 16);
    });
  }
  EXPECT_EQ(Started().size(), 5u);
}

TEST_F(SendCommandTest, TheChooserHelpsAndIsLaidOutWhenEitherSideChanges) {
  OpenMain();
  SelectEntry(1);
  ShowChooser([&](ui::Dialog& dialog, ui::ListView& list) {
    dialog.Help();
    EXPECT_EQ(Calls(kHelp), 1u);
    const ui::Size size = dialog.ClientSize();
    dialog.Resize({size.width + 20, size.height});
    EXPECT_EQ(dialog.Bounds(1074).width, size.width + 20);
    EXPECT_EQ(WidthsOf(list), std::vector<int>{size.width + 20});
    dialog.Resize({size.width + 20, size.height + 20});
    EXPECT_EQ(dialog.Bounds(1074).y + dialog.Bounds(1074).height, size.height + 20);
  });
}

TEST_F(SendCommandTest, ByTheMessagingProgram) {
  OpenMain();
  Compose(0, AddressKind::kNumber, u"+4917");
  Compose(0, AddressKind::kEmail, u"a@b.org");
  EXPECT_THAT(
      Started(),
      ElementsAre(test::FakePrograms::Start{u"\\Windows\\tmail.exe",
                                            u"-service \"SMS\" -to \"Anna<+4917>\""},
                  test::FakePrograms::Start{u"\\Windows\\tmail.exe", u"mailto:Anna<a@b.org>"}));
}

TEST_F(SendCommandTest, ByTheComposerLibrary) {
  OpenMain();
  Compose(1, AddressKind::kNumber, u"+4917");
  Compose(2, AddressKind::kNumber, u"+4918");
  Compose(2, AddressKind::kEmail, u"a@b.org");
  EXPECT_THAT(device.journal.Entries("CallComposer"),
              ElementsAre("CallComposer(MessageTool.DLL, ComposeMMSMessage, +4917, IPM.SMStext)",
                          "CallComposer(MessageTool.DLL, ComposeMMSMessage, +4918, IPM.SMStext)",
                          "CallComposer(MessageTool.DLL, ComposeMMSMessage, a@b.org, IPM.MMS)"));
  EXPECT_THAT(Started(), IsEmpty());
  Compose(1, AddressKind::kEmail, u"a@b.org");
  EXPECT_THAT(Started(), ElementsAre(test::FakePrograms::Start{u"\\Windows\\tmail.exe",
                                                               u"mailto:Anna<a@b.org>"}));
}

TEST_F(SendCommandTest, ByTheMmsProgram) {
  OpenMain();
  Compose(3, AddressKind::kNumber, u"+4917");
  Compose(3, AddressKind::kEmail, u"a@b.org");
  EXPECT_THAT(
      Started(),
      ElementsAre(test::FakePrograms::Start{u"\\Windows\\MMSC.exe", u"\"1\" \"+4917\""},
                  test::FakePrograms::Start{u"\\Windows\\tmail.exe", u"mailto:Anna<a@b.org>"}));
}

TEST_F(SendCommandTest, AnotherSettingStartsNothing) {
  OpenMain();
  for (const std::uint32_t mode : {4u, 0xFFFFFFFFu}) {
    Compose(mode, AddressKind::kNumber, u"+4917");
    Compose(mode, AddressKind::kEmail, u"a@b.org");
  }
  EXPECT_THAT(Started(), IsEmpty());
  EXPECT_EQ(Calls("CallComposer"), 0u);
}

TEST_F(SendCommandTest, AComposerThatIsMissingIsNotReported) {
  OpenMain();
  device.programs.SetStartable(false);
  for (const std::uint32_t mode : {0u, 1u, 2u, 3u}) {
    Compose(mode, AddressKind::kNumber, u"+4917");
    Compose(mode, AddressKind::kEmail, u"a@b.org");
  }
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(SendCommandTest, ANamesPercentSignsAreNoPattern) {
  OpenMain();
  state->settings.Enable_SBMail = 0;
  ComposeMessage(*state, AddressKind::kNumber, u"100%s %d \"x\"", u"+4917");
  EXPECT_EQ(Started().at(0).commandLine, u"-service \"SMS\" -to \"100%s %d \"x\"<+4917>\"");
}

}  // namespace
}  // namespace kelpin::views
