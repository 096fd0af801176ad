#include <gmock/gmock.h>

#include "tests/flow/entry_editor_flow.h"

// Own numbers, service numbers, figures, calls and messages, down to the card's files.
namespace kelpin::views {
namespace {

using device::card::ImageRecord;
using editor::EntryFlow;
using editor::Texts;
using test::RowsOf;
using testing::ElementsAre;

constexpr char kUsim[] = "A0000000871002FF49FF0589";
constexpr std::uint32_t kMueller = 41;  // with an office number and an e-mail address

class ViewsOnACard : public testing::Test {
 protected:
  // Gives the command and runs `script` in its dialog, once `list` has `rows` rows.
  void Show(int command, int resource, int list, int rows,
            const std::function<void(ui::Dialog&, ui::ListView&)>& script) {
    bool opened = false;
    flow.screen.ScriptDialog(resource, [&](ui::Dialog& dialog) {
      opened = true;
      ui::ListView& view = *dialog.List(list);
      ASSERT_TRUE(flow.screen.RunUntil(
          [&] { return view.ItemCount() == rows && !flow.screen.WaitCursor(); }));
      script(dialog, view);
      if (!dialog.Ended()) dialog.Close();
    });
    flow.state.dialog->Command(command);
    EXPECT_TRUE(opened);
  }
  static void Select(ui::ListView& list, int row) {
    list.SetItemState(-1, 0, ui::kItemSelected);
    list.SetItemState(row, ui::kItemSelected | ui::kItemFocused,
                      ui::kItemSelected | ui::kItemFocused);
  }
  void SelectEntry(std::uint32_t location) {
    Select(*flow.state.dialog->List(res::kMainList), app::FindListRow(flow.state, location));
    flow.screen.RunPending();
  }
  std::string OwnRecord(std::size_t record) {
    nlohmann::json image = flow.card.Image();
    const std::string hex = ImageRecord(image, {kUsim, "6F40"}, record);
    return hex.empty() ? std::string(60, 'F') : hex;
  }

  EntryFlow flow{"usim"};
};

TEST_F(ViewsOnACard, AnOwnNumberIsWrittenAndErasedInTheCardsFile) {
  flow.Open();
  const std::string first = "4D79204E6F2EFFFFFFFFFFFFFFFFFFFF0791947121436587FFFFFFFFFFFF";
  Show(323, 208, res::kOwnNumbersList, 4, [&](ui::Dialog& dialog, ui::ListView& list) {
    EXPECT_EQ(RowsOf(list), (Texts{u"1|My No.|+491712345678", u"2||", u"3||", u"4||"}));
    flow.screen.RunPending();
    Select(list, 1);
    flow.screen.RunPending();
    flow.screen.ScriptDialog(210, [&](ui::Dialog& record) {
      flow.Type(record, res::kOwnNumberName, u"Work");
      flow.Type(record, res::kOwnNumberNumber, u"+4930123");
      record.Command(340);
      EXPECT_TRUE(record.Ended());
    });
    dialog.Command(332);
    EXPECT_EQ(list.ItemText(1, 1), u"Work");
    // 16 bytes of name, 5 bytes of number, international, digits with the low nibble first.
    EXPECT_EQ(OwnRecord(2),
              "576F726B"
              "FFFFFFFFFFFFFFFFFFFFFFFF"
              "05"
              "91"
              "940321F3"
              "FFFFFFFFFFFF"
              "FF"
              "FF");
    EXPECT_EQ(OwnRecord(1), first);

    // The news of what was saved fills the list again, at a time of its own: a row that loses its
    // selection by that is chosen once more.
    flow.screen.ScriptBox(ui::BoxAnswer::kYes);
    EXPECT_TRUE(flow.screen.RunUntil([&] {
      Select(list, 0);
      dialog.Command(334);
      return OwnRecord(1) == std::string(60, 'F');
    }));
    EXPECT_EQ(OwnRecord(2).substr(0, 8), "576F726B");
  });
  EXPECT_EQ(flow.state.dialog->Text(res::kMainHeader), u"My No. +4930123");
}

TEST_F(ViewsOnACard, ServiceNumbersAreListedWithTheirExtensions) {
  flow.SetSwitch(u"Enable_SDN", 1);
  flow.Open();
  Show(348, 213, res::kServiceNumbersList, 6, [&](ui::Dialog& dialog, ui::ListView& list) {
    EXPECT_THAT(RowsOf(list),
                ElementsAre(u"1|Emergency|112", u"2|Balance|*100#", u"3|Service desk|+493023125100",
                            u"4|Flight info|+442079460700", u"5|Directory|+12125550100",
                            u"6|Service card|+4930231251009876543210p1"));
    flow.screen.RunPending();
    Select(list, 5);
    flow.screen.RunPending();
    dialog.Command(350);
  });
  ASSERT_EQ(flow.telephone.Calls().size(), 1u);
  EXPECT_EQ(flow.telephone.Calls()[0].number, u"+4930231251009876543210p1");
}

// Two sets of 250, 124 and 56 of them used; 38 bytes a record, 14 of them no name; 20 messages.
TEST_F(ViewsOnACard, SimInformationShowsTheCardsMeasures) {
  flow.Open();
  Show(324, 207, res::kInformationList, 5, [&](ui::Dialog&, ui::ListView& list) {
    const Texts rows = RowsOf(list);
    EXPECT_EQ(rows[0], u"Total phonebook size:|500");
    EXPECT_EQ(rows[1], u"No. of phonebook entries:|180");
    EXPECT_EQ(rows[2], u"Max. length for name:|24");
    EXPECT_EQ(rows[4], u"SMS message storage capacity:|20");
  });
}

// The second numbers of two sets, 250 each; one file of 100 addresses, which both sets share.
TEST_F(ViewsOnACard, SimInformationShowsTheCapacitiesOfTheExtendedFields) {
  flow.SetSwitch(u"Show_MaxPhoneNumber2", 1);
  flow.SetSwitch(u"Show_MaxEmail", 1);
  flow.Open();
  Show(324, 207, res::kInformationList, 5, [&](ui::Dialog&, ui::ListView& list) {
    const Texts rows = RowsOf(list);
    EXPECT_EQ(rows[2], u"2nd phone number storage capacity:|500");
    EXPECT_EQ(rows[3], u"E-mail address storage capacity:|100");
  });
}

TEST_F(ViewsOnACard, EveryNumberAndTheAddressOfAnEntryAreOffered) {
  flow.Open();
  flow.InEdit(kMueller, [&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kEditNumber3, u"66");
    flow.Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  ASSERT_TRUE(flow.Settle());
  SelectEntry(kMueller);
  Show(316, 214, res::kCallChooserList, 3, [&](ui::Dialog& dialog, ui::ListView& list) {
    EXPECT_THAT(RowsOf(list), ElementsAre(u"+491711234567", u"+49301234567", u"66"));
    dialog.Command(res::kCallChooserCall);
  });
  ASSERT_EQ(flow.telephone.Calls().size(), 1u);
  EXPECT_EQ(flow.telephone.Calls()[0].number, u"+491711234567");
  Show(1076, 215, res::kSendChooserList, 4, [&](ui::Dialog&, ui::ListView& list) {
    EXPECT_THAT(RowsOf(list),
                ElementsAre(u"+491711234567", u"+49301234567", u"66", u"joerg@example.org"));
  });
}

}  // namespace
}  // namespace kelpin::views
