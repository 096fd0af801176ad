#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "app/card_opening.h"
#include "res/card_dialogs.h"
#include "tests/card/soft_card.h"
#include "tests/flow/program_on_card.h"

// The program on a software card that wants its PIN: from its opening to the list.
namespace kelpin::app {
namespace {

using device::card::SoftCard;

// PIN 1234, PUK 12345678.
void Lock(nlohmann::json& image, int tries) {
  image["pins"]["pin1"] = {
      {"code", "1234"}, {"puk", "12345678"}, {"enabled", true}, {"tries", tries}, {"pukTries", 10}};
}

class CardPinTest : public testing::Test {
 protected:
  void PutIn(int tries) {
    PutIn([tries](nlohmann::json& image) { Lock(image, tries); });
  }
  void PutIn(const device::card::ImageChange& change) {
    card = std::make_unique<SoftCard>("usim", change);
    card->Channel().SetTrace([this](std::string_view line) {
      const std::lock_guard lock(traceLock);
      trace += std::string(line) + "\n";
    });
    program = std::make_unique<test::ProgramOnCard>(card->Channel());
  }
  ~CardPinTest() override {
    program.reset();
    if (card != nullptr) card->Channel().SetTrace(nullptr);
  }

  // As the program's main does it: the card first, then the program.
  void Start(SecretCode* code = nullptr) {
    program->screen.ScriptWaitForEnd(res::kDialogOpeningCard);
    ASSERT_TRUE(OpenCard(program->ports, {.code = code, .giveUp = {}}));
    program->Open();
  }
  bool Await(const std::function<bool()>& done) { return program->screen.RunUntil(done); }
  void Type(std::u16string_view pin) {
    program->screen.ScriptDialog(res::kDialogCardPin, [this, pin](ui::Dialog& dialog) {
      ++asked;
      dialog.EditByUser(res::kCardPin, pin, 0);
      dialog.PressSoftKey(0);
    });
  }
  void Cancel() {
    program->screen.ScriptDialog(res::kDialogCardPin, [this](ui::Dialog& dialog) {
      ++asked;
      dialog.PressSoftKey(1);
    });
  }
  void TypePuk(std::u16string_view puk, std::u16string_view pin) {
    program->screen.ScriptDialog(res::kDialogCardPuk, [this, puk, pin](ui::Dialog& dialog) {
      ++asked;
      dialog.EditByUser(res::kCardPuk, puk, 0);
      dialog.EditByUser(res::kNewPin, pin, 0);
      dialog.EditByUser(res::kNewPinAgain, pin, 0);
      dialog.PressSoftKey(0);
    });
  }
  int OnTheCard(const char* counter) { return card->Image()["pins"]["pin1"][counter].get<int>(); }
  int Listed() const { return program->List().ItemCount(); }
  std::string Trace() {
    const std::lock_guard lock(traceLock);
    return trace;
  }

  static constexpr int kEntries = 180;  // of the sample card
  EndingMutex traceLock;
  std::string trace;
  std::unique_ptr<SoftCard> card;
  std::unique_ptr<test::ProgramOnCard> program;
  int asked = 0;
};

TEST_F(CardPinTest, TheRightPinIsAskedOnceAndTheListIsRead) {
  PutIn(3);
  Type(u"1234");
  Start();
  EXPECT_EQ(Listed(), kEntries);
  EXPECT_EQ(asked, 1);
  EXPECT_TRUE(program->BoxTexts().empty());
  EXPECT_EQ(OnTheCard("tries"), 3);
}

TEST_F(CardPinTest, AWrongPinCostsOneTryThatSurvivesThePower) {
  PutIn(3);
  Type(u"4321");
  Type(u"4321");  // not sent
  Cancel();
  Start();
  EXPECT_EQ(asked, 3);
  EXPECT_EQ(OnTheCard("tries"), 2);
  EXPECT_EQ(Listed(), 0);
}

TEST_F(CardPinTest, WhoGivesUpReadsTheUsualMessageOnce) {
  PutIn(3);
  Cancel();
  Start();
  EXPECT_EQ(program->BoxTexts(),
            std::vector<std::u16string>{u"SIM PIN is required to perform this operation."});
  EXPECT_EQ(program->List().Message().text, u"The card is locked");
  EXPECT_EQ(OnTheCard("tries"), 3);
  // And may do it later.
  Type(u"1234");
  program->state.dialog->Command(res::kCommandRefresh);
  ASSERT_TRUE(Await([this] { return Listed() == kEntries; }));
  ASSERT_TRUE(program->Settle());
  EXPECT_EQ(program->BoxTexts().size(), 1u);
}

TEST_F(CardPinTest, ALastTryThatIsWrongBlocksTheCardAndThePukOpensIt) {
  PutIn(1);
  Type(u"4321");
  program->screen.ScriptBox(ui::BoxAnswer::kYes);
  TypePuk(u"87654321", u"2468");
  TypePuk(u"12345678", u"2468");
  Start();
  EXPECT_EQ(Listed(), kEntries);
  EXPECT_EQ(asked, 3);
  EXPECT_EQ(OnTheCard("tries"), 3);
  EXPECT_EQ(OnTheCard("pukTries"), 10);
  EXPECT_EQ(card->Image()["pins"]["pin1"]["code"], "2468");
}

TEST_F(CardPinTest, ALastTryThatIsNotRiskedIsKept) {
  PutIn(1);
  Type(u"1234");
  program->screen.ScriptBox(ui::BoxAnswer::kNo);
  Cancel();
  Start();
  EXPECT_EQ(OnTheCard("tries"), 1);
  EXPECT_EQ(Listed(), 0);
}

TEST_F(CardPinTest, ACardThatWasResetIsAskedForAgain) {
  PutIn(3);
  Type(u"1234");
  Start();
  Type(u"1234");
  ASSERT_TRUE(card->Channel().Reset());
  ASSERT_TRUE(Await([this] { return asked == 2; }));
  ASSERT_TRUE(Await([this] { return Listed() == kEntries; }));
  ASSERT_TRUE(program->Settle());
  EXPECT_TRUE(program->BoxTexts().empty());
}

TEST_F(CardPinTest, ACardThatWasPutBackIsAskedForAgainAndItsRefusalIsRemembered) {
  PutIn(3);
  Type(u"4321");
  Type(u"1234");
  Start();
  EXPECT_EQ(asked, 2);
  card->Channel().Remove();
  Type(u"4321");  // the card has refused it
  Type(u"1234");
  card->Channel().Insert();
  ASSERT_TRUE(Await([this] { return asked == 4; }));
  ASSERT_TRUE(Await([this] { return Listed() == kEntries; }));
  ASSERT_TRUE(program->Settle());
  // Never below the three that the right PIN gave back.
  EXPECT_EQ(OnTheCard("tries"), 3);
}

TEST_F(CardPinTest, AGivenPinOpensTheCardUnasked) {
  PutIn(3);
  SecretCode code;
  ASSERT_TRUE(code.Set<char>("1234", 4));
  Start(&code);
  EXPECT_EQ(Listed(), kEntries);
  EXPECT_EQ(asked, 0);
  EXPECT_TRUE(code.Empty());
}

TEST_F(CardPinTest, AGivenPinThatIsWrongIsNotTriedAgain) {
  PutIn(3);
  SecretCode code;
  ASSERT_TRUE(code.Set<char>("4321", 4));
  Type(u"4321");
  Type(u"1234");
  Start(&code);
  EXPECT_EQ(Listed(), kEntries);
  EXPECT_EQ(asked, 2);
}

TEST_F(CardPinTest, AGivenPinIsNotSentWithTheLastTry) {
  PutIn(1);
  SecretCode code;
  ASSERT_TRUE(code.Set<char>("4321", 4));
  Cancel();
  Start(&code);
  EXPECT_EQ(OnTheCard("tries"), 1);
}

TEST_F(CardPinTest, NoCodeReachesLogsTracesOrTheRegistry) {
  PutIn(1);
  Type(u"97531864");
  program->screen.ScriptBox(ui::BoxAnswer::kYes);
  TypePuk(u"12345678", u"86429753");
  // The numbers of free records, one after the other, would look like the digits of a code.
  program->wiring.loadLayout = nullptr;
  Start();
  EXPECT_EQ(Listed(), kEntries);
  std::string seen = Trace();
  for (const std::u16string& line : program->log.Lines()) {
    for (const char16_t unit : line) seen += static_cast<char>(unit);
  }
  for (const std::string& call : program->journal.Entries()) seen += call + "\n";
  ASSERT_NE(seen.find("0020000108"), std::string::npos);  // the PIN went by
  // As digits, and as the bytes of a command.
  for (const char* secret : {"97531864", "86429753", "12345678", "3937353331383634",
                             "3836343239373533", "3132333435363738"}) {
    EXPECT_EQ(seen.find(secret), std::string::npos) << secret;
  }
}

TEST_F(CardPinTest, ACardWithoutAPinOpensWithoutAQuestion) {
  PutIn(nullptr);
  Start();
  EXPECT_EQ(Listed(), kEntries);
  EXPECT_EQ(asked, 0);
}

}  // namespace
}  // namespace kelpin::app
