#include "app/card_unlock.h"

#include <string>
#include <vector>

#include "app/card_opening.h"
#include "res/card_dialogs.h"
#include "tests/app/app_fixture.h"
#include "tests/support/fake_card_lock.h"

namespace kelpin::app {
namespace {

using platform::SimResult;
using Codes = std::vector<std::string>;

// A card that fails every reading while its lock is shut, as the device's does.
class CardUnlockTest : public AppTest {
 protected:
  CardUnlockTest() {
    device.ports.cardLock = &lock;
    lock.OnTaken([this] { device.sim.SetResult("SimGetPhonebookStatus", SimResult::kOk); });
  }

  void PutIn(const test::FakeCardLock::Card& card) {
    lock.PutIn(card);
    device.sim.SetResult("SimGetPhonebookStatus",
                         card.tries == 0 ? SimResult::kPukRequired : SimResult::kPinRequired);
  }
  static test::FakeCardLock::Card WithTries(int tries, int unblockTries = 10) {
    test::FakeCardLock::Card card;
    card.tries = tries;
    card.unblockTries = unblockTries;
    return card;
  }

  // The next PIN dialog: what it says is kept, then this is typed and sent.
  void TypePin(std::u16string_view pin) {
    device.screen.ScriptDialog(res::kDialogCardPin, [this, pin](ui::Dialog& dialog) {
      Look(dialog);
      dialog.EditByUser(res::kCardPin, pin, static_cast<int>(pin.size()));
      dialog.PressSoftKey(0);
    });
  }
  void CancelPin() {
    device.screen.ScriptDialog(res::kDialogCardPin, [this](ui::Dialog& dialog) {
      Look(dialog);
      dialog.PressSoftKey(1);
    });
  }
  void TypePuk(std::u16string_view puk, std::u16string_view pin) {
    device.screen.ScriptDialog(res::kDialogCardPuk, [this, puk, pin](ui::Dialog& dialog) {
      Look(dialog);
      dialog.EditByUser(res::kCardPuk, puk, 0);
      dialog.EditByUser(res::kNewPin, pin, 0);
      dialog.EditByUser(res::kNewPinAgain, pin, 0);
      dialog.PressSoftKey(0);
    });
  }
  void CancelPuk() {
    device.screen.ScriptDialog(res::kDialogCardPuk, [this](ui::Dialog& dialog) {
      Look(dialog);
      dialog.KeyDown({ui::Key::kEscape});
    });
  }
  void Look(ui::Dialog& dialog) {
    texts.push_back(dialog.Text(res::kCardCodeText));
    problems.push_back(dialog.Shown(res::kCardCodeProblem) ? dialog.Text(res::kCardCodeProblem)
                                                           : u"");
  }

  bool Unlock() { return UnlockCard(lock, device.screen, 0); }

  test::FakeCardLock lock;
  std::vector<std::u16string> texts;     // of the dialogs, in order
  std::vector<std::u16string> problems;  // the same; empty where none was shown
};

TEST_F(CardUnlockTest, TheRightPinIsSentOnceAndNothingElseIsAsked) {
  PutIn(WithTries(3));
  TypePin(u"1234");
  EXPECT_TRUE(Unlock());
  EXPECT_EQ(lock.Sent(), Codes{"1234"});
  EXPECT_EQ(texts, std::vector<std::u16string>{u"Type the PIN of the card. 3 tries left."});
  EXPECT_EQ(problems, std::vector<std::u16string>{u""});
  EXPECT_TRUE(Boxes().empty());
  EXPECT_EQ(lock.CodesExpected(), 1);
}

TEST_F(CardUnlockTest, AWrongPinIsToldWithTheTriesLeftAndAskedAnew) {
  PutIn(WithTries(3));
  TypePin(u"4321");
  TypePin(u"1234");
  EXPECT_TRUE(Unlock());
  EXPECT_EQ(lock.Sent(), (Codes{"4321", "1234"}));
  EXPECT_EQ(texts[1], u"Type the PIN of the card. 2 tries left.");
  EXPECT_EQ(problems[1], u"Wrong PIN.");
}

TEST_F(CardUnlockTest, ARefusedPinIsNotSentAgain) {
  PutIn(WithTries(3));
  TypePin(u"4321");
  TypePin(u"4321");
  CancelPin();
  EXPECT_FALSE(Unlock());
  EXPECT_EQ(lock.Sent(), Codes{"4321"});
  EXPECT_EQ(lock.Now().tries, 2);
  EXPECT_EQ(problems[2], u"The card refused this PIN before. It was not sent again.");
}

TEST_F(CardUnlockTest, ACardWithoutAPinAsksForNothing) {
  test::FakeCardLock::Card card;
  card.enabled = false;
  lock.PutIn(card);
  EXPECT_TRUE(Unlock());
  EXPECT_EQ(lock.CodesExpected(), 0);
}

TEST_F(CardUnlockTest, ACardThatDoesNotAnswerIsLeftToWhoReadsIt) {
  lock.SetFailure(SimResult::kNotInserted);
  EXPECT_TRUE(Unlock());
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(CardUnlockTest, TheLastTryIsAQuestionThatNamesTheConsequence) {
  PutIn(WithTries(1));
  TypePin(u"1234");
  CancelPin();
  device.screen.ScriptBox(ui::BoxAnswer::kNo);
  EXPECT_FALSE(Unlock());
  EXPECT_TRUE(lock.Sent().empty());
  EXPECT_EQ(texts[0],
            u"Type the PIN of the card. 1 try left. After one more wrong PIN the card is blocked, "
            u"and only its PUK opens it again.");
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].text,
            u"This is the last try. If the PIN is wrong, the card is blocked and only its PUK "
            u"opens it again.\nSend it?");
  EXPECT_EQ(Boxes()[0].style, ui::kBoxQuestion);
}

TEST_F(CardUnlockTest, TheLastTryIsRiskedByYes) {
  PutIn(WithTries(1));
  TypePin(u"1234");
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  EXPECT_TRUE(Unlock());
  EXPECT_EQ(lock.Sent(), Codes{"1234"});
}

TEST_F(CardUnlockTest, AWrongLastTryLeadsToThePuk) {
  PutIn(WithTries(1));
  TypePin(u"4321");
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  TypePuk(u"12345678", u"2468");
  EXPECT_TRUE(Unlock());
  EXPECT_EQ(lock.Sent(), (Codes{"4321", "12345678"}));
  EXPECT_EQ(lock.Now().pin, "2468");
  EXPECT_EQ(texts[1],
            u"Type the PUK, 8 digits from the papers of the card, and choose a new PIN. 10 tries "
            u"left.");
}

TEST_F(CardUnlockTest, AWrongPukIsToldAndNotSentAgain) {
  PutIn(WithTries(0));
  TypePuk(u"87654321", u"2468");
  TypePuk(u"87654321", u"2468");
  CancelPuk();
  EXPECT_FALSE(Unlock());
  EXPECT_EQ(lock.Sent(), Codes{"87654321"});
  EXPECT_EQ(lock.Now().unblockTries, 9);
  EXPECT_EQ(problems,
            (std::vector<std::u16string>{
                u"", u"Wrong PUK.", u"The card refused this PUK before. It was not sent again."}));
}

TEST_F(CardUnlockTest, TheLastTryOfThePukIsAQuestionToo) {
  PutIn(WithTries(0, 1));
  TypePuk(u"87654321", u"2468");
  CancelPuk();
  EXPECT_FALSE(Unlock());  // No is the answer of who does not say Yes
  EXPECT_TRUE(lock.Sent().empty());
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].text,
            u"This is the last try. If the PUK is wrong, the card can never be used "
            u"again.\nSend it?");
}

TEST_F(CardUnlockTest, ACardWithoutTriesOfThePukIsNotAskedFor) {
  PutIn(WithTries(0, 0));
  EXPECT_FALSE(Unlock());
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].style, ui::kBoxError);
  EXPECT_EQ(lock.CodesExpected(), 0);
}

TEST_F(CardUnlockTest, OnlyDigitsOfTheRightNumberLeaveTheDialog) {
  PutIn(WithTries(3));
  device.screen.ScriptDialog(res::kDialogCardPin, [](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Focus(), res::kCardPin);
    EXPECT_EQ(dialog.Control(res::kCardPin)->style, ui::kStyleSecret);
    EXPECT_EQ(dialog.Control(res::kCardPin)->inputMode, ui::InputMode::kNumbers);
    dialog.EditByUser(res::kCardPin, u"1a2 ", 4);
    EXPECT_EQ(dialog.Text(res::kCardPin), u"12");
    dialog.EditByUser(res::kCardPin, u"123", 3);
    dialog.KeyDown({ui::Key::kEnter});
    EXPECT_FALSE(dialog.Ended());
    EXPECT_EQ(dialog.Text(res::kCardCodeProblem), u"A PIN has 4 to 8 digits.");
    dialog.EditByUser(res::kCardPin, u"1239999999", 10);
    EXPECT_EQ(dialog.Text(res::kCardPin).size(), 8u);
    dialog.EditByUser(res::kCardPin, u"1234", 4);
    dialog.KeyDown({ui::Key::kEnter});
    EXPECT_TRUE(dialog.Ended());
    EXPECT_EQ(dialog.Text(res::kCardPin), u"");
  });
  EXPECT_TRUE(Unlock());
  EXPECT_EQ(lock.Sent(), Codes{"1234"});
}

TEST_F(CardUnlockTest, ANewPinIsTypedTwice) {
  PutIn(WithTries(0));
  device.screen.ScriptDialog(res::kDialogCardPuk, [](ui::Dialog& dialog) {
    const auto type = [&](std::u16string_view puk, std::u16string_view pin,
                          std::u16string_view again) {
      dialog.EditByUser(res::kCardPuk, puk, 0);
      dialog.EditByUser(res::kNewPin, pin, 0);
      dialog.EditByUser(res::kNewPinAgain, again, 0);
      dialog.PressSoftKey(0);
      return dialog.Text(res::kCardCodeProblem);
    };
    EXPECT_EQ(type(u"1234567", u"2468", u"2468"), u"A PUK has 8 digits.");
    EXPECT_EQ(dialog.Focus(), res::kCardPuk);
    EXPECT_EQ(type(u"12345678", u"246", u"246"), u"A PIN has 4 to 8 digits.");
    EXPECT_EQ(dialog.Focus(), res::kNewPin);
    EXPECT_EQ(type(u"12345678", u"2468", u"2469"),
              u"The two new PINs are not the same. Type the new PIN twice.");
    EXPECT_EQ(dialog.Focus(), res::kNewPinAgain);
    EXPECT_FALSE(dialog.Ended());
    type(u"12345678", u"2468", u"2468");
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_TRUE(Unlock());
  EXPECT_EQ(lock.Now().pin, "2468");
}

TEST_F(CardUnlockTest, AGivenCodeIsSentOnceAndNeverWithTheLastTry) {
  SecretCode code;
  ASSERT_TRUE(code.Set<char>("4321", 4));
  PutIn(WithTries(3));
  UnlockCardWith(lock, code);
  EXPECT_EQ(lock.Sent(), Codes{"4321"});
  EXPECT_TRUE(code.Empty());
  ASSERT_TRUE(code.Set<char>("1234", 4));
  PutIn(WithTries(1));
  UnlockCardWith(lock, code);
  EXPECT_EQ(lock.Sent(), Codes{"4321"});
  EXPECT_TRUE(code.Empty());
}

TEST_F(CardUnlockTest, ARefreshAsksAndReadsTheOpenCard) {
  PutThree();
  Open();
  PutIn(WithTries(3));
  TypePin(u"1234");
  Refresh();
  EXPECT_EQ(Rows().size(), 3u);
  EXPECT_TRUE(Boxes().empty());
  ExpectAtRest();
}

TEST_F(CardUnlockTest, AnUnwillingUserReadsTheUsualMessageOnce) {
  PutThree();
  Open();
  PutIn(WithTries(3));
  CancelPin();
  Refresh();
  EXPECT_EQ(BoxTexts(),
            std::vector<std::u16string>{u"SIM PIN is required to perform this operation."});
  // Asked for by the user, asked again.
  TypePin(u"1234");
  Refresh();
  EXPECT_EQ(Boxes().size(), 1u);
}

TEST_F(CardUnlockTest, ACardThatOnlyTellsOfChangesIsNotAskedForAgainButOneThatWasReset) {
  PutThree();
  Open();
  PutIn(WithTries(3));
  CancelPin();
  Refresh();
  state->cardChanged = true;  // as its watcher does
  Refresh();                  // a dialog that no script waits for would fail
  EXPECT_EQ(texts.size(), 1u);
  lock.Reset();
  state->cardChanged = true;
  TypePin(u"1234");
  Refresh();
  EXPECT_EQ(texts.size(), 2u);
  EXPECT_EQ(lock.Sent(), Codes{"1234"});
}

}  // namespace
}  // namespace kelpin::app
