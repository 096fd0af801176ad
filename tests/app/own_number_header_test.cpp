#include "app/own_number_header.h"

#include "tests/app/app_fixture.h"

namespace kelpin::app {
namespace {

using platform::SimResult;

// Number parts by hand: length byte (BCD bytes + 1), TON/NPI, digits with the low nibble first.
const std::vector<std::uint8_t> kEmpty = {};
const std::vector<std::uint8_t> kFirst = {0x07, 0x91, 0x94, 0x71, 0x21, 0x43, 0x65, 0x87};
constexpr std::u16string_view kFirstNumber = u"+491712345678";
const std::vector<std::uint8_t> kSecond = {0x04, 0x81, 0x10, 0x32, 0xF4};
constexpr std::u16string_view kSecondNumber = u"01234";

class OwnNumberHeaderTest : public AppTest {
 protected:
  // The main dialog, without the load that asks for the header by itself.
  void SetUp() override {
    ASSERT_EQ(Start(), 1);
    device.screen.RunPending();
  }
  int Update() { return UpdateOwnNumberHeader(*state); }
  void FailCommand(std::uint32_t simCommand) {
    device.radio.SetResponder([simCommand](const test::FakeRadio::Command& command) {
      std::optional<test::FakeRadio::Answer> answer;
      if (command.simCommand == simCommand) {
        answer.emplace().code = platform::kRilResultError;
      }
      return answer;
    });
  }
  std::size_t RadioCommands() { return device.radio.Commands().size(); }
};

TEST_F(OwnNumberHeaderTest, TheLabelStandsAloneUntilTheNumberIsKnown) {
  EXPECT_EQ(Header(), u"My No.");
}

TEST_F(OwnNumberHeaderTest, TheFirstNumberIsShown) {
  SetOwnNumbers({kFirst, kSecond});
  EXPECT_EQ(Update(), 1);
  EXPECT_EQ(Header(), u"My No. +491712345678");
  EXPECT_FALSE(state->headerUpdating);
  EXPECT_EQ(RadioCommands(), 2u);  // the file's measures and its first record
}

TEST_F(OwnNumberHeaderTest, AnEmptyRecordIsPassedOver) {
  SetOwnNumbers({kEmpty, kSecond});
  EXPECT_EQ(Update(), 1);
  EXPECT_EQ(Header(), u"My No. 01234");
}

TEST_F(OwnNumberHeaderTest, WithoutRecordsTheNumberIsEmpty) {
  SetOwnNumbers({});
  EXPECT_EQ(Update(), 1);
  EXPECT_EQ(Header(), u"My No. ");
  EXPECT_EQ(RadioCommands(), 1u);
}

TEST_F(OwnNumberHeaderTest, WhenEveryRecordIsEmptyAllAreRead) {
  SetOwnNumbers({kEmpty, kEmpty, kEmpty});
  EXPECT_EQ(Update(), 1);
  EXPECT_EQ(Header(), u"My No. ");
  EXPECT_EQ(RadioCommands(), 4u);
}

TEST_F(OwnNumberHeaderTest, ItFollowsTheCardAtEveryUpdate) {
  SetOwnNumbers({kFirst});
  EXPECT_EQ(Update(), 1);
  SetOwnNumbers({kSecond});
  EXPECT_EQ(Update(), 1);
  EXPECT_EQ(Header(), u"My No. 01234");
}

TEST_F(OwnNumberHeaderTest, AnUpdateUnderWayIsNotDoubled) {
  SetOwnNumbers({kFirst});
  state->headerUpdating = true;
  EXPECT_EQ(Update(), 1);
  EXPECT_EQ(RadioCommands(), 0u);
  EXPECT_EQ(Header(), u"My No.");
}

TEST_F(OwnNumberHeaderTest, AFileThatCannotBeAskedForShowsTheCardsCodeAndEndsAllUpdates) {
  SetOwnNumbers({kFirst});
  FailCommand(platform::kRilSimGetResponse);
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
  EXPECT_EQ(Update(), 0);
  EXPECT_EQ(BoxTexts(), (std::vector<std::u16string>{u"SIM is busy."}));
  EXPECT_EQ(Boxes()[0].owner, state->mainDialog);
  EXPECT_EQ(Header(), u"My No.");
  EXPECT_TRUE(state->headerUpdating);

  // The card is well again, and its own-number event comes: the header keeps its text.
  device.radio.SetResponder(nullptr);
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kOk);
  const std::size_t asked = RadioCommands();
  EXPECT_EQ(Update(), 1);
  EXPECT_EQ(RadioCommands(), asked);
  EXPECT_EQ(Header(), u"My No.");
  EXPECT_EQ(Boxes().size(), 1u);
}

TEST_F(OwnNumberHeaderTest, AFailureOfTheRadioAloneIsNotTold) {
  FailCommand(platform::kRilSimGetResponse);
  const std::size_t asked = Calls("SimGetPhonebookStatus");
  EXPECT_EQ(Update(), 0);
  EXPECT_EQ(Calls("SimGetPhonebookStatus"), asked + 1);
  EXPECT_TRUE(Boxes().empty());
  EXPECT_TRUE(state->headerUpdating);
}

TEST_F(OwnNumberHeaderTest, ARecordThatCannotBeReadEndsAllUpdatesToo) {
  SetOwnNumbers({kEmpty, kFirst});
  FailCommand(platform::kRilSimReadRecord);
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimFailure);
  EXPECT_EQ(Update(), 0);
  EXPECT_EQ(BoxTexts(), (std::vector<std::u16string>{u"SIM failure was detected. "}));
  EXPECT_EQ(Header(), u"My No.");
  EXPECT_TRUE(state->headerUpdating);
  EXPECT_EQ(RadioCommands(), 2u);
}

TEST_F(OwnNumberHeaderTest, NobodyIsToldOfAFailureWhileTheProgramEnds) {
  FailCommand(platform::kRilSimGetResponse);
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimFailure);
  state->closing = true;
  EXPECT_EQ(Update(), 0);
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(OwnNumberHeaderTest, TheFirstLoadAsksForTheNumber) {
  SetOwnNumbers({kFirst});
  Load();
  EXPECT_EQ(Header(), u"My No. " + std::u16string(kFirstNumber));
  SetOwnNumbers({kSecond});
  Refresh();
  EXPECT_EQ(Header(), u"My No. " + std::u16string(kSecondNumber));
}

}  // namespace
}  // namespace kelpin::app
