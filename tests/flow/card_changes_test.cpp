#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "app/delete_entries.h"
#include "tests/card/sim_client.h"
#include "tests/card/soft_card.h"
#include "tests/flow/program_on_card.h"

// The program on a software card that others use too: it is written to, reset, taken out and
// exchanged while the list is shown.
namespace kelpin::app {
namespace {

using device::card::SimClient;
using device::card::SoftCard;
using platform::SimResult;
using Texts = std::vector<std::u16string>;

class CardChangesTest : public testing::Test {
 protected:
  CardChangesTest() {
    program.wiring.fillCommands = [this, fill = program.wiring.fillCommands](
                                      AppState& state, Commands& commands, ListLoader& list) {
      fill(state, commands, list);
      RegisterDelete(state, commands, list, [this](std::uint32_t index, ExtendedField field) {
        if (field == ExtendedField::kNumber2 && onDeleted) onDeleted(index);
      });
    };
  }

  void DeleteAll() {
    program.screen.SetDefaultAnswers(ui::BoxAnswer::kOk, ui::BoxAnswer::kYes);
    program.state.dialog->Command(res::kCommandSelectAll);
    program.state.dialog->Command(res::kCommandDelete);
  }
  // Serves the screen until the list is this.
  bool Becomes(const Texts& rows) {
    return program.screen.RunUntil([&] { return program.Rows() == rows; }) && program.Settle();
  }

  // What another program does through a session of its own.
  void Write(std::uint32_t index, std::u16string_view name, std::u16string_view number) {
    ASSERT_EQ(other.Write(index, name, number), SimResult::kOk);
  }
  void WriteThree() {
    Write(1, u"Anna", u"111");
    Write(2, u"Bert", u"222");
    Write(3, u"Cem", u"333");
  }
  std::uint32_t UsedOnTheCard() {
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    EXPECT_EQ(other.Status(used, total), SimResult::kOk);
    return used;
  }

  SoftCard card{"usim-empty"};
  test::ProgramOnCard program{card.Channel()};
  SimClient other{program.service};
  std::function<void(std::uint32_t index)> onDeleted;
};

TEST_F(CardChangesTest, WhatAnotherProgramWritesAndDeletesIsListed) {
  WriteThree();
  program.Open();
  EXPECT_EQ(program.Rows(), (Texts{u"1|Anna|111", u"2|Bert|222", u"3|Cem|333"}));
  Write(5, u"Bea", u"555");
  EXPECT_TRUE(Becomes({u"1|Anna|111", u"5|Bea|555", u"2|Bert|222", u"3|Cem|333"}));
  Write(2, u"Bertha", u"2222");
  EXPECT_TRUE(Becomes({u"1|Anna|111", u"5|Bea|555", u"2|Bertha|2222", u"3|Cem|333"}));
  ASSERT_EQ(other.Delete(1), SimResult::kOk);
  EXPECT_TRUE(Becomes({u"5|Bea|555", u"2|Bertha|2222", u"3|Cem|333"}));
  EXPECT_TRUE(program.screen.Boxes().empty());
}

TEST_F(CardChangesTest, ADeletionReachesTheCardAndItsOwnNoticesAreNotQueued) {
  WriteThree();
  program.Open();
  DeleteAll();
  EXPECT_TRUE(Becomes({}));
  EXPECT_EQ(UsedOnTheCard(), 0u);
  EXPECT_EQ(program.state.simPhonebook.DeletedCount(), 0u);
  EXPECT_EQ(program.screen.Boxes().size(), 1u);
}

TEST_F(CardChangesTest, ACardThatIsResetBehindTheProgramIsReadAgain) {
  WriteThree();
  program.Open();
  const std::uint64_t version = program.List().RowsVersion();
  ASSERT_TRUE(card.Channel().Reset());
  EXPECT_TRUE(program.screen.RunUntil([&] { return program.List().RowsVersion() != version; }));
  EXPECT_TRUE(Becomes({u"1|Anna|111", u"2|Bert|222", u"3|Cem|333"}));
  EXPECT_TRUE(program.screen.Boxes().empty());
}

TEST_F(CardChangesTest, ACardThatIsExchangedIsListed) {
  WriteThree();
  program.Open();
  SoftCard another("usim");
  const auto before = another.Image();
  const std::string file = another.File() + ".copy";
  std::ofstream(file) << before.dump(1);
  std::string error;
  ASSERT_TRUE(card.Channel().Insert(file, error)) << error;
  ASSERT_TRUE(program.screen.RunUntil([this] { return program.List().ItemCount() > 3; }));
  ASSERT_TRUE(program.Settle());
  EXPECT_EQ(static_cast<std::uint32_t>(program.List().ItemCount()), UsedOnTheCard());
}

TEST_F(CardChangesTest, NothingIsDeletedFromACardThatWasExchangedMeanwhile) {
  WriteThree();
  program.Open();
  SoftCard another("usim");
  const std::string file = another.File() + ".copy";
  std::ofstream(file) << another.Image().dump(1);
  onDeleted = [&](std::uint32_t index) {
    std::string error;
    if (index != 1) return;
    EXPECT_TRUE(card.Channel().Insert(file, error)) << error;
  };
  DeleteAll();
  ASSERT_TRUE(program.screen.RunUntil([this] { return program.List().ItemCount() > 3; }));
  ASSERT_TRUE(program.Settle());
  // The question, and why it ended: the card refused, or the list was to be read again.
  EXPECT_EQ(program.screen.Boxes().size(), 2u);
  EXPECT_EQ(nlohmann::json::parse(std::ifstream(file))["mf"], another.Image()["mf"]);
  EXPECT_EQ(program.state.simPhonebook.CollectDeletions(), 1u);
  EXPECT_EQ(card.Image()["format"], "kelpin card image 1");  // the old card is whole
}

TEST_F(CardChangesTest, ACardThatIsTakenOutStopsADeletion) {
  WriteThree();
  program.Open();
  onDeleted = [&](std::uint32_t index) {
    if (index == 2) card.Channel().Remove();
  };
  DeleteAll();
  ASSERT_TRUE(program.screen.RunUntil([this] { return program.screen.Boxes().size() == 2; }));
  ASSERT_TRUE(program.Settle());
  EXPECT_EQ(program.screen.Boxes()[1].style, ui::kBoxError);
  EXPECT_EQ(program.Rows(), Texts{u"3|Cem|333"});
  EXPECT_EQ(program.List().SelectedCount(), 1);
  card.Channel().Insert();
  ASSERT_TRUE(program.screen.RunUntil(
      [this] { return program.List().SelectedCount() == 1 && program.Rows().size() == 1; }));
  ASSERT_TRUE(program.Settle());
  EXPECT_EQ(UsedOnTheCard(), 1u);
}

}  // namespace
}  // namespace kelpin::app
