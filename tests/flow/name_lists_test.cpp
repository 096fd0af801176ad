#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/flow/entry_editor_flow.h"

// The card's lists of names on a software card, with threads of their own: edited in the dialogs,
// looked at in the card's bytes.
namespace kelpin::editor {
namespace {

using device::card::ImageRecord;
using testing::ElementsAre;

const std::vector<std::string> kNumberNameFile = {"7F10", "5F3A", "4F81"};
const std::vector<std::string> kGroupNameFile = {"7F10", "5F3A", "4F82"};

class NameListsOnCard : public testing::Test {
 protected:
  void Open(const std::string& image) {
    program = std::make_unique<EntryFlow>(image);
    program->Open();
  }

  test::HeadlessScreen& Screen() { return program->screen; }
  bool Await(const std::function<bool()>& done) { return Screen().RunUntil(done); }

  // Gives the command and runs `script` once the list is whole.
  void InList(int command, int dialog, int listControl,
              const std::function<void(ui::Dialog&, ui::ListView&)>& script) {
    bool opened = false;
    Screen().ScriptDialog(dialog, [&](ui::Dialog& shown) {
      ui::ListView& list = *shown.List(listControl);
      EXPECT_TRUE(Await([&] { return !Screen().WaitCursor(); }));
      script(shown, list);
      opened = true;
      if (!shown.Ended()) shown.Close();
    });
    program->state.dialog->Command(command);
    EXPECT_TRUE(opened);
  }
  void InNumberNames(const std::function<void(ui::Dialog&, ui::ListView&)>& script) {
    InList(1083, 368, 1088, script);
  }
  void InGroupNames(const std::function<void(ui::Dialog&, ui::ListView&)>& script) {
    InList(1084, 371, 1092, script);
  }
  // Types `name` in the dialog of the row and saves it.
  void Rename(ui::Dialog& dialog, ui::ListView& list, int row, int nameDialog, int edit,
              std::u16string_view name) {
    Screen().ScriptDialog(nameDialog, [&](ui::Dialog& shown) {
      shown.SetSelection(edit, 0, -1);
      shown.ReplaceSelection(edit, name);
      shown.PressSoftKey(0);
      EXPECT_TRUE(shown.Ended());
      if (!shown.Ended()) shown.Close();
    });
    Select(list, row);
    dialog.PressSoftKey(0);
  }
  static void Select(ui::ListView& list, int row) {
    constexpr std::uint32_t kState = ui::kItemSelected | ui::kItemFocused;
    list.SetItemState(-1, 0, ui::kItemSelected);
    list.SetItemState(row, kState, kState);
    list.SetSelectionMark(row);
  }
  static Texts Names(const ui::ListView& list) {
    Texts names;
    for (int row = 0; row < list.ItemCount(); ++row) {
      EXPECT_EQ(list.ItemText(row, 0), Decimal(row + 1));
      names.push_back(list.ItemText(row, 1));
    }
    return names;
  }
  static std::u16string Decimal(int number) {
    const std::string text = std::to_string(number);
    return {text.begin(), text.end()};
  }
  std::string OnCard(const std::vector<std::string>& file, std::size_t record) const {
    nlohmann::json image = program->card.Image();
    return ImageRecord(image, file, record);
  }

  std::unique_ptr<EntryFlow> program;
};

// 42 7E 72 6F: '~' of ASCII is 'ü' in the card's alphabet. 81 04 08 94 B0 C7 B0: four characters,
// those above 7F counted from 0400.
TEST_F(NameListsOnCard, TheSampleCardsNamesAreListed) {
  Open("usim");
  InNumberNames([&](ui::Dialog& dialog, ui::ListView& list) {
    EXPECT_THAT(Names(list), ElementsAre(u"Office", u"Mobile 2", u"Home", u"Fax", u"B\u00FCro",
                                         u"\u0414\u0430\u0447\u0430", u"", u"", u"", u""));
    EXPECT_EQ(list.SelectedCount(), 1);
    EXPECT_EQ(list.FocusedItem(), 0);
    EXPECT_TRUE(Await([&] { return dialog.Bar()->KeyAt(0).enabled; }));
    EXPECT_TRUE(dialog.Bar()->KeyAt(1).enabled);
  });
  InGroupNames([&](ui::Dialog&, ui::ListView& list) {
    EXPECT_THAT(Names(list), ElementsAre(u"Family", u"Work", u"Friends", u"Chorus", u"\u00C4rzte",
                                         u"", u"", u"", u"", u""));
  });
  EXPECT_TRUE(Screen().Boxes().empty());
}

TEST_F(NameListsOnCard, ANameIsChangedErasedAndAddedInTheCardsBytes) {
  Open("usim");
  InNumberNames([&](ui::Dialog& dialog, ui::ListView& list) {
    Rename(dialog, list, 3, 217, 2001, u"\u0414\u0430\u0447\u0430");
    Rename(dialog, list, 7, 217, 2001, u"Yacht");
    Select(list, 0);
    Screen().ScriptBox(ui::BoxAnswer::kYes);
    dialog.PressSoftKey(1);
    EXPECT_THAT(Names(list),
                ElementsAre(u"", u"Mobile 2", u"Home", u"\u0414\u0430\u0447\u0430", u"B\u00FCro",
                            u"\u0414\u0430\u0447\u0430", u"", u"Yacht", u"", u""));
  });
  EXPECT_EQ(OnCard(kNumberNameFile, 4), "800414043004470430FFFFFFFFFF");
  EXPECT_EQ(OnCard(kNumberNameFile, 8), "5961636874FFFFFFFFFFFFFFFFFF");
  EXPECT_EQ(OnCard(kNumberNameFile, 2), "4D6F62696C652032FFFFFFFFFFFF");  // as it was
  InNumberNames([&](ui::Dialog&, ui::ListView& list) {
    EXPECT_THAT(Names(list),
                ElementsAre(u"", u"Mobile 2", u"Home", u"\u0414\u0430\u0447\u0430", u"B\u00FCro",
                            u"\u0414\u0430\u0447\u0430", u"", u"Yacht", u"", u""));
  });
  InGroupNames([&](ui::Dialog& dialog, ui::ListView& list) {
    Rename(dialog, list, 2, 373, 2003, u"0123456789abcdef");  // all of the record
    Rename(dialog, list, 5, 373, 2003, u"\u00D8ystese");      // Ø is 0B
  });
  EXPECT_EQ(OnCard(kGroupNameFile, 3), "30313233343536373839616263646566");
  EXPECT_EQ(OnCard(kGroupNameFile, 6), "0B797374657365FFFFFFFFFFFFFFFFFF");
}

TEST_F(NameListsOnCard, CardsWithoutSuchFilesSaySoAndNothingCanBePressed) {
  for (const char* const image : {"sim-250", "usim-local", "usim-full"}) {
    Open(image);
    InGroupNames([&](ui::Dialog& dialog, ui::ListView& list) {
      EXPECT_EQ(list.ItemCount(), 0) << image;
      EXPECT_EQ(list.Message().text, u"This card keeps no groups") << image;
      EXPECT_FALSE(dialog.Bar()->KeyAt(0).enabled);
      EXPECT_FALSE(dialog.Bar()->KeyAt(1).enabled);
    });
    EXPECT_TRUE(Screen().Boxes().empty()) << image;
    program.reset();
  }
}

TEST_F(NameListsOnCard, ACardThatIsTakenOutKeepsTheNameInTheDialog) {
  Open("usim");
  InNumberNames([&](ui::Dialog& dialog, ui::ListView& list) {
    Screen().ScriptDialog(217, [&](ui::Dialog& shown) {
      shown.SetSelection(2001, 0, -1);
      shown.ReplaceSelection(2001, u"Yacht");
      program->card.Channel().Remove();
      shown.PressSoftKey(0);
      EXPECT_FALSE(shown.Ended());
      EXPECT_EQ(shown.Text(2001), u"Yacht");
      EXPECT_FALSE(Screen().WaitCursor());
      ASSERT_EQ(Screen().Boxes().size(), 1u);
      EXPECT_EQ(Screen().Boxes()[0].text, u"SIM isn't inserted into the phone. ");
      shown.Close();
    });
    Select(list, 0);
    dialog.PressSoftKey(0);
    EXPECT_EQ(list.ItemText(0, 1), u"Office");
    // Nor can anything else be begun.
    dialog.PressSoftKey(0);
    dialog.PressSoftKey(1);
    EXPECT_EQ(Screen().Boxes().size(), 3u);
  });
  EXPECT_EQ(OnCard(kNumberNameFile, 1), "4F6666696365FFFFFFFFFFFFFFFF");
}

// The thread is still reading when the dialog closes, again and again.
TEST_F(NameListsOnCard, ListsThatAreClosedAtOnceLeaveNothingBehind) {
  Open("usim");
  for (int round = 0; round < 20; ++round) {
    for (const int dialog : {368, 371}) {
      Screen().ScriptDialog(dialog, [&](ui::Dialog& shown) { shown.Close(); });
      program->state.dialog->Command(dialog == 368 ? 1083 : 1084);
    }
  }
  EXPECT_FALSE(Screen().WaitCursor());
  InNumberNames([&](ui::Dialog&, ui::ListView& list) { EXPECT_EQ(Names(list).size(), 10u); });
  EXPECT_TRUE(Screen().Boxes().empty());
}

}  // namespace
}  // namespace kelpin::editor
