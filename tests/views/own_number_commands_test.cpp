#include "tests/views/own_numbers_fixture.h"

// What can be done with a row of the own numbers.
namespace kelpin::views {
namespace {

using platform::SimResult;
using testing::ElementsAre;

TEST_F(OwnNumbersTest, ALongPressOffersEditEraseAndRefresh) {
  OpenMain();
  ShowList(3, [&](ui::Dialog& dialog, ui::ListView& list) {
    list.LongPress(1, {30, 40});
    device.screen.RunPending();
    ASSERT_EQ(device.screen.Popups().size(), 1u);
    const test::ShownPopup popup = device.screen.Popups()[0];
    EXPECT_EQ(popup.point, (ui::Point{30, 40}));
    ASSERT_EQ(popup.items.size(), 3u);
    EXPECT_EQ(popup.items[0].text, u"Edit");
    EXPECT_EQ(popup.items[0].command, 332);
    EXPECT_EQ(popup.items[1].text, u"Erase");
    EXPECT_EQ(popup.items[1].command, 334);
    EXPECT_EQ(popup.items[2].text, u"Refresh");
    EXPECT_EQ(popup.items[2].command, 335);
    device.screen.ScriptBox(ui::BoxAnswer::kYes);
    EXPECT_TRUE(device.screen.ChoosePopup(334));
    EXPECT_EQ(list.ItemText(1, 2), u"");
    static_cast<void>(dialog);
  });
}

TEST_F(OwnNumbersTest, EraseOverwritesTheFirstSelectedRecordAndKeepsItsRow) {
  OpenMain();
  ShowList(3, [&](ui::Dialog& dialog, ui::ListView& list) {
    list.SetItemState(1, ui::kItemSelected, ui::kItemSelected);
    ASSERT_EQ(list.SelectedCount(), 2);
    device.screen.ScriptBox(ui::BoxAnswer::kYes);
    dialog.Command(334);
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1||", u"2||01234", u"3||"));
  });
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].text,
            u"The selected items will be permanently deleted from the SIM card.\nContinue?"
            u"\n\n#1: Home, +491712345678");
  EXPECT_EQ(Boxes()[0].caption, u"Warning");
  EXPECT_EQ(Boxes()[0].style, ui::kBoxQuestion);
  EXPECT_EQ(CardRecord(1), std::vector<std::uint8_t>(28, 0xFF));
  EXPECT_EQ(CardRecord(2), Record("", kNumber01234));
  EXPECT_EQ(Header(), u"My No. 01234");  // the first number there is now
}

// What was saved is read again and the first row selected, whichever was saved.
TEST_F(OwnNumbersTest, TheQuestionNamesTheNumberThatIsErasedAfterASaveToo) {
  constexpr char16_t kQuestion[] =
      u"The selected items will be permanently deleted from the SIM card.\nContinue?\n\n";
  OpenMain();
  ShowList(3, [&](ui::Dialog& dialog, ui::ListView& list) {
    const auto erase = [&] {
      device.screen.ScriptBox(ui::BoxAnswer::kNo);
      dialog.Command(334);
      return Boxes().back().text;
    };
    SelectRow(list, 2);
    EXPECT_EQ(erase(), kQuestion + std::u16string(u"#3"));
    InEditor(dialog, [](ui::Dialog& editor) { Save(editor, u"Car", u"77"); });
    EXPECT_EQ(erase(), kQuestion + std::u16string(u"#3: Car, 77"));
    SelectRow(list, 1);
    EXPECT_EQ(erase(), kQuestion + std::u16string(u"#2: 01234"));
    dialog.Command(335);
    ASSERT_TRUE(Await([&] { return EraseEnabled(dialog); }));
    EXPECT_EQ(erase(), kQuestion + std::u16string(u"#1: Home, +491712345678"));
  });
}

TEST_F(OwnNumbersTest, NothingIsErasedWithoutAYes) {
  OpenMain();
  ShowList(3, [&](ui::Dialog& dialog, ui::ListView&) {
    device.screen.ScriptDismissBox();
    dialog.Command(334);
  });
  EXPECT_EQ(CardRecord(1), Record("Home", kNumberPlus49));
}

TEST_F(OwnNumbersTest, AFailedEraseIsShownWhenTheCardFails) {
  OpenMain();
  ShowList(3, [&](ui::Dialog& dialog, ui::ListView& list) {
    device.radio.SetResponder([&](const test::FakeRadio::Command& command) {
      std::optional<test::FakeRadio::Answer> answer;
      if (command.simCommand == platform::kRilSimUpdateRecord) {
        device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
        answer.emplace().code = platform::kRilResultError;
      }
      return answer;
    });
    device.screen.ScriptBox(ui::BoxAnswer::kYes);
    dialog.Command(334);
    ASSERT_EQ(Boxes().size(), 2u);
    EXPECT_EQ(Boxes()[1].text, u"SIM is busy.");
    EXPECT_EQ(list.ItemText(0, 1), u"Home");
    EXPECT_FALSE(device.screen.WaitCursor());
  });
}

TEST_F(OwnNumbersTest, AFailedEraseOnACardThatIsReadyGoesOnAsIfItHadWorked) {
  OpenMain();
  ShowList(3, [&](ui::Dialog& dialog, ui::ListView& list) {
    FailCommand(platform::kRilSimUpdateRecord, kFile);
    device.screen.ScriptBox(ui::BoxAnswer::kYes);
    dialog.Command(334);
    EXPECT_EQ(Boxes().size(), 1u);
    EXPECT_EQ(list.ItemText(0, 1), u"");
  });
}

TEST_F(OwnNumbersTest, EditAndEraseNeedARowAndACardThatAnswers) {
  OpenMain();
  ShowList(3, [&](ui::Dialog& dialog, ui::ListView& list) {
    list.SetItemState(-1, 0, ui::kItemSelected);
    dialog.PostCommand(332);
    dialog.PostCommand(334);
    device.screen.RunPending();
    EXPECT_TRUE(Boxes().empty());
    SelectRow(list, 0);
    device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
    dialog.Command(332);
    dialog.Command(334);
    EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM is busy.", u"SIM is busy."));
    EXPECT_EQ(device.screen.OpenDialogs(), 2u);
  });
}

TEST_F(OwnNumbersTest, AClickAndAnActivationEdit) {
  OpenMain();
  ShowList(3, [&](ui::Dialog&, ui::ListView& list) {
    int opened = 0;
    device.screen.ScriptEveryDialog(kEditor, [&](ui::Dialog& editor) {
      ++opened;
      EXPECT_EQ(editor.Text(1026), u"01234");
      editor.Close();
    });
    list.Click(1, 1, ui::kNoModifier);
    EXPECT_EQ(opened, 1);
    list.KeyDown({ui::Key::kEnter, ui::kNoModifier});
    EXPECT_EQ(opened, 2);
  });
}

TEST_F(OwnNumbersTest, OkClosesOnAPocketPcAndEditsOnASmartphone) {
  OpenMain();
  for (const int command : {1, 2}) {
    ShowList(3, [&](ui::Dialog& dialog, ui::ListView&) {
      dialog.Command(command);
      EXPECT_TRUE(dialog.Ended()) << command;
      EXPECT_EQ(dialog.Result(), 16);
      EXPECT_EQ(dialog.Bar(), nullptr);
    });
  }
  state->isSmartphone = 1;
  for (const int command : {1, 339}) {
    ShowList(3, [&](ui::Dialog& dialog, ui::ListView&) {
      int opened = 0;
      device.screen.ScriptDialog(kEditor, [&](ui::Dialog& editor) {
        ++opened;
        editor.Close();
      });
      dialog.Command(command);
      EXPECT_EQ(opened, 1) << command;
      EXPECT_FALSE(dialog.Ended());
    });
  }
}

TEST_F(OwnNumbersTest, TheHeaderIsReadAgainOnlyAfterAChangeWasAskedFor) {
  OpenMain();
  ShowList(3, [&](ui::Dialog&, ui::ListView&) { SetRecords(kFile, {Record("", kNumber01234)}); });
  EXPECT_EQ(Header(), u"My No. +491712345678");
  ShowList(1, [&](ui::Dialog& dialog, ui::ListView&) {
    device.screen.ScriptBox(ui::BoxAnswer::kNo);
    dialog.Command(334);
    EXPECT_EQ(Header(), u"My No. +491712345678");
  });
  EXPECT_EQ(Header(), u"My No. 01234");
}

TEST_F(OwnNumbersTest, HelpAndASizeThatIsNoNews) {
  OpenMain();
  ShowList(3, [&](ui::Dialog& dialog, ui::ListView&) {
    dialog.Help();
    EXPECT_EQ(Calls(kHelp), 1u);
    dialog.SetBounds(1028, {1, 2, 3, 4});
    dialog.Resize(dialog.ClientSize());
    EXPECT_EQ(dialog.Bounds(1028), (ui::Rect{1, 2, 3, 4}));
    dialog.Resize({dialog.ClientSize().width + 1, dialog.ClientSize().height});
    EXPECT_NE(dialog.Bounds(1028), (ui::Rect{1, 2, 3, 4}));
  });
}

}  // namespace
}  // namespace kelpin::views
