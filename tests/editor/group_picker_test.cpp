#include <gmock/gmock.h>

#include "editor/name_list_state.h"
#include "editor/pickers.h"
#include "tests/editor/name_list_fixture.h"

// The picker for an entry's groups.
namespace kelpin::editor {
namespace {

using testing::ElementsAre;

constexpr int kPicker = 103;
constexpr int kList = 2019;
constexpr std::uint32_t kFile = 4;
using Ids = std::array<std::uint8_t, 10>;

class GroupPickerTest : public NameListFixture {
 protected:
  void SetUp() override {
    PutNames(kFile, {"Family", "", "Work", "Club"});
    device.sim.SetEntry(1, u"Anna", u"111");
  }

  // Opens the picker on `ids` and runs `script` in it.
  std::optional<GroupSelection> Pick(
      const Ids& ids, const std::function<void(ui::Dialog&, ui::ListView&)>& script) {
    NameListState numberNames;
    NameListState groupNames;
    Expect(kPicker, [&](ui::Dialog& picker) { script(picker, *picker.List(kList)); });
    const int before = opened[kPicker];
    const auto picked = Pickers(*state, numberNames, groupNames)
                            .OpenGroupPicker(2010, state->mainDialog, {ids, u"before"});
    EXPECT_EQ(opened[kPicker], before + 1);
    return picked;
  }
  static std::vector<int> CheckedRows(const ui::ListView& list) {
    std::vector<int> rows;
    for (int row = 0; row < list.ItemCount(); ++row) {
      if (list.Checked(row)) rows.push_back(row);
    }
    return rows;
  }
};

TEST_F(GroupPickerTest, OpensWithItsColumnsAndBothKeysOff) {
  Open();
  Pick({}, [&](ui::Dialog& picker, ui::ListView& list) {
    EXPECT_EQ(picker.Owner(), state->mainDialog);
    EXPECT_EQ(picker.Title(), u"Kelpin");
    EXPECT_TRUE(picker.HasDoneButton());
    EXPECT_EQ(picker.Bar()->Resource(), 377);
    EXPECT_EQ(picker.Bar()->KeyAt(0).command, 1102);
    EXPECT_EQ(picker.Bar()->KeyAt(0).text, u"OK");
    EXPECT_EQ(picker.Bar()->KeyAt(1).command, 1106);
    EXPECT_EQ(picker.Bar()->KeyAt(1).text, u"Cancel");
    EXPECT_EQ(list.ExtendedStyle(),
              ui::kListCheckBoxes | ui::kListFullRowSelect | ui::kListNoHorizontalScroll);
    const std::vector<ui::Column> columns = {{u"#", 36}, {u"Name", 360 - 54}};
    EXPECT_EQ(list.Columns(), columns);
    EXPECT_EQ(picker.Bounds(kList), (ui::Rect{0, 0, 360, 560}));
    EXPECT_NE(picker.Control(kList)->labelledBy, 0);
    EXPECT_FALSE(KeyOn(picker, 0));
    EXPECT_FALSE(KeyOn(picker, 1));
    list.Click(1, 1, ui::kNoModifier);
    list.ClickCheckBox(1);
    EXPECT_FALSE(KeyOn(picker, 0));
    EXPECT_FALSE(KeyOn(picker, 1));
    picker.PressSoftKey(0);
    picker.PressSoftKey(1);
    EXPECT_FALSE(picker.Ended());
  });
}

TEST_F(GroupPickerTest, TheNamedGroupsAreListedAndTheEntrysOwnAreChecked) {
  Open();
  Pick({4, 1, 2}, [&](ui::Dialog&, ui::ListView& list) {
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Family", u"3|Work", u"4|Club"));
    EXPECT_THAT(CheckedRows(list), ElementsAre(0, 2));
    EXPECT_EQ(list.ItemState(0), ui::kItemSelected | ui::kItemFocused | ui::kItemChecked);
    EXPECT_EQ(list.ItemState(1), ui::kItemUnchecked);
  });
}

TEST_F(GroupPickerTest, TheTitleBarsKeyTakesTheCheckedOnes) {
  Open();
  const auto picked = Pick({4, 1}, [&](ui::Dialog& picker, ui::ListView& list) {
    list.ClickCheckBox(1);
    picker.Command(1);
    EXPECT_TRUE(picker.Ended());
    EXPECT_EQ(picker.Result(), 16);
    EXPECT_EQ(picker.Bar(), nullptr);
  });
  EXPECT_EQ(picked, (GroupSelection{{1, 3, 4}, u"Family, Work, Club"}));
}

TEST_F(GroupPickerTest, NothingCheckedIsNoGroup) {
  Open();
  const auto picked = Pick({4, 1}, [&](ui::Dialog& picker, ui::ListView& list) {
    list.SetCheck(-1, false);
    picker.Command(1);
  });
  EXPECT_EQ(picked, GroupSelection{});
}

TEST_F(GroupPickerTest, TheKeysCommandsTakeTheSamePathsThoughTheKeysAreOff) {
  Open();
  const auto picked = Pick({3}, [&](ui::Dialog& picker, ui::ListView&) {
    picker.PostCommand(1102);
    Serve();
    EXPECT_TRUE(picker.Ended());
  });
  EXPECT_EQ(picked, (GroupSelection{{3}, u"Work"}));
  EXPECT_EQ(Pick({3},
                 [&](ui::Dialog& picker, ui::ListView& list) {
                   list.SetCheck(-1, true);
                   picker.PostCommand(1106);
                   Serve();
                   EXPECT_TRUE(picker.Ended());
                 }),
            std::nullopt);
}

TEST_F(GroupPickerTest, TheCloseBoxAndEscapeCancel) {
  Open();
  EXPECT_EQ(Pick({3},
                 [&](ui::Dialog& picker, ui::ListView& list) {
                   list.SetCheck(-1, true);
                   picker.Close();
                   EXPECT_EQ(picker.Result(), 16);
                   EXPECT_EQ(picker.Bar(), nullptr);
                 }),
            std::nullopt);
  EXPECT_EQ(Pick({3},
                 [&](ui::Dialog& picker, ui::ListView&) {
                   picker.KeyDown({ui::Key::kEscape});
                   EXPECT_TRUE(picker.Ended());
                 }),
            std::nullopt);
}

TEST_F(GroupPickerTest, SpaceChecksAndEnterConfirms) {
  Open();
  const auto picked = Pick({}, [&](ui::Dialog& picker, ui::ListView&) {
    picker.KeyDown({ui::Key::kDown});
    picker.KeyDown({ui::Key::kSpace});
    picker.KeyDown({ui::Key::kEnter});
    EXPECT_TRUE(picker.Ended());
  });
  EXPECT_EQ(picked, (GroupSelection{{3}, u"Work"}));
}

TEST_F(GroupPickerTest, OnlyTheFirstTenRowsCount) {
  PutNames(kFile, {"A", "B", "C", "", "E", "F", "G", "H", "I", "J", "K", "L"});
  Open();
  const auto all = Pick({}, [&](ui::Dialog& picker, ui::ListView& list) {
    EXPECT_EQ(list.ItemCount(), 11);
    list.SetCheck(-1, true);
    picker.Command(1);
  });
  EXPECT_EQ(all,
            (GroupSelection{{1, 2, 3, 5, 6, 7, 8, 9, 10, 11}, u"A, B, C, E, F, G, H, I, J, K"}));
  const auto eleventh = Pick({}, [&](ui::Dialog& picker, ui::ListView& list) {
    list.ClickCheckBox(10);
    EXPECT_TRUE(list.Checked(10));
    list.ClickCheckBox(9);
    picker.Command(1);
  });
  EXPECT_EQ(eleventh, (GroupSelection{{11}, u"K"}));
}

TEST_F(GroupPickerTest, AnyStateButUncheckedCounts) {
  Open();
  const auto picked = Pick({}, [&](ui::Dialog& picker, ui::ListView& list) {
    list.SetItemState(1, 0x3000, ui::kItemStateImageMask);
    list.SetItemState(2, 0, ui::kItemStateImageMask);
    picker.Command(1);
  });
  EXPECT_EQ(picked, (GroupSelection{{3, 4}, u"Work, Club"}));
}

TEST_F(GroupPickerTest, TheJoinedTextIsCutToItsRoom) {
  PutNames(kFile, std::vector<std::string>(10, std::string(30, 'x')), 30);
  Open();
  const auto picked = Pick({}, [&](ui::Dialog& picker, ui::ListView& list) {
    list.SetCheck(-1, true);
    picker.Command(1);
  });
  ASSERT_TRUE(picked);
  EXPECT_EQ(picked->text.size(), 259u);  // of 10 * 30 + 9 * 2
  EXPECT_EQ(picked->ids, (Ids{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
}

TEST_F(GroupPickerTest, BeforeTheListIsWholeNothingIsTaken) {
  Open();
  NameListState numberNames;
  NameListState groupNames;
  device.screen.ScriptDialog(kPicker, [&](ui::Dialog& picker) {
    picker.Command(1);
    EXPECT_FALSE(picker.Ended());
    Serve();
    picker.Command(1);
    EXPECT_TRUE(picker.Ended());
  });
  EXPECT_EQ(Pickers(*state, numberNames, groupNames)
                .OpenGroupPicker(2010, state->mainDialog, {{3}, u"Work"}),
            (GroupSelection{{3}, u"Work"}));
}

TEST_F(GroupPickerTest, WithoutAnyNameItSaysHowToGiveOne) {
  PutNames(kFile, {"", ""});
  Open();
  Pick({}, [&](ui::Dialog&, ui::ListView& list) {
    EXPECT_EQ(list.Message().text, u"None of the card's groups has a name yet");
    EXPECT_EQ(list.Message().hint, u"Name one with Menu, Tools, Group Name.");
  });
}

TEST_F(GroupPickerTest, AFailedReadEndsTheListAndTellsWhy) {
  Open();
  FailRecord(2, kFile, 3);
  SetReadiness(SimResult::kSimBusy);
  Pick({}, [&](ui::Dialog&, ui::ListView& list) {
    EXPECT_THAT(RowsOf(list), ElementsAre(u"4|Club"));
    EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM is busy."));
  });
}

TEST_F(GroupPickerTest, TheEntryDialogsShowTheirOwnChoice) {
  Open();
  const auto choose = [&](ui::Dialog& entry, int button, bool checked) {
    Expect(kPicker, [&, checked](ui::Dialog& picker) {
      EXPECT_EQ(picker.Owner(), entry.Handle());
      picker.List(kList)->SetCheck(-1, checked);
      picker.Command(1);
    });
    entry.PressButton(button);
    Serve();
  };
  InNew([&](ui::Dialog& entry) {
    choose(entry, 2010, true);
    EXPECT_EQ(entry.Text(2009), u"Family, Work, Club");
    choose(entry, 2010, false);
    EXPECT_EQ(entry.Text(2009), u"<No Group>");
  });
  InEdit(1, [&](ui::Dialog& entry) {
    EXPECT_EQ(entry.Text(2016), u"<No Group>");
    choose(entry, 2017, true);
    EXPECT_EQ(entry.Text(2016), u"Family, Work, Club");
    Done(entry);
    EXPECT_TRUE(entry.Ended());
  });
  EXPECT_EQ(Record(3, 1), (Bytes{1, 3, 4, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(opened[kPicker], 3);
}

TEST_F(GroupPickerTest, HelpOpensTheViewer) {
  Open();
  Pick({}, [&](ui::Dialog& picker, ui::ListView&) {
    picker.Help();
    EXPECT_EQ(Calls("StartProgram(peghelp, Kelpin.htm)"), 1u);
  });
}

}  // namespace
}  // namespace kelpin::editor
