#include "tests/views/call_fixture.h"
#include "views/call_and_send.h"
#include "views/make_call.h"

namespace kelpin::views {
namespace {

using platform::SimResult;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kCall = 316;
constexpr int kChooser = 214;

class CallCommandTest : public CallTest {
 protected:
  void ShowChooser(const std::function<void(ui::Dialog&, ui::ListView&)>& script) {
    Show(kCall, kChooser, [&](ui::Dialog& dialog) { script(dialog, *dialog.List(1070)); });
  }
};

TEST_F(CallCommandTest, AnEntryWithItsNumberAloneIsDialledAtOnce) {
  OpenMain();
  SelectEntry(2);
  Dialog().Command(kCall);
  ASSERT_EQ(device.telephone.Calls().size(), 1u);
  EXPECT_EQ(device.telephone.Calls()[0],
            (test::FakeTelephone::Call{24, 0x41, u"222", u"", u"Bert", u""}));
  EXPECT_FALSE(device.screen.WaitCursor());
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(CallCommandTest, AnEntryWithMoreNumbersLetsTheUserChoose) {
  OpenMain();
  SelectEntry(1);
  ShowChooser([&](ui::Dialog& dialog, ui::ListView& list) {
    EXPECT_EQ(dialog.Title(), u"Kelpin");
    EXPECT_EQ(dialog.Owner(), state->mainDialog);
    EXPECT_TRUE(dialog.HasDoneButton());
    EXPECT_TRUE(dialog.InputPanelDown());
    EXPECT_EQ(dialog.Text(1069), u"Call:");
    EXPECT_EQ(dialog.Bar()->Resource(), 362);
    EXPECT_THAT(RowsOf(list), ElementsAre(u"+49111", u"0123", u"+4917"));
    EXPECT_EQ(list.NextItem(-1, kSelectedFocused), 0);
    EXPECT_THAT(Called(), IsEmpty());
    list.Click(1, 0, ui::kNoModifier);
    EXPECT_THAT(Called(), ElementsAre(u"0123"));
    EXPECT_EQ(device.telephone.Calls()[0].called, u"Anna");
    EXPECT_FALSE(dialog.Ended());
  });
}

TEST_F(CallCommandTest, EveryWayOfChoosing) {
  OpenMain();
  SelectEntry(1);
  ShowChooser([&](ui::Dialog& dialog, ui::ListView& list) {
    dialog.PressSoftKey(0);
    EXPECT_THAT(Called(), ElementsAre(u"+49111"));
    EXPECT_TRUE(dialog.HotKey(0x72, ui::kNoModifier));
    EXPECT_FALSE(dialog.HotKey(0x72, ui::kControl));
    EXPECT_EQ(Called().size(), 2u);
    list.KeyDown({ui::Key::kDown, ui::kNoModifier});
    list.KeyDown({ui::Key::kEnter, ui::kNoModifier});
    EXPECT_EQ(Called().back(), u"0123");
    list.Click(2, 0, ui::kNoModifier);
    list.DoubleClick(2);  // the second press of a double press
    EXPECT_EQ(Called().size(), 4u);
    EXPECT_EQ(Called().back(), u"+4917");
    list.SetItemState(-1, 0, ui::kItemSelected);
    EXPECT_FALSE(dialog.Bar()->KeyAt(0).enabled);
    list.SetItemState(1, ui::kItemSelected, ui::kItemSelected);
    EXPECT_TRUE(dialog.Bar()->KeyAt(0).enabled);
  });
}

TEST_F(CallCommandTest, OkClosesTheChooserOnAPocketPcAndCallsOnASmartphone) {
  OpenMain();
  SelectEntry(1);
  for (const int command : {1, 2, 1072}) {
    ShowChooser([&](ui::Dialog& dialog, ui::ListView&) {
      dialog.Command(command);
      EXPECT_TRUE(dialog.Ended()) << command;
      EXPECT_EQ(dialog.Result(), 16);
      EXPECT_EQ(dialog.Bar(), nullptr);
    });
  }
  EXPECT_THAT(Called(), IsEmpty());
  state->isSmartphone = 1;
  ShowChooser([&](ui::Dialog& dialog, ui::ListView&) {
    dialog.Command(1);
    EXPECT_FALSE(dialog.Ended());
    EXPECT_THAT(Called(), ElementsAre(u"+49111"));
  });
}

TEST_F(CallCommandTest, WithoutASelectionTheFocusedRowIsCalledAndWithoutBothNobody) {
  OpenMain();
  SelectEntry(2);
  List().SetItemState(-1, 0, ui::kItemSelected);
  CallSelectedEntry(*state);
  EXPECT_THAT(Called(), ElementsAre(u"222"));
  List().DeleteAllItems();
  device.journal.Clear();
  CallSelectedEntry(*state);
  EXPECT_EQ(Called().size(), 1u);
  EXPECT_EQ(Calls("SimGetPhonebookStatus"), 0u);
}

TEST_F(CallCommandTest, OfSeveralSelectedRowsTheFirstIsCalled) {
  OpenMain();
  SelectEntry(2);
  const int row = app::FindListRow(*state, 2);
  List().SetItemState(row + 1, ui::kItemSelected, ui::kItemSelected);
  Dialog().Command(kCall);
  EXPECT_THAT(Called(), ElementsAre(u"222"));
}

TEST_F(CallCommandTest, ACardThatIsNotReadyIsNotCalledFrom) {
  OpenMain();
  SelectEntry(2);
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
  Dialog().Command(kCall);
  EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM is busy."));
  EXPECT_THAT(Called(), IsEmpty());
}

TEST_F(CallCommandTest, BeyondLocation1000NoFurtherNumberIsRead) {
  OpenMain();
  SelectEntry(1000);
  device.radio.ClearCommands();
  ShowChooser([&](ui::Dialog&, ui::ListView& list) {
    EXPECT_THAT(RowsOf(list), ElementsAre(u"333", u"99"));
  });
  EXPECT_THAT(FieldsRead(), ElementsAre(16, 17));
  SelectEntry(1001);
  Dialog().Command(kCall);
  EXPECT_THAT(Called(), ElementsAre(u"444"));
  EXPECT_THAT(FieldsRead(), IsEmpty());
}

TEST_F(CallCommandTest, FieldsThatAreSwitchedOffAreNotRead) {
  SetSwitch(u"Disable_ANR", 1);
  SetSwitch(u"Disable_ANRA", 1);
  OpenMain();
  SelectEntry(1);
  device.radio.ClearCommands();
  Dialog().Command(kCall);
  EXPECT_THAT(Called(), ElementsAre(u"+49111"));
  EXPECT_THAT(FieldsRead(), IsEmpty());
}

TEST_F(CallCommandTest, AFieldThatCannotBeReadIsNotOffered) {
  OpenMain();
  SelectEntry(1);
  device.radio.SetResponder([](const test::FakeRadio::Command& command) {
    std::optional<test::FakeRadio::Answer> answer;
    if (command.block.size() == 288 && command.block[8] == platform::kRilSimReadRecord &&
        command.block[12] == 6) {
      answer.emplace().code = platform::kRilResultError;
    }
    return answer;
  });
  ShowChooser([&](ui::Dialog&, ui::ListView& list) {
    EXPECT_THAT(RowsOf(list), ElementsAre(u"+49111", u"+4917"));
  });
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(CallCommandTest, TheWaitCursorShowsWhileTheCardIsRead) {
  OpenMain();
  SelectEntry(1);
  std::vector<bool> during;
  device.radio.SetResponder([&](const test::FakeRadio::Command&) {
    during.push_back(device.screen.WaitCursor());
    return std::optional<test::FakeRadio::Answer>();
  });
  ShowChooser([&](ui::Dialog&, ui::ListView&) { EXPECT_FALSE(device.screen.WaitCursor()); });
  EXPECT_THAT(during, testing::Each(true));
  EXPECT_FALSE(during.empty());
}

TEST_F(CallCommandTest, ANumberWithAServiceCodeIsShownAndDialledAfterAYesAlone) {
  device.sim.SetEntry(3, u"Forward all", u"*21*0900123#");
  OpenMain();
  SelectEntry(3);
  device.screen.ScriptDismissBox();
  Dialog().Command(kCall);
  EXPECT_THAT(Called(), IsEmpty());
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].text.find(u"Dial *21*0900123#?"), 0u);
  EXPECT_EQ(Boxes()[0].caption, u"Warning");
  EXPECT_EQ(Boxes()[0].style, ui::kBoxQuestion);
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  Dialog().Command(kCall);
  EXPECT_THAT(Called(), ElementsAre(u"*21*0900123#"));
}

TEST_F(CallCommandTest, WhatMayBeAServiceCodeIsAskedAboutInFullAndNothingElseIs) {
  OpenMain();
  const std::u16string longest = u"*21*" + std::u16string(250, u'7') + u"#";
  for (const std::u16string& number :
       {std::u16string(u"*100#"), std::u16string(u"12#"), std::u16string(u"**4"),
        std::u16string(u"+49*1"), std::u16string(u"0p*21#"), std::u16string(u"* 21 #"),
        std::u16string(u"\uFF0A21\uFF03"), std::u16string(u"\u066D21"),
        std::u16string(u"\u0661\u0662"), std::u16string(u"\uFF11"), std::u16string(u"12 34"),
        std::u16string(u"1?2"), longest}) {
    device.screen.ScriptDismissBox();
    MakeCall(*state, state->mainDialog, u"Anna", number);
    ASSERT_FALSE(Boxes().empty()) << testing::PrintToString(number);
    EXPECT_EQ(Boxes().back().text.find(u"Dial " + number + u"?"), 0u);
  }
  EXPECT_THAT(Called(), IsEmpty());
  const std::size_t asked = Boxes().size();
  for (const std::u16string_view number : {u"112", u"+491711234567", u"12p34", u"12P3w4W5", u"0"}) {
    MakeCall(*state, state->mainDialog, u"Anna", number);
    ASSERT_FALSE(Called().empty());
    EXPECT_EQ(Called().back(), number);
  }
  EXPECT_EQ(Boxes().size(), asked);
}

TEST_F(CallCommandTest, AServiceCodeThatIsChosenIsAskedAboutInFrontOfTheChooser) {
  SetRecord(6, 1, {0x00, 0x03, 0x81, 0x1A, 0xB2});  // *12#
  OpenMain();
  SelectEntry(1);
  ShowChooser([&](ui::Dialog& dialog, ui::ListView& list) {
    device.screen.ScriptBox(ui::BoxAnswer::kNo);
    list.Click(1, 0, ui::kNoModifier);
    ASSERT_EQ(Boxes().size(), 1u);
    EXPECT_EQ(Boxes()[0].owner, dialog.Handle());
    EXPECT_EQ(Boxes()[0].text.find(u"Dial *12#?"), 0u);
    EXPECT_THAT(Called(), IsEmpty());
    EXPECT_FALSE(dialog.Ended());
    device.screen.ScriptBox(ui::BoxAnswer::kYes);
    dialog.PressSoftKey(0);
    EXPECT_THAT(Called(), ElementsAre(u"*12#"));
  });
}

// The chosen row is the mark's, which presses and keys take along.
TEST_F(CallCommandTest, TheRowAtTheSelectionMarkIsCalled) {
  OpenMain();
  SelectEntry(1);
  ShowChooser([&](ui::Dialog& dialog, ui::ListView& list) {
    list.SetSelectionMark(2);
    dialog.PressSoftKey(0);
    EXPECT_THAT(Called(), ElementsAre(u"+4917"));
  });
}

TEST_F(CallCommandTest, ATelephoneThatTakesNoCallIsNotReported) {
  OpenMain();
  SelectEntry(2);
  device.failures.FailCallOf("PhoneMakeCall", 1);
  Dialog().Command(kCall);
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(CallCommandTest, TheChooserHelpsAndIsLaidOutWhenEitherSideChanges) {
  OpenMain();
  SelectEntry(1);
  ShowChooser([&](ui::Dialog& dialog, ui::ListView&) {
    dialog.Help();
    EXPECT_EQ(Calls(kHelp), 1u);
    const ui::Size size = dialog.ClientSize();
    dialog.Resize({size.width + 20, size.height});
    EXPECT_EQ(dialog.Bounds(1070).width, size.width + 20);
    dialog.Resize({size.width + 20, size.height + 20});
    EXPECT_EQ(dialog.Bounds(1070).y + dialog.Bounds(1070).height, size.height + 20);
  });
}

}  // namespace
}  // namespace kelpin::views
