#include "app/readiness.h"

#include "app/list_turn.h"
#include "tests/app/app_fixture.h"

// What commands ask before they open anything.
namespace kelpin::app {
namespace {

using platform::SimResult;
using Texts = std::vector<std::u16string>;

class ReadinessTest : public AppTest {
 protected:
  void FillCard() {
    device.sim.SetCapacity(3);
    PutThree();
  }
};

TEST_F(ReadinessTest, ACardThatAnswersIsReadyAndItsFiguresAreNew) {
  PutThree();
  Open();
  device.sim.SetEntry(4, u"Dan", u"444");
  EXPECT_TRUE(CardIsReady(*state));
  EXPECT_EQ(state->simPhonebook.Used(), 4u);
  EXPECT_TRUE(LimitsAreKnown(*state));
  EXPECT_TRUE(MayAddEntry(*state));
  EXPECT_TRUE(MayEditEntry(*state));
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(ReadinessTest, ACardThatIsNotReadyIsToldOnce) {
  PutThree();
  Open();
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
  EXPECT_FALSE(CardIsReady(*state));
  EXPECT_FALSE(MayAddEntry(*state));
  EXPECT_FALSE(MayEditEntry(*state));
  EXPECT_EQ(BoxTexts(), (Texts{u"SIM is busy.", u"SIM is busy.", u"SIM is busy."}));
  EXPECT_EQ(Boxes()[0].owner, state->mainDialog);
}

TEST_F(ReadinessTest, LimitsThatAreNotKnownAreTold) {
  Open();
  device.sim.SetResult("SimGetDevCaps", SimResult::kSimBusy);
  EXPECT_FALSE(LimitsAreKnown(*state));
  EXPECT_EQ(BoxTexts(), Texts{u"SIM is busy."});
}

TEST_F(ReadinessTest, AFullCardTakesNoEntryWhereThatIsToBeKnownBefore) {
  SetSwitch(u"SIM_Full_Detect", 2);
  FillCard();
  Open();
  EXPECT_FALSE(MayAddEntry(*state));
  EXPECT_EQ(BoxTexts(), Texts{u"The SIM is full. Delete some SIM contacts and try again."});
  state->simPhonebook.MarkSlot(2, 0);
  EXPECT_TRUE(MayAddEntry(*state));
}

TEST_F(ReadinessTest, AFullCardIsLeftToTheEditorOtherwise) {
  FillCard();
  Open();
  EXPECT_TRUE(MayAddEntry(*state));
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(ReadinessTest, WithoutASelectionOrDuringALoadNothingIsEdited) {
  PutThree();
  Open();
  device.journal.Clear();
  ASSERT_TRUE(TakeList(*state));
  EXPECT_FALSE(MayEditEntry(*state));
  GiveListBack(*state);
  List().SetItemState(-1, 0, ui::kItemSelected);
  EXPECT_FALSE(MayEditEntry(*state));
  EXPECT_EQ(Calls("SimGetPhonebookStatus"), 0u);
  EXPECT_TRUE(Boxes().empty());
}

}  // namespace
}  // namespace kelpin::app
