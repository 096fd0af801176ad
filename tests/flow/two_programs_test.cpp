#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "platform/mutex.h"
#include "tests/card/radio_client.h"
#include "tests/card/shared_channel.h"
#include "tests/card/sim_client.h"
#include "tests/flow/entry_editor_flow.h"

// Another program writes to the card, unnoticed, between our look at an entry and our change of it.
namespace kelpin::editor {
namespace {

using device::card::RadioClient;
using device::card::SharedChannel;
using device::card::SimClient;
using platform::SimResult;

constexpr char16_t kReadAgain[] =
    u"Another program changed this entry on the card meanwhile, so it was not saved.\nRead it "
    u"again? What you typed is lost then.";

class TwoPrograms : public testing::Test {
 protected:
  void SetUp() override { flow.Open(); }
  void AnswerQuestions(ui::BoxAnswer answer) {
    flow.screen.SetDefaultAnswers(ui::BoxAnswer::kOk, answer);
  }
  // An entry as the card tells it now.
  std::u16string OnCard(std::uint32_t index) {
    service.ReadAfresh();
    return sim.Text(index);
  }

  EndingMutex turns;
  EntryFlow flow{"usim", nullptr, [this](device::card::CardChannel& card) {
                   return std::make_unique<SharedChannel>(card, SharedChannel::Hears::kTheCard,
                                                          &turns);
                 }};
  SharedChannel theirs{flow.card.Channel(), SharedChannel::Hears::kNothing, &turns};
  device::card::SimService service{theirs};
  SimClient sim{service};
  RadioClient radio{service};
};

// Locations 17 and 34 are the first free ones.
TEST_F(TwoPrograms, ANewEntryGoesToTheNextFreeLocation) {
  flow.InNew([&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kNewName, u"Mine");
    flow.Type(dialog, res::kNewNumber, u"1");
    ASSERT_EQ(sim.Write(17, u"Other", u"5"), SimResult::kOk);
    flow.Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_TRUE(flow.BoxTexts().empty());
  EXPECT_EQ(OnCard(17), u"Other|5");
  EXPECT_EQ(OnCard(34), u"Mine|1");
  // What the other program wrote comes into the list by itself.
  std::u16string row;
  EXPECT_TRUE(flow.screen.RunUntil([&] { return flow.RowsOf(17, &row) == 1; }));
  EXPECT_EQ(row, u"Other|5");
  EXPECT_TRUE(flow.Settle());
  EXPECT_EQ(flow.RowsOf(34, &row), 1);
  EXPECT_EQ(row, u"Mine|1");
}

TEST_F(TwoPrograms, AnEntryThatWasChangedIsNotWrittenOverUnasked) {
  AnswerQuestions(ui::BoxAnswer::kNo);
  flow.InEdit(1, [&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kEditName, u"Mine");
    ASSERT_EQ(sim.Write(1, u"Other", u"5"), SimResult::kOk);
    for (int press = 0; press < 2; ++press) {
      flow.Done(dialog);
      ASSERT_FALSE(dialog.Ended());
      EXPECT_EQ(dialog.Text(res::kEditName), u"Mine");
      EXPECT_EQ(OnCard(1), u"Other|5");
    }
  });
  EXPECT_EQ(flow.BoxTexts(), (Texts{kReadAgain, kReadAgain}));
  std::u16string row;
  EXPECT_TRUE(flow.screen.RunUntil([&] { return flow.RowsOf(1, &row) == 1 && row == u"Other|5"; }));
}

TEST_F(TwoPrograms, AnEntryThatWasChangedIsReadAgainAndSaved) {
  AnswerQuestions(ui::BoxAnswer::kYes);
  flow.InEdit(1, [&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kEditName, u"Mine");
    ASSERT_EQ(sim.Write(1, u"Other", u"5"), SimResult::kOk);
    flow.Done(dialog);
    ASSERT_FALSE(dialog.Ended());
    EXPECT_EQ(dialog.Text(res::kEditName), u"Other");
    EXPECT_EQ(dialog.Text(res::kEditNumber), u"5");
    flow.Type(dialog, res::kEditName, u"Both");
    flow.Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(flow.BoxTexts(), Texts{kReadAgain});
  EXPECT_EQ(OnCard(1), u"Both|5");
}

// Entry 4 has e-mail record 1. The other program leaves with a reset, as most do, so that nothing
// is remembered of the card by the time of the save.
TEST_F(TwoPrograms, AnEmailThatWasChangedIsNotWrittenOver) {
  for (const bool reset : {false, true}) {
    SCOPED_TRACE(reset);
    const std::string written = reset ? "6F322E70" : "6F312E70";  // "o2.p", "o1.p"
    const std::u16string shown = reset ? u"o2.p" : u"o1.p";
    AnswerQuestions(ui::BoxAnswer::kYes);
    flow.InEdit(4, [&](ui::Dialog& dialog) {
      flow.Type(dialog, res::kEditEmail, u"mine.x");
      const auto record = device::card::Hex(EntryFlow::Padded(written, 40) + "0104");
      ASSERT_EQ(RadioClient::Status(radio.File(platform::kRilSimUpdateRecord, 2, 1, record)),
                0x9000);
      if (reset) {
        const std::uint32_t before = flow.service.Generation();
        while (!flow.card.Channel().Reset()) std::this_thread::yield();
        ASSERT_TRUE(flow.screen.RunUntil([&] { return flow.service.Generation() != before; }));
      }
      flow.Done(dialog);
      // A save that found out in the middle of it says so of the field; the next one asks.
      if (!dialog.Ended() && dialog.Text(res::kEditEmail) != shown) flow.Done(dialog);
      ASSERT_FALSE(dialog.Ended());
      EXPECT_EQ(flow.Record("4F50", 1).substr(0, 8), written);
    });
    EXPECT_TRUE(flow.Settle());
  }
}

TEST_F(TwoPrograms, AnEntryThatWasChangedIsNotDeleted) {
  AnswerQuestions(ui::BoxAnswer::kYes);
  ui::ListView& list = *flow.state.dialog->List(res::kMainList);
  list.SetItemState(-1, 0, ui::kItemSelected);
  const int row = app::FindListRow(flow.state, 1);
  ASSERT_GE(row, 0);
  list.SetItemState(row, ui::kItemSelected, ui::kItemSelected);
  ASSERT_EQ(sim.Write(1, u"Other", u"5"), SimResult::kOk);
  flow.state.dialog->Command(res::kCommandDelete);
  std::u16string text;
  EXPECT_TRUE(
      flow.screen.RunUntil([&] { return flow.RowsOf(1, &text) == 1 && text == u"Other|5"; }));
  EXPECT_TRUE(flow.Settle());
  EXPECT_EQ(OnCard(1), u"Other|5");
  ASSERT_EQ(flow.BoxTexts().size(), 2U);
  EXPECT_EQ(flow.BoxTexts()[1],
            u"0 of 1 entries are deleted. The card was changed meanwhile, so the others were left "
            u"on it and the list is read again.");
}

}  // namespace
}  // namespace kelpin::editor
