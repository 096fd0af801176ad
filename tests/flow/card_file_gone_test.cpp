#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

TEST(CardFileGone, IsToldByADeletionAndTheEntryStays) {
  EntryFlow flow{"usim"};
  flow.Open();
  ui::ListView& list = *flow.state.dialog->List(res::kMainList);
  const int rows = list.ItemCount();
  const std::string file = flow.card.File();
  std::filesystem::rename(file, file + ".away");
  flow.screen.SetDefaultAnswers(ui::BoxAnswer::kOk, ui::BoxAnswer::kYes);
  flow.state.dialog->Command(res::kCommandDelete);
  ASSERT_TRUE(flow.screen.RunUntil([&] { return flow.BoxTexts().size() > 1; }));
  ASSERT_TRUE(flow.Settle());
  const Texts told = flow.BoxTexts();
  ASSERT_EQ(told.size(), 2u);  // the question, and why nothing came of it
  EXPECT_TRUE(told[1].starts_with(Wide(file) + u": the card file cannot be read: it is not there"));

  std::filesystem::rename(file + ".away", file);
  flow.state.dialog->Command(res::kCommandRefresh);
  ASSERT_TRUE(flow.screen.RunUntil([&] { return list.ItemCount() == rows; }));
  ASSERT_TRUE(flow.Settle());
  EXPECT_EQ(flow.BoxTexts().size(), 2u);
}

}  // namespace
}  // namespace kelpin::editor
