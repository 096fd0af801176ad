#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "editor/name_family.h"
#include "tests/flow/entry_editor_flow.h"

// The card is exchanged for another while a dialog is open that was begun for the first one. The
// new card is listed at once and gets nothing that was meant for the old one.
namespace kelpin::editor {
namespace {

constexpr char16_t kWrong[] = u"Inorrect SIM was inserted.";

class CardExchange : public testing::Test {
 protected:
  CardExchange() { std::filesystem::copy_file(another.File(), file); }

  // Puts the other card in, and waits until its 250 entries are listed.
  void Exchange() {
    std::string error;
    ASSERT_TRUE(flow.card.Channel().Insert(file, error)) << error;
    ASSERT_TRUE(flow.screen.RunUntil([&] { return List().ItemCount() == 250; }));
    ASSERT_TRUE(flow.Settle());
  }
  ui::ListView& List() { return *flow.state.dialog->List(res::kMainList); }
  nlohmann::json OtherCard() const { return nlohmann::json::parse(std::ifstream(file))["mf"]; }
  // Nothing is written to the other card, and once the dialog is closed the program works with it.
  void ExpectUntouchedAndUsable() {
    EXPECT_TRUE(OtherCard() == another.Image()["mf"]);
    ASSERT_TRUE(flow.screen.RunUntil([&] { return !flow.service.IsExchanged(); }));
    ASSERT_TRUE(flow.Settle());
    flow.InEdit(250, [&](ui::Dialog& dialog) {
      flow.Type(dialog, res::kEditName, u"Later");
      flow.Done(dialog);
      EXPECT_TRUE(dialog.Ended());
    });
    EXPECT_FALSE(OtherCard() == another.Image()["mf"]);
  }

  EntryFlow flow{"usim"};
  device::card::SoftCard another{"usim-full"};
  const std::string file = another.File() + ".other";
};

TEST_F(CardExchange, AnEditedEntryIsNotSavedToTheOtherCard) {
  flow.Open();
  flow.InEdit(1, [&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kEditName, u"Old card");
    Exchange();
    flow.Done(dialog);
    EXPECT_FALSE(dialog.Ended());
    EXPECT_EQ(dialog.Text(res::kEditName), u"Old card");
    EXPECT_EQ(flow.BoxTexts(), Texts{kWrong});
  });
  ExpectUntouchedAndUsable();
}

TEST_F(CardExchange, ANewEntryIsNotSavedToTheOtherCard) {
  // Room for it, so that nothing else keeps it out.
  nlohmann::json image = nlohmann::json::parse(std::ifstream(file));
  device::card::SetImageRecord(image, {"7F10", "5F3A", "4F3A"}, 9, "");
  std::ofstream(file) << image.dump(1);
  flow.Open();
  flow.InNew([&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kNewName, u"Old card");
    flow.Type(dialog, res::kNewNumber, u"1");
    std::string error;
    ASSERT_TRUE(flow.card.Channel().Insert(file, error)) << error;
    ASSERT_TRUE(flow.screen.RunUntil([&] { return List().ItemCount() == 249; }));
    ASSERT_TRUE(flow.Settle());
    flow.Done(dialog);
    EXPECT_FALSE(dialog.Ended());
    EXPECT_EQ(dialog.Text(res::kNewName), u"Old card");
    EXPECT_EQ(flow.BoxTexts(), Texts{kWrong});
  });
  EXPECT_TRUE(OtherCard() == image["mf"]);
}

class NamesExchange : public CardExchange, public testing::WithParamInterface<bool> {
 protected:
  using Script = std::function<void(ui::Dialog& dialog, ui::ListView& names)>;

  // Runs `script` in the list of names; the first one stays what it is.
  void InNames(const Script& script) {
    flow.Open();
    const int command = GetParam() ? res::kCommandGroupNames : res::kCommandNumberNames;
    flow.In(family.listDialog, command, [&](ui::Dialog& dialog) {
      ui::ListView& names = *dialog.List(family.list);
      ASSERT_GT(names.ItemCount(), 0);
      const std::u16string before = names.ItemText(0, 1);
      ASSERT_NE(before, u"");
      script(dialog, names);
      EXPECT_EQ(names.ItemText(0, 1), before);
    });
  }
  static void SelectFirst(ui::ListView& names) {
    constexpr std::uint32_t kState = ui::kItemSelected | ui::kItemFocused;
    names.SetSelectionMark(0);
    names.SetItemState(0, kState, kState);
  }

  const NameFamily& family = GetParam() ? kGroupNames : kNumberNames;
};

TEST_P(NamesExchange, AChangedNameGoesToNoListOfTheOtherCard) {
  InNames([&](ui::Dialog& dialog, ui::ListView& names) {
    bool asked = false;
    flow.screen.ScriptDialog(family.nameDialog, [&](ui::Dialog& name) {
      asked = true;
      flow.Type(name, family.name, u"Yacht");
      Exchange();
      name.PressSoftKey(0);
      EXPECT_FALSE(name.Ended());
      EXPECT_EQ(name.Text(family.name), u"Yacht");
      if (!name.Ended()) name.Close();
    });
    SelectFirst(names);
    dialog.PressSoftKey(0);
    EXPECT_TRUE(asked);
    EXPECT_EQ(flow.BoxTexts(), Texts{kWrong});
  });
  ExpectUntouchedAndUsable();
}

TEST_P(NamesExchange, ANameThatWasNotErasedIsNotShownAsErased) {
  InNames([&](ui::Dialog& dialog, ui::ListView& names) {
    Exchange();
    SelectFirst(names);
    flow.screen.RunPending();
    flow.screen.SetDefaultAnswers(ui::BoxAnswer::kOk, ui::BoxAnswer::kYes);
    dialog.PressSoftKey(1);
    EXPECT_EQ(flow.BoxTexts().back(), kWrong);
  });
  ExpectUntouchedAndUsable();
}

INSTANTIATE_TEST_SUITE_P(Lists, NamesExchange, testing::Bool(),
                         [](const auto& test) { return test.param ? "Groups" : "NumberNames"; });

TEST_F(CardExchange, AnOwnNumberOfTheOldCardIsNotWrittenToTheOther) {
  flow.Open();
  flow.In(208, res::kCommandOwnNumbers, [&](ui::Dialog& dialog) {
    ui::ListView& numbers = *dialog.List(res::kOwnNumbersList);
    ASSERT_TRUE(flow.screen.RunUntil([&] { return numbers.ItemCount() > 0; }));
    bool asked = false;
    flow.screen.ScriptDialog(210, [&](ui::Dialog& editor) {
      asked = true;
      flow.Type(editor, res::kOwnNumberNumber, u"4711");
      Exchange();
      editor.PressSoftKey(0);
      EXPECT_FALSE(editor.Ended());
      EXPECT_EQ(editor.Text(res::kOwnNumberNumber), u"4711");
      if (!editor.Ended()) editor.Close();
    });
    numbers.SetSelectionMark(0);
    numbers.SetItemState(0, ui::kItemSelected | ui::kItemFocused,
                         ui::kItemSelected | ui::kItemFocused);
    dialog.Command(332);
    EXPECT_TRUE(asked);
    EXPECT_EQ(flow.BoxTexts(), Texts{kWrong});
  });
  ExpectUntouchedAndUsable();
}

TEST_F(CardExchange, AnOwnNumberThatWasNotErasedIsNotShownAsErased) {
  flow.Open();
  flow.In(208, res::kCommandOwnNumbers, [&](ui::Dialog& dialog) {
    ui::ListView& numbers = *dialog.List(res::kOwnNumbersList);
    ASSERT_TRUE(flow.screen.RunUntil([&] { return numbers.ItemCount() == 4; }));
    Exchange();
    numbers.SetItemState(0, ui::kItemSelected, ui::kItemSelected);
    flow.screen.RunPending();
    flow.screen.ScriptBox(ui::BoxAnswer::kYes);
    dialog.Command(334);
    ASSERT_EQ(flow.BoxTexts().size(), 2u);
    EXPECT_EQ(flow.BoxTexts()[1], kWrong);
    EXPECT_NE(numbers.ItemText(0, 2), u"");
  });
  ExpectUntouchedAndUsable();
}

}  // namespace
}  // namespace kelpin::editor
