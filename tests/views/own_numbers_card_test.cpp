#include <atomic>

#include "tests/views/own_numbers_fixture.h"
#include "views/own_number_reader.h"

// Own numbers on a card that does not confirm what it was told, and names that the settings have.
namespace kelpin::views {
namespace {

using platform::SimResult;
using testing::ElementsAre;

constexpr char16_t kNotTaken[] =
    u"The card did not take the change; the list shows what it holds.\n\nTry again. A card that "
    u"refuses every time does not allow its own numbers to be changed.";
constexpr char16_t kNotConfirmed[] =
    u"The card did not confirm the change, and what it holds could not be read.\n\nPress Refresh "
    u"and compare.";

class OwnNumbersCardTest : public OwnNumbersTest {
 protected:
  enum class Update { kRefused, kDoneWithoutAWord, kSilentFromThenOn };

  void SetUp() override { SetRecords(kFile, {Record("Home", kHome), Record("Work", kWork)}); }

  // What becomes of the first update; the card's status is this from then on.
  void NextUpdate(Update update, SimResult status) {
    device.radio.SetResponder([=, this](const test::FakeRadio::Command& command) {
      std::optional<test::FakeRadio::Answer> answer;
      const bool first = !updated_ && command.simCommand == platform::kRilSimUpdateRecord;
      if (first) {
        updated_ = true;
        device.sim.SetResult("SimGetPhonebookStatus", status);
        if (update == Update::kDoneWithoutAWord) {
          SetRecords(kFile, {Record("New", kNew), Record("Work", kWork)});
        }
      }
      if (first || (updated_ && update == Update::kSilentFromThenOn)) {
        answer.emplace().code = platform::kRilResultError;
      }
      return answer;
    });
  }
  // Saves "New", 77 in the first row; whether the editor closed by itself.
  bool SaveNew(ui::Dialog& dialog) {
    bool closed = false;
    InEditor(dialog, [&](ui::Dialog& editor) {
      Save(editor, u"New", u"77");
      closed = editor.Ended();
    });
    return closed;
  }

  const std::vector<std::uint8_t> kHome = {0x03, 0x81, 0x11, 0xF1};  // 111
  const std::vector<std::uint8_t> kWork = {0x02, 0x81, 0x22};        // 22
  const std::vector<std::uint8_t> kNew = {0x02, 0x81, 0x77};         // 77

 private:
  std::atomic<bool> updated_ = false;  // the update has come
};

TEST_F(OwnNumbersCardTest, AChangeThatAReadyCardRefusedIsTakenBackFromTheListAndTold) {
  OpenMain();
  ShowList(2, [&](ui::Dialog& dialog, ui::ListView& list) {
    NextUpdate(Update::kRefused, SimResult::kOk);
    EXPECT_TRUE(SaveNew(dialog));
    EXPECT_EQ(list.ItemText(0, 1), u"New");  // as if written, until the card is asked
    EXPECT_TRUE(Boxes().empty());
    device.screen.RunPending();
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Home|111", u"2|Work|22"));
    ASSERT_EQ(Boxes().size(), 1u);
    EXPECT_EQ(Boxes()[0].text, kNotTaken);
    EXPECT_EQ(Boxes()[0].caption, u"Error");
    EXPECT_EQ(Boxes()[0].style, ui::kBoxError);
    EXPECT_FALSE(device.screen.WaitCursor());
  });
}

TEST_F(OwnNumbersCardTest, AnErasureThatAReadyCardRefusedIsTakenBackToo) {
  OpenMain();
  ShowList(2, [&](ui::Dialog& dialog, ui::ListView& list) {
    NextUpdate(Update::kRefused, SimResult::kOk);
    device.screen.ScriptBox(ui::BoxAnswer::kYes);
    dialog.Command(334);
    EXPECT_EQ(list.ItemText(0, 1), u"");
    device.screen.RunPending();
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Home|111", u"2|Work|22"));
    ASSERT_EQ(Boxes().size(), 2u);
    EXPECT_EQ(Boxes()[1].text, kNotTaken);
  });
}

TEST_F(OwnNumbersCardTest, AChangeThatArrivedIsShownWithoutAWordThoughItsAnswerWasLost) {
  OpenMain();
  ShowList(2, [&](ui::Dialog& dialog, ui::ListView& list) {
    NextUpdate(Update::kDoneWithoutAWord, SimResult::kOk);
    EXPECT_TRUE(SaveNew(dialog));
    device.screen.RunPending();
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|New|77", u"2|Work|22"));
  });
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(OwnNumbersCardTest, AfterAnErrorThatWasShownTheListShowsWhatTheCardHolds) {
  OpenMain();
  ShowList(2, [&](ui::Dialog& dialog, ui::ListView& list) {
    NextUpdate(Update::kDoneWithoutAWord, SimResult::kSimBusy);
    EXPECT_FALSE(SaveNew(dialog));
    device.screen.RunPending();
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|New|77", u"2|Work|22"));
    EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM is busy."));  // told once
  });
}

TEST_F(OwnNumbersCardTest, AChangeThatCannotBeReadBackIsToldAsUnconfirmed) {
  OpenMain();
  ShowList(2, [&](ui::Dialog& dialog, ui::ListView&) {
    NextUpdate(Update::kSilentFromThenOn, SimResult::kOk);
    EXPECT_TRUE(SaveNew(dialog));
    device.screen.RunPending();
    EXPECT_THAT(BoxTexts(), ElementsAre(kNotConfirmed));
    EXPECT_FALSE(device.screen.WaitCursor());
  });
}

TEST_F(OwnNumbersCardTest, AnErasedRecordTakesTheSettingsNameOnceItIsReadAgain) {
  device.registry.PutString(platform::RegistryRoot::kLocalMachine, kProgramKey, u"OwnNo_Record1",
                            u"Mine");
  OpenMain();
  ShowList(2, [&](ui::Dialog& dialog, ui::ListView& list) {
    device.screen.ScriptBox(ui::BoxAnswer::kYes);
    dialog.Command(334);
    device.screen.RunPending();
    EXPECT_EQ(list.ItemText(0, 1), u"");
    dialog.Command(335);
    ASSERT_TRUE(Await([&] { return list.ItemText(0, 1) == u"Mine"; }));
    EXPECT_EQ(list.ItemText(0, 2), u"");
  });
  EXPECT_EQ(Calls("SetValue"), 0u);
}

TEST_F(OwnNumbersCardTest, ANameFromTheSettingsIsKnownAsSuch) {
  const std::vector<std::uint8_t> empty;
  SetRecords(kFile, {Record("", empty), Record("Card", empty)});
  for (const std::u16string_view name : {u"OwnNo_Record1", u"OwnNo_Record2"}) {
    device.registry.PutString(platform::RegistryRoot::kLocalMachine, kProgramKey, name, u"Set");
  }
  OpenMain();
  ShowList(2, [&](ui::Dialog& dialog, ui::ListView& list) {
    const auto reader = std::make_shared<OwnNumberReader>(*state);
    reader->Open(dialog.shared_from_this());
    EXPECT_FALSE(reader->NameFromSettings(1));
    ASSERT_EQ(reader->StartFill(), 1);
    ASSERT_TRUE(Await([&] { return list.ItemCount() == 4 && !device.screen.WaitCursor(); }));
    EXPECT_TRUE(reader->NameFromSettings(1));
    EXPECT_FALSE(reader->NameFromSettings(2));  // the card has one
    EXPECT_FALSE(reader->NameFromSettings(5));
    reader->Close();
  });
}

TEST_F(OwnNumbersCardTest, AListThatIsOnlyLookedAtClosesWithOkOnASmartphoneToo) {
  SetSwitch(u"ReadOnly_OwnNumber", 1);
  OpenSmartphoneMain();
  for (const int command : {1, 2, 339}) {
    ShowList(2, [&](ui::Dialog& dialog, ui::ListView&) {
      dialog.Command(command);
      EXPECT_TRUE(dialog.Ended()) << command;
      EXPECT_EQ(dialog.Result(), 16);
    });
  }
}

}  // namespace
}  // namespace kelpin::views
