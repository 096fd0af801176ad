#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "tests/flow/entry_editor_flow.h"

// The file of the card goes away under the program, and comes back.
namespace kelpin::editor {
namespace {

std::u16string Wide(const std::string& text) {
  return {text.begin(), text.end()};
}

TEST(CardFileGone, IsToldInOneBoxWithTheFilesName) {
  EntryFlow flow{"usim"};
  flow.Open();
  ui::ListView& list = *flow.state.dialog->List(res::kMainList);
  const int rows = list.ItemCount();
  ASSERT_GT(rows, 0);
  const std::string file = flow.card.File();
  std::filesystem::rename(file, file + ".away");

  flow.InEdit(1, [&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kEditName, u"Changed");
    flow.Done(dialog);
  });
  ASSERT_TRUE(flow.Settle());
  Texts told = flow.BoxTexts();
  ASSERT_EQ(told.size(), 1u);
  EXPECT_TRUE(told[0].starts_with(Wide(file) + u": the card file cannot be read: it is not there"));

  // Neither the own number nor the list can be read, which is told once.
  flow.state.dialog->Command(res::kCommandRefresh);
  ASSERT_TRUE(flow.screen.RunUntil([&] { return flow.BoxTexts().size() > 1; }));
  ASSERT_TRUE(flow.Settle());
  told = flow.BoxTexts();
  ASSERT_EQ(told.size(), 2u);
  EXPECT_EQ(told[1], told[0]);

  std::filesystem::rename(file + ".away", file);
  flow.state.dialog->Command(res::kCommandRefresh);
  ASSERT_TRUE(flow.screen.RunUntil([&] { return list.ItemCount() == rows; }));
  ASSERT_TRUE(flow.Settle());
  EXPECT_EQ(flow.BoxTexts().size(), 2u);
}

// Whatever is chosen while it is away.
TEST(CardFileGone, IsToldByEveryCommandThatNeedsTheCard) {
  EntryFlow flow{"usim"};
  flow.Open();
  ui::ListView& list = *flow.state.dialog->List(res::kMainList);
  list.SetItemState(0, ui::kItemSelected | ui::kItemFocused, ui::kItemSelected | ui::kItemFocused);
  const std::string file = flow.card.File();
  std::filesystem::rename(file, file + ".away");
  flow.screen.SetDefaultAnswers(ui::BoxAnswer::kOk, ui::BoxAnswer::kYes);
  for (const int command :
       {res::kCommandNew, res::kCommandEdit, res::kCommandDelete, res::kCommandContactsToSim,
        res::kCommandOwnNumbers, res::kCommandServiceNumbers, res::kCommandNumberNames,
        res::kCommandGroupNames, res::kCommandSimInformation}) {
    SCOPED_TRACE(command);
    const std::size_t before = flow.BoxTexts().size();
    flow.state.dialog->Command(command);
    const auto isTold = [&] {
      const Texts told = flow.BoxTexts();
      return std::any_of(told.begin() + static_cast<std::ptrdiff_t>(before), told.end(),
                         [&](const std::u16string& text) { return text.starts_with(Wide(file)); });
    };
    EXPECT_TRUE(flow.screen.RunUntil(isTold));
    ASSERT_TRUE(flow.Settle());
    for (const std::u16string& text : flow.BoxTexts()) {
      EXPECT_EQ(text.find(u"Radio"), std::u16string::npos);
    }
  }
  EXPECT_GT(list.ItemCount(), 0);
}

}  // namespace
}  // namespace kelpin::editor
