#include "views/sim_information.h"

#include <gtest/gtest.h>

#include "res/ids.h"
#include "tests/views/views_fixture.h"

namespace kelpin::views {
namespace {

using platform::SimResult;

constexpr int kCommand = 324;
constexpr int kListForm = 207;
constexpr int kPageForm = 209;

class SimInformationTest : public ViewsTest {
 protected:
  void SetUp() override {
    PutThree();
    device.sim.SetCapacity(50);
    device.sim.SetLengths(40, 18);
    device.sim.SetSms(4, 20);
  }
  std::vector<std::u16string> ListRows() {
    std::vector<std::u16string> rows;
    Show(kCommand, kListForm,
         [&](ui::Dialog& dialog) { rows = RowsOf(*dialog.List(res::kInformationList)); });
    return rows;
  }
};

TEST_F(SimInformationTest, TheListShowsSizesAndLimitsTopDown) {
  OpenMain();
  EXPECT_EQ(ListRows(), (std::vector<std::u16string>{
                            u"Total phonebook size:|50", u"No. of phonebook entries:|3",
                            u"Max. length for name:|18", u"Max. length for phone number:|40",
                            u"SMS message storage capacity:|20"}));
  EXPECT_FALSE(device.screen.WaitCursor());
}

TEST_F(SimInformationTest, WithoutTheMessagesTheListHasFourRows) {
  SetSwitch(u"Disable_SMS_Total_Item", 1);
  OpenMain();
  EXPECT_EQ(ListRows(), (std::vector<std::u16string>{
                            u"Total phonebook size:|50", u"No. of phonebook entries:|3",
                            u"Max. length for name:|18", u"Max. length for phone number:|40"}));
}

TEST_F(SimInformationTest, TheCapacitiesOfExtendedFieldsTakeThePlaceOfTheLimits) {
  SetSwitch(u"Show_MaxPhoneNumber2", 1);
  SetSwitch(u"Show_MaxEmail", 1);
  OpenMain();
  // This card has neither file.
  const std::vector<std::u16string> rows = ListRows();
  ASSERT_EQ(rows.size(), 5u);
  EXPECT_EQ(rows[2], u"2nd phone number storage capacity:|0");
  EXPECT_EQ(rows[3], u"E-mail address storage capacity:|0");
}

TEST_F(SimInformationTest, TheListFormIsSetUpForAPocketPc) {
  OpenMain();
  device.screen.SetClientSize({360, 560});
  Show(kCommand, kListForm, [&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Owner(), state->mainDialog);
    EXPECT_EQ(dialog.Title(), u"Kelpin");
    EXPECT_TRUE(dialog.HasDoneButton());
    EXPECT_TRUE(dialog.InputPanelDown());
    EXPECT_EQ(dialog.Bar()->Resource(), 303);
    EXPECT_EQ(dialog.Text(1024), u"SIM Information");
    const ui::ListView& list = *dialog.List(1022);
    EXPECT_EQ(list.ExtendedStyle(), 0x30u);
    EXPECT_EQ(dialog.Bounds(1022).x, 0);
    EXPECT_EQ(dialog.Bounds(1022).y, 10);
    EXPECT_EQ(dialog.Bounds(1022).width, 360);
    ASSERT_EQ(list.Columns().size(), 2u);
    EXPECT_EQ(list.Columns()[0], (ui::Column{u"Item", 240}));         // 360 / 2 + 60
    EXPECT_EQ(list.Columns()[1], (ui::Column{u"Description", 120}));  // 360 / 2 - 60
    dialog.Resize({400, 560});                                        // one side alone
    EXPECT_EQ(WidthsOf(list), (std::vector<int>{240, 120}));
    dialog.Resize({360, 500});
    EXPECT_EQ(WidthsOf(list), (std::vector<int>{240, 120}));
    dialog.Resize({480, 600});
    EXPECT_EQ(WidthsOf(list), (std::vector<int>{300, 180}));
    EXPECT_EQ(dialog.Bounds(1022).width, 480);
  });
}

TEST_F(SimInformationTest, BarsShowHowFullTheCardIs) {
  OpenMain();
  Show(kCommand, kListForm, [&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(2030), u"3 of 50 entries used");
    EXPECT_EQ(dialog.Control(2031)->progressMaximum, 50);
    EXPECT_EQ(dialog.Control(2031)->progressPosition, 3);
    EXPECT_TRUE(dialog.Shown(2031));
    EXPECT_EQ(dialog.Text(2032), u"4 of 20 messages stored");
    EXPECT_EQ(dialog.Control(2033)->progressMaximum, 20);
    EXPECT_EQ(dialog.Control(2033)->progressPosition, 4);
    EXPECT_TRUE(dialog.Shown(2033));
    // Below the list, one under the other, inside the window.
    int y = dialog.Bounds(1022).y + dialog.Bounds(1022).height;
    for (const int control : {1024, 2030, 2031, 2032, 2033}) {
      EXPECT_GE(dialog.Bounds(control).y, y) << control;
      y = dialog.Bounds(control).y + dialog.Bounds(control).height;
    }
    EXPECT_LE(y, 560);
  });
}

TEST_F(SimInformationTest, ABarWithoutAFigureIsNotShown) {
  SetSwitch(u"Disable_SMS_Total_Item", 1);
  OpenMain();
  Show(kCommand, kListForm, [&](ui::Dialog& dialog) {
    EXPECT_TRUE(dialog.Shown(2031));
    EXPECT_FALSE(dialog.Shown(2033));
    EXPECT_FALSE(dialog.Shown(2032));
  });
}

TEST_F(SimInformationTest, NothingOpensOnACardThatIsNotReady) {
  OpenMain();
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
  Dialog().Command(kCommand);
  EXPECT_EQ(BoxTexts(), (std::vector<std::u16string>{u"SIM is busy."}));
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kOk);
  device.sim.SetResult("SimGetDevCaps", SimResult::kSimFailure);
  Dialog().Command(kCommand);
  EXPECT_EQ(BoxTexts().size(), 2u);
  EXPECT_EQ(device.screen.OpenDialogs(), 1u);
}

TEST_F(SimInformationTest, TheStatusIsReadAndThenTheMessages) {
  OpenMain();
  Show(kCommand, kListForm, [&](ui::Dialog&) {});
  const std::vector<std::string> all = device.journal.Entries("Sim");
  ASSERT_EQ(all.size(), 4u);  // ready, limits; then the figures
  EXPECT_TRUE(all[0].starts_with("SimGetPhonebookStatus"));
  EXPECT_TRUE(all[1].starts_with("SimGetDevCaps"));
  EXPECT_TRUE(all[2].starts_with("SimGetPhonebookStatus"));
  EXPECT_TRUE(all[3].starts_with("SimGetSmsStorageStatus"));
}

TEST_F(SimInformationTest, ACardThatRefusesTheMessageFiguresShowsTheErrorAndNoValues) {
  OpenMain();
  device.sim.SetResult("SimGetSmsStorageStatus", SimResult::kSimFailure);
  EXPECT_EQ(ListRows(), std::vector<std::u16string>{});
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].caption, u"Error");
  EXPECT_FALSE(device.screen.WaitCursor());
}

TEST_F(SimInformationTest, OkCancelAndTheKeyCloseTheListForm) {
  OpenMain();
  for (const int command : {1, 2, 0x153}) {
    Show(kCommand, kListForm, [&](ui::Dialog& dialog) {
      dialog.Command(7);
      EXPECT_FALSE(dialog.Ended());
      dialog.Command(command);
      EXPECT_TRUE(dialog.Ended());
      EXPECT_EQ(dialog.Result(), 16);
      EXPECT_EQ(dialog.Bar(), nullptr);
    });
  }
}

TEST_F(SimInformationTest, OnlyTheListFormAnswersHelp) {
  OpenMain();
  Show(kCommand, kListForm, [&](ui::Dialog& dialog) { dialog.Help(); });
  EXPECT_EQ(Calls(kHelp), 1u);
}

class SimInformationPageTest : public SimInformationTest {
 protected:
  void ShowPage(const std::function<void(ui::Dialog&)>& script) {
    Show(kCommand, kPageForm, script);
  }
};

TEST_F(SimInformationPageTest, LabelsAndValues) {
  OpenSmartphoneMain();
  ShowPage([&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Owner(), state->mainDialog);
    EXPECT_EQ(dialog.Title(), u"SIM Information");
    EXPECT_TRUE(dialog.HasDoneButton());
    EXPECT_TRUE(dialog.InputPanelDown());
    EXPECT_EQ(dialog.Bar()->Resource(), 303);
    const std::vector<std::pair<int, std::u16string>> texts = {
        {1035, u"Total phonebook size:"},         {1037, u"50"},
        {1039, u"No. of phonebook entries:"},     {1041, u"3"},
        {1042, u"Max. length for name:"},         {1043, u"18"},
        {1044, u"Max. length for phone number:"}, {1045, u"40"},
        {1046, u"SMS message storage capacity:"}, {1047, u"20"}};
    for (const auto& [control, text] : texts) {
      EXPECT_EQ(dialog.Text(control), text) << control;
      EXPECT_TRUE(dialog.Shown(control)) << control;
    }
    for (const int hidden : {1049, 1050, 1051, 1052}) EXPECT_FALSE(dialog.Shown(hidden)) << hidden;
    dialog.Help();
  });
  EXPECT_EQ(Calls(kHelp), 0u);
}

TEST_F(SimInformationPageTest, OkCancelAndTheKeyCloseThePage) {
  OpenSmartphoneMain();
  for (const int command : {1, 2, 0x153}) {
    ShowPage([&](ui::Dialog& dialog) {
      dialog.Command(command);
      EXPECT_TRUE(dialog.Ended()) << command;
      EXPECT_EQ(dialog.Result(), 16);
      EXPECT_EQ(dialog.Bar(), nullptr);
    });
  }
}

TEST_F(SimInformationPageTest, TheChosenPairsTakeTheRoomOfTheOthers) {
  SetSwitch(u"Show_MaxPhoneNumber2", 1);
  SetSwitch(u"Show_MaxEmail", 1);
  OpenSmartphoneMain();
  ShowPage([&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(1049), u"2nd phone number storage capacity:");
    EXPECT_EQ(dialog.Text(1050), u"0");
    EXPECT_EQ(dialog.Text(1051), u"E-mail address storage capacity:");
    EXPECT_EQ(dialog.Text(1052), u"0");
    for (const int hidden : {1042, 1043, 1044, 1045}) EXPECT_FALSE(dialog.Shown(hidden)) << hidden;
    int y = 0;
    for (const int shown : {1035, 1037, 1039, 1041, 1049, 1050, 1051, 1052, 1046, 1047, 2030}) {
      EXPECT_TRUE(dialog.Shown(shown)) << shown;
      EXPECT_GE(dialog.Bounds(shown).y, y) << shown;
      // One line and the gap at the most: nothing is left free for what is hidden.
      EXPECT_LE(dialog.Bounds(shown).y - y, 16) << shown;
      y = dialog.Bounds(shown).y + dialog.Bounds(shown).height;
    }
  });
}

TEST_F(SimInformationPageTest, TheMessagesKeepTheirLabelWithoutAValue) {
  SetSwitch(u"Disable_SMS_Total_Item", 1);
  OpenSmartphoneMain();
  ShowPage([&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(1046), u"SMS message storage capacity:");
    EXPECT_TRUE(dialog.Shown(1046));
    EXPECT_EQ(dialog.Text(1047), u"");
  });
}

TEST_F(SimInformationPageTest, LabelsAreSetEvenWhenTheCardTellsNoFigures) {
  OpenSmartphoneMain();
  device.sim.SetResult("SimGetSmsStorageStatus", SimResult::kSimBusy);
  ShowPage([&](ui::Dialog& dialog) {
    for (const int label : {1035, 1039, 1042, 1044, 1046}) {
      EXPECT_FALSE(dialog.Text(label).empty()) << label;
    }
    for (const int value : {1037, 1041, 1043, 1045, 1047}) {
      EXPECT_EQ(dialog.Text(value), u"") << value;
    }
  });
  EXPECT_EQ(Boxes().size(), 1u);
}

TEST_F(SimInformationPageTest, EitherSideLaysThePageOutAgain) {
  OpenSmartphoneMain();
  ShowPage([&](ui::Dialog& dialog) {
    const int width = dialog.Bounds(1035).width;
    dialog.Resize({dialog.ClientSize().width + 100, dialog.ClientSize().height});
    EXPECT_EQ(dialog.Bounds(1035).width, width + 100);
  });
}

TEST_F(SimInformationPageTest, ALabelThatIsTooWideForTheScreenIsBroken) {
  SetSwitch(u"Show_MaxEmail", 1);
  OpenSmartphoneMain();
  ui::Metrics large = device.screen.GetMetrics();
  large.labelHeight = 40;
  device.screen.SetMetrics(large);
  device.screen.SetClientSize({360, 560});
  ShowPage([&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Bounds(1046).height, 80);  // 29 letters of 16 are wider than 328
    EXPECT_EQ(dialog.Bounds(1051).height, 80);
    EXPECT_EQ(dialog.Bounds(1052).y, dialog.Bounds(1051).y + 80);
    dialog.Resize({700, 560});
    EXPECT_EQ(dialog.Bounds(1051).height, 40);
    EXPECT_EQ(dialog.Bounds(1052).y, dialog.Bounds(1051).y + 40);
  });
}

TEST_F(SimInformationPageTest, ASettingsChangeScrollsBackToTheTop) {
  OpenSmartphoneMain();
  ShowPage([&](ui::Dialog& dialog) {
    dialog.TakeScrollIntoView();
    dialog.SettingsChanged();
    EXPECT_EQ(dialog.TakeScrollIntoView(), 0);  // posted, not at once
    device.screen.RunPending();
    EXPECT_EQ(dialog.TakeScrollIntoView(), 1035);
  });
}

}  // namespace
}  // namespace kelpin::views
