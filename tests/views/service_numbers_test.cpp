#include "views/service_numbers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "res/ids.h"
#include "tests/views/views_fixture.h"

namespace kelpin::views {
namespace {

using platform::SimResult;
using testing::ElementsAre;

constexpr int kCommand = 348;
constexpr int kDialog = 213;
constexpr std::uint32_t kFile = 0x6F49;
constexpr std::uint32_t kExtensions = 0x6F4C;

const std::vector<std::uint8_t> kPolice = {0x03, 0x81, 0x11, 0xF0};  // 110
const std::vector<std::uint8_t> kLong = {0x0B, 0x91, 0x21, 0x43, 0x65, 0x87,
                                         0x09, 0x21, 0x43, 0x65, 0x87, 0x09};

class ServiceNumbersTest : public ViewsTest {
 protected:
  void SetUp() override {
    SetSwitch(u"Enable_SDN", 1);
    SetRecords(kFile, {Record("Police", kPolice), Record("", {}), Record("Help", kLong, 2),
                       Record("", kPolice), Record("Name only", {})});
    test::FakeRadio::File extensions;
    extensions.recordLength = 13;
    // Type 2, three bytes, 9 8 7 6 5; no further record.
    extensions.records = {
        std::vector<std::uint8_t>(13, 0xFF),
        {0x02, 0x03, 0x89, 0x67, 0xF5, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}};
    device.radio.SetFile(kExtensions, std::move(extensions));
  }

  // Opens the list and runs `script` when it was filled with `rows` rows.
  void ShowList(int rows, const std::function<void(ui::Dialog&, ui::ListView&)>& script) {
    Show(kCommand, kDialog, [=, this](ui::Dialog& dialog) {
      ui::ListView& list = *dialog.List(1034);
      ASSERT_TRUE(Await([&] { return list.ItemCount() == rows && !device.screen.WaitCursor(); }));
      device.screen.RunPending();
      script(dialog, list);
    });
  }
  std::vector<std::u16string> Called() {
    std::vector<std::u16string> numbers;
    for (const auto& call : device.telephone.Calls()) numbers.push_back(call.number);
    return numbers;
  }
};

TEST_F(ServiceNumbersTest, RecordsWithANameOrANumberAreListedUnderTheirNumbers) {
  OpenMain();
  ShowList(4, [&](ui::Dialog& dialog, ui::ListView& list) {
    EXPECT_EQ(dialog.Title(), u"Kelpin");
    EXPECT_EQ(dialog.Text(1032), u"Service dialing numbers:");
    EXPECT_EQ(dialog.Bar()->Resource(), 308);
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Police|110", u"3|Help|+1234567890123456789098765",
                                          u"4||110", u"5|Name only|"));
    EXPECT_EQ(list.NextItem(-1, kSelectedFocused), 0);
    EXPECT_EQ(list.TakeEnsureVisible(), 0);
    EXPECT_EQ(list.ExtendedStyle(), 0x20u);
  });
}

TEST_F(ServiceNumbersTest, OnlyARecordThatNamesOneReadsAnExtension) {
  OpenMain();
  ShowList(4, [&](ui::Dialog&, ui::ListView&) {});
  std::vector<std::uint32_t> read;
  std::vector<platform::RilHandle> clients;
  for (const auto& command : device.radio.Commands()) {
    if (command.simCommand == platform::kRilSimReadRecord) {
      read.push_back(command.parameters.fileId == kExtensions ? command.parameters.parameter1 : 0);
      clients.push_back(command.ril);
    }
  }
  EXPECT_THAT(read, ElementsAre(0, 0, 0, 2, 0, 0));  // the third record's extension, 2
  EXPECT_EQ(clients[0], clients[5]);
  EXPECT_NE(clients[0], clients[3]);  // through a session of its own
}

TEST_F(ServiceNumbersTest, AnExtensionThatCannotBeReadIsLeftOut) {
  OpenMain();
  FailCommand(platform::kRilSimReadRecord, kExtensions);
  ShowList(4, [&](ui::Dialog&, ui::ListView& list) {
    EXPECT_EQ(list.ItemText(1, 2), u"+12345678901234567890");
  });
  FailCommand(platform::kRilSimGetResponse, kExtensions);
  ShowList(4, [&](ui::Dialog&, ui::ListView& list) {
    EXPECT_EQ(list.ItemText(1, 2), u"+12345678901234567890");
  });
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(ServiceNumbersTest, ColumnsFollowTheScreen) {
  struct Case {
    bool highRes;
    bool smartphone;
    int unit;
  };
  OpenMain();
  for (const Case& one : {Case{false, false, 36}, Case{true, false, 72}, Case{true, true, 36}}) {
    state->isHighRes = one.highRes ? 1 : 0;
    state->isSmartphone = one.smartphone ? 1 : 0;
    device.screen.SetClientSize({360, 560});
    ShowList(4, [&](ui::Dialog& dialog, ui::ListView& list) {
      const int other = 180 - one.unit / 2;
      EXPECT_THAT(WidthsOf(list), ElementsAre(one.unit, other, 180 + 4 * one.unit));
      EXPECT_EQ(dialog.Bounds(1034).y, dialog.Bounds(1032).height);
      EXPECT_EQ(dialog.Bounds(1034).y + dialog.Bounds(1034).height, 560);
      dialog.Resize({400, 560});
      const int wider = 200 - one.unit / 2;
      EXPECT_THAT(WidthsOf(list), ElementsAre(one.unit, wider, wider));
    });
  }
}

TEST_F(ServiceNumbersTest, BeforeTheFillTheKeyIsOffAndBothSessionsAreOpen) {
  OpenMain();
  device.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kHold);
  Show(kCommand, kDialog, [&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.List(1034)->ExtendedStyle(), 0x10000020u);
    ASSERT_EQ(dialog.List(1034)->Columns().size(), 3u);
    EXPECT_EQ(dialog.List(1034)->Columns()[0].text, u"#");
    EXPECT_EQ(dialog.List(1034)->Columns()[1].text, u"Name");
    EXPECT_EQ(dialog.List(1034)->Columns()[2].text, u"Phone");
    EXPECT_THAT(WidthsOf(*dialog.List(1034)), ElementsAre(72, 144, 144));  // high resolution
    EXPECT_FALSE(dialog.Bar()->KeyAt(0).enabled);
    EXPECT_EQ(device.radio.OpenSessions(), 4u);  // the main list has two
    for (const std::string& opened : device.journal.Entries("RIL_Initialize")) {
      EXPECT_NE(opened.find("0x400000"), std::string::npos) << opened;
    }
  });
  EXPECT_EQ(device.radio.OpenSessions(), 2u);
}

TEST_F(ServiceNumbersTest, WithoutAFirstSessionThereIsNoSecond) {
  OpenMain();
  device.radio.SetInitializeFails(true);
  device.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kHold);
  Show(kCommand, kDialog, [&](ui::Dialog&) { EXPECT_EQ(Calls("RIL_Initialize"), 1u); });
}

TEST_F(ServiceNumbersTest, ACardWithoutTheFileShowsAnEmptyListAndNoError) {
  OpenMain();
  FailCommand(platform::kRilSimGetResponse, kFile);
  Show(kCommand, kDialog, [&](ui::Dialog& dialog) {
    ASSERT_TRUE(Await(
        [&] { return dialog.List(1034)->Message().text == u"No service numbers on this card"; }));
    EXPECT_EQ(dialog.List(1034)->ItemCount(), 0);
    EXPECT_EQ(Calls("SimGetDevCaps"), 1u);
  });
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(ServiceNumbersTest, AnEmptyListOfACardThatFailedSaysSo) {
  OpenMain();
  FailCommand(platform::kRilSimGetResponse, kFile);
  device.sim.SetResult("SimGetDevCaps", SimResult::kSimBusy);
  Show(kCommand, kDialog, [&](ui::Dialog& dialog) {
    ASSERT_TRUE(
        Await([&] { return dialog.List(1034)->Message().text == u"The card could not be read"; }));
    EXPECT_EQ(dialog.List(1034)->Message().hint, u"Close this list and open it again.");
  });
  EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM is busy."));
}

TEST_F(ServiceNumbersTest, ARecordThatFailsLeavesTheRowsBeforeItAndACardsFailureIsShown) {
  OpenMain();
  FailCommand(platform::kRilSimReadRecord, kFile, 3);
  device.sim.SetResult("SimGetDevCaps", SimResult::kSimBusy);
  Show(kCommand, kDialog, [&](ui::Dialog& dialog) {
    ASSERT_TRUE(Await([&] { return !Boxes().empty() && !device.screen.WaitCursor(); }));
    EXPECT_EQ(dialog.List(1034)->ItemCount(), 1);
  });
  EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM is busy."));
}

TEST_F(ServiceNumbersTest, ARecordThatFailsOnACardThatIsReadyIsNotTold) {
  OpenMain();
  FailCommand(platform::kRilSimReadRecord, kFile, 4);
  ShowList(2, [&](ui::Dialog&, ui::ListView& list) {
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Police|110", u"3|Help|+1234567890123456789098765"));
    EXPECT_EQ(list.NextItem(-1, kSelectedFocused), 0);
    EXPECT_EQ(Calls("SimGetDevCaps"), 1u);
  });
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(ServiceNumbersTest, NothingOpensOnACardThatIsNotReady) {
  OpenMain();
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
  Dialog().Command(kCommand);
  EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM is busy."));
  EXPECT_EQ(device.screen.OpenDialogs(), 1u);
}

TEST_F(ServiceNumbersTest, CallHandsTheRowToTheTelephone) {
  OpenMain();
  ShowList(4, [&](ui::Dialog& dialog, ui::ListView&) {
    EXPECT_TRUE(dialog.Bar()->KeyAt(0).enabled);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).command, 350);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).text, u"Call");
    dialog.PressSoftKey(0);
    EXPECT_FALSE(dialog.Ended());
  });
  ASSERT_EQ(device.telephone.Calls().size(), 1u);
  EXPECT_EQ(device.telephone.Calls()[0],
            (test::FakeTelephone::Call{24, 65, u"110", u"", u"Police", u""}));
  EXPECT_EQ(Calls("SimGetDevCaps"), 1u);
  EXPECT_LT(Position("SimGetDevCaps"), Position("PhoneMakeCall"));
}

TEST_F(ServiceNumbersTest, EveryWayOfCalling) {
  OpenMain();
  ShowList(4, [&](ui::Dialog& dialog, ui::ListView& list) {
    dialog.HotKey(0x72, ui::kNoModifier);
    EXPECT_FALSE(dialog.HotKey(0x72, ui::kControl));
    EXPECT_EQ(Called().size(), 1u);
    list.KeyDown({ui::Key::kEnter, ui::kNoModifier});
    EXPECT_EQ(Called().size(), 2u);
    list.Click(2, 1, ui::kNoModifier);
    EXPECT_EQ(Called().size(), 3u);
    list.LongPress(0, {7, 8});
    device.screen.RunPending();
    ASSERT_EQ(device.screen.Popups().size(), 1u);
    EXPECT_EQ(device.screen.Popups()[0].point, (ui::Point{7, 8}));
    ASSERT_EQ(device.screen.Popups()[0].items.size(), 1u);
    EXPECT_EQ(device.screen.Popups()[0].items[0].text, u"Call");
    EXPECT_TRUE(device.screen.ChoosePopup(350));
    EXPECT_EQ(Called().size(), 4u);
  });
}

TEST_F(ServiceNumbersTest, ADoublePressCallsOnce) {
  OpenMain();
  ShowList(4, [&](ui::Dialog&, ui::ListView& list) {
    list.Click(1, 1, ui::kNoModifier);
    list.DoubleClick(1);
    EXPECT_EQ(Called().size(), 1u);
    device.clock.Advance(600);
    list.DoubleClick(1);
    EXPECT_EQ(Called().size(), 2u);
  });
}

TEST_F(ServiceNumbersTest, AClickThatLeavesSeveralRowsSelectedCallsNobody) {
  OpenMain();
  ShowList(4, [&](ui::Dialog&, ui::ListView& list) {
    list.Click(2, 1, ui::kControl);
    EXPECT_EQ(list.SelectedCount(), 2);
    EXPECT_TRUE(Called().empty());
  });
}

TEST_F(ServiceNumbersTest, ACardThatIsNotReadyIsNotCalledFrom) {
  OpenMain();
  ShowList(4, [&](ui::Dialog& dialog, ui::ListView&) {
    device.sim.SetResult("SimGetDevCaps", SimResult::kSimBusy);
    dialog.Command(350);
  });
  EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM is busy."));
  EXPECT_TRUE(Called().empty());
}

TEST_F(ServiceNumbersTest, OkClosesOnAPocketPcAndCallsOnASmartphone) {
  OpenMain();
  for (const int command : {1, 2, 351}) {
    ShowList(4, [&](ui::Dialog& dialog, ui::ListView&) {
      dialog.Command(command);
      EXPECT_TRUE(dialog.Ended()) << command;
      EXPECT_EQ(dialog.Result(), 16);
      EXPECT_EQ(dialog.Bar(), nullptr);
    });
  }
  EXPECT_TRUE(Called().empty());
  state->isSmartphone = 1;
  ShowList(4, [&](ui::Dialog& dialog, ui::ListView& list) {
    dialog.Command(1);
    EXPECT_THAT(Called(), ElementsAre(u"110"));
    // Without a selection the focused row.
    list.SetItemState(-1, 0, ui::kItemSelected);
    list.SetItemState(2, ui::kItemFocused, ui::kItemFocused);
    EXPECT_FALSE(dialog.Bar()->KeyAt(0).enabled);
    dialog.Command(1);
    EXPECT_EQ(device.telephone.Calls().back().called, u"");
    EXPECT_EQ(Called().size(), 2u);
    EXPECT_FALSE(dialog.Ended());
  });
}

TEST_F(ServiceNumbersTest, WithNeitherSelectionNorFocusNobodyIsCalled) {
  SetRecords(kFile, {});
  OpenMain();
  state->isSmartphone = 1;
  Show(kCommand, kDialog, [&](ui::Dialog& dialog) {
    dialog.Command(1);
    EXPECT_TRUE(Called().empty());
    EXPECT_EQ(Calls("SimGetDevCaps"), 0u);
  });
}

TEST_F(ServiceNumbersTest, ClosingEndsAFillUnderWay) {
  OpenMain();
  device.radio.SetResponder([](const test::FakeRadio::Command& command) {
    std::optional<test::FakeRadio::Answer> answer;
    if (command.simCommand == platform::kRilSimReadRecord && command.parameters.fileId == kFile) {
      answer.emplace().answering = test::FakeRadio::Answering::kNever;
    }
    return answer;
  });
  Show(kCommand, kDialog, [&](ui::Dialog& dialog) {
    device.radio.AwaitCommands(2);
    EXPECT_TRUE(device.screen.WaitCursor());
    dialog.Command(2);
  });
  EXPECT_TRUE(Await([&] { return !device.screen.WaitCursor(); }));
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(ServiceNumbersTest, HelpOpensTheViewer) {
  OpenMain();
  ShowList(4, [&](ui::Dialog& dialog, ui::ListView&) { dialog.Help(); });
  EXPECT_EQ(Calls(kHelp), 1u);
}

}  // namespace
}  // namespace kelpin::views
