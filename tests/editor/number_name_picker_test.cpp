#include <gmock/gmock.h>

#include "editor/name_list_state.h"
#include "editor/pickers.h"
#include "tests/editor/name_list_fixture.h"

// The picker that names an entry's second or third number, as the entry dialogs open it.
namespace kelpin::editor {
namespace {

using testing::ElementsAre;

constexpr int kPicker = 375;
constexpr int kList = 2018;
constexpr std::uint32_t kFile = 5;

class NumberNamePickerTest : public NameListFixture {
 protected:
  void SetUp() override {
    PutNames(kFile, {"Home", "", "Work"});
    device.sim.SetEntry(1, u"Anna", u"111");
  }

  // Presses `button` of the entry dialog and runs `script` in the picker.
  void Pick(ui::Dialog& entry, int button,
            const std::function<void(ui::Dialog&, ui::ListView&)>& script) {
    const int before = opened[kPicker];
    Expect(kPicker, [&](ui::Dialog& picker) { script(picker, *picker.List(kList)); });
    entry.PressButton(button);
    Serve();
    EXPECT_EQ(opened[kPicker], before + 1);
  }
  void PickRow(ui::Dialog& entry, int button, int row) {
    Pick(entry, button, [&](ui::Dialog& picker, ui::ListView& list) {
      SelectRow(list, row);
      picker.PressSoftKey(0);
      EXPECT_TRUE(picker.Ended());
      EXPECT_EQ(picker.Result(), 16);
      EXPECT_EQ(picker.Bar(), nullptr);
    });
  }
};

TEST_F(NumberNamePickerTest, OpensOverTheEntryWithItsKeysAndColumns) {
  Open();
  InNew([&](ui::Dialog& entry) {
    Pick(entry, 2012, [&](ui::Dialog& picker, ui::ListView& list) {
      EXPECT_EQ(picker.Owner(), entry.Handle());
      EXPECT_EQ(picker.Title(), u"Kelpin");
      EXPECT_TRUE(picker.HasDoneButton());
      EXPECT_EQ(picker.Bar()->Resource(), 376);
      EXPECT_EQ(picker.Bar()->KeyAt(0).command, 1097);
      EXPECT_EQ(picker.Bar()->KeyAt(0).text, u"OK");
      EXPECT_EQ(picker.Bar()->KeyAt(1).command, 1098);
      EXPECT_EQ(picker.Bar()->KeyAt(1).text, u"Cancel");
      EXPECT_EQ(list.ExtendedStyle(), ui::kListFullRowSelect | ui::kListNoHorizontalScroll);
      const std::vector<ui::Column> columns = {{u"#", 36}, {u"Name", 360 - 54}};
      EXPECT_EQ(list.Columns(), columns);
      EXPECT_EQ(picker.Bounds(kList), (ui::Rect{0, 0, 360, 560}));
      EXPECT_NE(picker.Control(kList)->labelledBy, 0);
    });
  });
}

TEST_F(NumberNamePickerTest, TheUsualNameComesFirstAndErasedRecordsAreLeftOut) {
  Open();
  InNew([&](ui::Dialog& entry) {
    Forget();
    Pick(entry, 2012, [&](ui::Dialog& picker, ui::ListView& list) {
      EXPECT_THAT(Reads(kFile), ElementsAre(3, 2, 1));
      EXPECT_THAT(RowsOf(list), ElementsAre(u"0|<Default>", u"1|Home", u"3|Work"));
      EXPECT_EQ(list.ItemState(0), ui::kItemSelected | ui::kItemFocused);
      EXPECT_EQ(list.SelectionMark(), 0);
      EXPECT_TRUE(KeyOn(picker, 0));
    });
  });
}

TEST_F(NumberNamePickerTest, ACardWithoutNamesOffersTheUsualOneAlone) {
  PutNames(kFile, {});
  Open();
  int shown = 0;
  NameListState numberNames;
  NameListState groupNames;
  Pickers pickers(*state, numberNames, groupNames);
  device.screen.ScriptDialog(kPicker, [&](ui::Dialog& picker) {
    Serve();
    EXPECT_THAT(RowsOf(*picker.List(kList)), ElementsAre(u"0|<Default>"));
    picker.PressSoftKey(0);
    ++shown;
  });
  EXPECT_EQ(pickers.OpenNumberNamePicker(2012, state->mainDialog),
            (NumberName{0, u"Phone Number 2:"}));
  EXPECT_EQ(shown, 1);
}

TEST_F(NumberNamePickerTest, AFailedReadEndsTheListAndTellsWhy) {
  Open();
  InNew([&](ui::Dialog& entry) {
    FailRecord(2, kFile, 1);
    SetReadiness(SimResult::kSimBusy);
    Pick(entry, 2012, [&](ui::Dialog& picker, ui::ListView& list) {
      EXPECT_THAT(RowsOf(list), ElementsAre(u"3|Work"));
      EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM is busy."));
      EXPECT_FALSE(KeyOn(picker, 0));
      EXPECT_TRUE(KeyOn(picker, 1));
    });
  });
}

TEST_F(NumberNamePickerTest, OkIsOffUntilARowIsSelected) {
  Open();
  InNew([&](ui::Dialog& entry) {
    bool looked = false;
    device.screen.ScriptDialog(kPicker, [&](ui::Dialog& picker) {
      EXPECT_FALSE(KeyOn(picker, 0));
      EXPECT_TRUE(KeyOn(picker, 1));
      Serve();
      EXPECT_TRUE(KeyOn(picker, 0));
      ui::ListView& list = *picker.List(kList);
      list.SetItemState(-1, 0, ui::kItemSelected);
      EXPECT_FALSE(KeyOn(picker, 0));
      picker.Command(1);  // Done
      picker.PostCommand(1097);
      Serve();
      EXPECT_FALSE(picker.Ended());
      list.SetItemState(2, ui::kItemSelected, ui::kItemSelected);
      EXPECT_TRUE(KeyOn(picker, 0));
      picker.Close();
      looked = true;
    });
    entry.PressButton(2012);
    EXPECT_TRUE(looked);
    EXPECT_EQ(entry.Text(1061), u"Phone Number 2:");
  });
}

TEST_F(NumberNamePickerTest, EachButtonNamesItsOwnNumber) {
  struct Buttons {
    int second;
    int secondLabel;
    int third;
    int thirdLabel;
  };
  const auto name = [this](ui::Dialog& entry, const Buttons& ids) {
    const auto expectLabels = [&](std::u16string_view second, std::u16string_view third) {
      EXPECT_EQ(entry.Text(ids.secondLabel), second);
      EXPECT_EQ(entry.Text(ids.thirdLabel), third);
    };
    PickRow(entry, ids.second, 1);
    expectLabels(u"Home", u"Phone Number 3:");
    PickRow(entry, ids.third, 2);
    expectLabels(u"Home", u"Work");
    PickRow(entry, ids.second, 0);
    PickRow(entry, ids.third, 0);
    expectLabels(u"Phone Number 2:", u"Phone Number 3:");
  };
  Open();
  InNew([&](ui::Dialog& entry) { name(entry, {2012, 1061, 2011, 1065}); });
  InEdit(1, [&](ui::Dialog& entry) { name(entry, {2013, 1057, 2014, 1067}); });
}

TEST_F(NumberNamePickerTest, DoneEnterAndADoubleTapChooseAndATapOnlySelects) {
  Open();
  InNew([&](ui::Dialog& entry) {
    Pick(entry, 2012, [&](ui::Dialog& picker, ui::ListView& list) {
      SelectRow(list, 1);
      picker.Command(1);
      EXPECT_TRUE(picker.Ended());
    });
    EXPECT_EQ(entry.Text(1061), u"Home");
    Pick(entry, 2012, [&](ui::Dialog& picker, ui::ListView&) {
      picker.KeyDown({ui::Key::kEnd});
      picker.KeyDown({ui::Key::kEnter});
      EXPECT_TRUE(picker.Ended());
    });
    EXPECT_EQ(entry.Text(1061), u"Work");
    Pick(entry, 2012, [&](ui::Dialog& picker, ui::ListView& list) {
      list.Click(1, 1, ui::kNoModifier);
      EXPECT_FALSE(picker.Ended());
      list.DoubleClick(1);
      EXPECT_TRUE(picker.Ended());
    });
    EXPECT_EQ(entry.Text(1061), u"Home");
  });
}

TEST_F(NumberNamePickerTest, CancelEscapeAndTheCloseBoxChangeNothing) {
  Open();
  InNew([&](ui::Dialog& entry) {
    PickRow(entry, 2012, 1);
    const std::function<void(ui::Dialog&)> ways[] = {
        [](ui::Dialog& picker) { picker.PressSoftKey(1); },
        [](ui::Dialog& picker) { picker.KeyDown({ui::Key::kEscape}); },
        [](ui::Dialog& picker) { picker.Close(); }};
    for (const auto& leave : ways) {
      Pick(entry, 2012, [&](ui::Dialog& picker, ui::ListView& list) {
        SelectRow(list, 2);
        leave(picker);
        EXPECT_TRUE(picker.Ended());
        EXPECT_EQ(picker.Result(), 16);
        EXPECT_EQ(picker.Bar(), nullptr);
      });
      EXPECT_EQ(entry.Text(1061), u"Home");
    }
  });
}

// What the user pressed before the list was whole stays the choice.
TEST_F(NumberNamePickerTest, ARowPressedWhileTheListFillsStaysSelected) {
  Open();
  InNew([&](ui::Dialog& entry) {
    device.screen.ScriptDialog(kPicker, [&](ui::Dialog& picker) {
      ui::ListView& list = *picker.List(kList);
      int reads = 0;
      device.radio.SetResponder([&](const test::FakeRadio::Command& command) {
        // The last record is listed and pressed; the others follow.
        if (command.block.size() == 288 && command.block[12] == kFile && ++reads == 2) {
          list.Click(0, 1, ui::kNoModifier);
        }
        return std::optional<test::FakeRadio::Answer>();
      });
      Serve();
      HealRadio();
      EXPECT_THAT(RowsOf(list), ElementsAre(u"0|<Default>", u"1|Home", u"3|Work"));
      EXPECT_EQ(list.SelectedCount(), 1);
      EXPECT_EQ(list.ItemState(2) & ui::kItemSelected, ui::kItemSelected);
      picker.PressSoftKey(0);
    });
    entry.PressButton(2012);
    EXPECT_EQ(entry.Text(1061), u"Work");
  });
}

TEST_F(NumberNamePickerTest, ASizeIsLaidOutOnceAndHelpOpensTheViewer) {
  Open();
  InNew([&](ui::Dialog& entry) {
    Pick(entry, 2012, [&](ui::Dialog& picker, ui::ListView& list) {
      list.SetColumnWidth(1, 77);
      picker.Handler().OnSize(picker, {360, 560});
      EXPECT_EQ(list.Columns()[1].width, 77);
      picker.Handler().OnSize(picker, {360, 300});
      EXPECT_EQ(list.Columns()[1].width, 306);
      EXPECT_EQ(picker.Bounds(kList), (ui::Rect{0, 0, 360, 300}));
      picker.Help();
      EXPECT_EQ(Calls("StartProgram(peghelp, Kelpin.htm)"), 1u);
    });
  });
}

// The first byte of a number's record names it (TS 31.102 4.4.2.9).
TEST_F(NumberNamePickerTest, TheChosenNameAndTheUsualOneAreSaved) {
  constexpr std::uint32_t kSecondNumbers = 6;
  Open();
  InEdit(1, [&](ui::Dialog& entry) {
    PickRow(entry, 2013, 2);
    EntryEditorTest::Type(entry, res::kEditNumber2, u"222");
    Done(entry);
    EXPECT_TRUE(entry.Ended());
  });
  EXPECT_EQ(Record(kSecondNumbers, 1)[0], 3);
  InEdit(1, [&](ui::Dialog& entry) {
    EXPECT_EQ(entry.Text(1057), u"Work");
    PickRow(entry, 2013, 0);
    EXPECT_EQ(entry.Text(1057), u"Phone Number 2:");
    Done(entry);
    EXPECT_TRUE(entry.Ended());
  });
  EXPECT_EQ(Record(kSecondNumbers, 1)[0], 0);
  EXPECT_TRUE(Boxes().empty());
}

}  // namespace
}  // namespace kelpin::editor
