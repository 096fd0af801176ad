#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "app/app_state.h"
#include "app/card_opening.h"
#include "app/list_commands.h"
#include "app/list_loader.h"
#include "app/main_dialog.h"
#include "app/start_up.h"
#include "app/watchers.h"
#include "device/card/card_devices.h"
#include "device/card/sim_service.h"
#include "res/card_dialogs.h"
#include "res/ids.h"
#include "tests/card/soft_card.h"
#include "tests/support/fake_clock.h"
#include "tests/support/fake_contacts.h"
#include "tests/support/fake_kernel.h"
#include "tests/support/fake_log.h"
#include "tests/support/fake_programs.h"
#include "tests/support/fake_registry.h"
#include "tests/support/fake_shell.h"
#include "tests/support/fake_telephone.h"
#include "tests/support/headless_screen.h"

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
    card =
        std::make_unique<SoftCard>("usim", [tries](nlohmann::json& image) { Lock(image, tries); });
    card->Channel().SetTrace([this](std::string_view line) {
      const std::lock_guard lock(traceLock);
      trace += std::string(line) + "\n";
    });
    service = std::make_unique<device::card::SimService>(card->Channel());
    ports = std::make_unique<Ports>(Ports{*service, *service, devices, registry, kernel, shell,
                                          programs, telephone, contacts, clock, log, screen,
                                          service.get()});
    state = std::make_unique<AppState>(*ports);
    wiring.fillCommands = [this](AppState& app, Commands& commands, ListLoader& list) {
      loader = &list;
      commands.Register(res::kCommandNew, [] {});
      commands.Register(res::kCommandSelectAll, [&app] { SelectAllRows(app); });
      commands.Register(res::kCommandRefresh, [&list] { list.Refresh(); });
    };
    wiring.startWatchers = [](AppState& app, Commands& commands, ListLoader&) {
      StartWatchers(app, commands);
    };
  }
  ~CardPinTest() override {
    if (state != nullptr && state->dialog != nullptr && !state->dialog->Ended()) {
      state->dialog->PostClose();
      screen.RunMessageLoop();
    }
    kernel.EndThreads();
    if (card != nullptr) card->Channel().SetTrace(nullptr);
  }

  // As the program's main does it: the card first, then the program.
  void Start(SecretCode* code = nullptr) {
    screen.ScriptWaitForEnd(res::kDialogOpeningCard);
    ASSERT_TRUE(OpenCard(*ports, {.code = code, .giveUp = {}}));
    mainDialog = std::make_unique<MainDialog>(*state, wiring);
    ASSERT_EQ(InitInstance(*state, *mainDialog, 1, 0), 1);
    ASSERT_TRUE(Settle());
  }
  bool Settle() {
    return screen.RunUntil([this] {
      return kernel.Waiters(sim::kPhonebookEventName) == 1 && !IsListLoading(*state) &&
             !loader->IsWaiting() && List().Visible();
    });
  }
  void Type(std::u16string_view pin) {
    screen.ScriptDialog(res::kDialogCardPin, [this, pin](ui::Dialog& dialog) {
      ++asked;
      dialog.EditByUser(res::kCardPin, pin, 0);
      dialog.PressSoftKey(0);
    });
  }
  void Cancel() {
    screen.ScriptDialog(res::kDialogCardPin, [this](ui::Dialog& dialog) {
      ++asked;
      dialog.PressSoftKey(1);
    });
  }
  void TypePuk(std::u16string_view puk, std::u16string_view pin) {
    screen.ScriptDialog(res::kDialogCardPuk, [this, puk, pin](ui::Dialog& dialog) {
      ++asked;
      dialog.EditByUser(res::kCardPuk, puk, 0);
      dialog.EditByUser(res::kNewPin, pin, 0);
      dialog.EditByUser(res::kNewPinAgain, pin, 0);
      dialog.PressSoftKey(0);
    });
  }
  int OnTheCard(const char* counter) { return card->Image()["pins"]["pin1"][counter].get<int>(); }
  ui::ListView& List() { return *state->dialog->List(res::kMainList); }
  std::vector<std::u16string> Boxes() {
    std::vector<std::u16string> texts;
    for (const test::ShownBox& box : screen.Boxes()) texts.push_back(box.text);
    return texts;
  }
  std::string Trace() {
    const std::lock_guard lock(traceLock);
    return trace;
  }

  static constexpr int kEntries = 180;  // of the sample card
  std::mutex traceLock;
  std::string trace;
  std::unique_ptr<SoftCard> card;
  std::unique_ptr<device::card::SimService> service;
  device::card::CardDevices devices;
  test::Journal journal;
  test::FailPlan failures;
  test::FakeClock clock{journal};
  test::HeadlessScreen screen{journal, failures};
  test::FakeRegistry registry{journal, failures};
  test::FakeShell shell{journal, failures};
  test::FakePrograms programs{journal, failures};
  test::FakeTelephone telephone{journal, failures};
  test::FakeContacts contacts{journal, failures};
  test::FakeLog log;
  test::FakeKernel kernel{journal, failures, &clock};
  std::unique_ptr<Ports> ports;
  std::unique_ptr<AppState> state;
  Wiring wiring;
  std::unique_ptr<MainDialog> mainDialog;
  ListLoader* loader = nullptr;
  int asked = 0;
};

TEST_F(CardPinTest, TheRightPinIsAskedOnceAndTheListIsRead) {
  PutIn(3);
  Type(u"1234");
  Start();
  EXPECT_EQ(List().ItemCount(), kEntries);
  EXPECT_EQ(asked, 1);
  EXPECT_TRUE(Boxes().empty());
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
  EXPECT_EQ(List().ItemCount(), 0);
}

TEST_F(CardPinTest, WhoGivesUpReadsTheUsualMessageOnce) {
  PutIn(3);
  Cancel();
  Start();
  EXPECT_EQ(Boxes(),
            std::vector<std::u16string>{u"SIM PIN is required to perform this operation."});
  EXPECT_EQ(List().Message().text, u"The card is locked");
  EXPECT_EQ(OnTheCard("tries"), 3);
  // And may do it later.
  Type(u"1234");
  state->dialog->Command(res::kCommandRefresh);
  ASSERT_TRUE(screen.RunUntil([this] { return List().ItemCount() == kEntries; }));
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Boxes().size(), 1u);
}

TEST_F(CardPinTest, ALastTryThatIsWrongBlocksTheCardAndThePukOpensIt) {
  PutIn(1);
  Type(u"4321");
  screen.ScriptBox(ui::BoxAnswer::kYes);
  TypePuk(u"87654321", u"2468");
  TypePuk(u"12345678", u"2468");
  Start();
  EXPECT_EQ(List().ItemCount(), kEntries);
  EXPECT_EQ(asked, 3);
  EXPECT_EQ(OnTheCard("tries"), 3);
  EXPECT_EQ(OnTheCard("pukTries"), 10);
  EXPECT_EQ(card->Image()["pins"]["pin1"]["code"], "2468");
}

TEST_F(CardPinTest, ALastTryThatIsNotRiskedIsKept) {
  PutIn(1);
  Type(u"1234");
  screen.ScriptBox(ui::BoxAnswer::kNo);
  Cancel();
  Start();
  EXPECT_EQ(OnTheCard("tries"), 1);
  EXPECT_EQ(List().ItemCount(), 0);
}

TEST_F(CardPinTest, ACardThatWasResetIsAskedForAgain) {
  PutIn(3);
  Type(u"1234");
  Start();
  Type(u"1234");
  ASSERT_TRUE(card->Channel().Reset());
  ASSERT_TRUE(screen.RunUntil([this] { return asked == 2; }));
  ASSERT_TRUE(screen.RunUntil([this] { return List().ItemCount() == kEntries; }));
  ASSERT_TRUE(Settle());
  EXPECT_TRUE(Boxes().empty());
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
  ASSERT_TRUE(screen.RunUntil([this] { return asked == 4; }));
  ASSERT_TRUE(screen.RunUntil([this] { return List().ItemCount() == kEntries; }));
  ASSERT_TRUE(Settle());
  // Never below the three that the right PIN gave back.
  EXPECT_EQ(OnTheCard("tries"), 3);
}

TEST_F(CardPinTest, AGivenPinOpensTheCardUnasked) {
  PutIn(3);
  SecretCode code;
  ASSERT_TRUE(code.Set<char>("1234", 4));
  Start(&code);
  EXPECT_EQ(List().ItemCount(), kEntries);
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
  EXPECT_EQ(List().ItemCount(), kEntries);
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
  screen.ScriptBox(ui::BoxAnswer::kYes);
  TypePuk(u"12345678", u"86429753");
  Start();
  EXPECT_EQ(List().ItemCount(), kEntries);
  std::string seen = Trace();
  for (const std::u16string& line : log.Lines()) {
    for (const char16_t unit : line) seen += static_cast<char>(unit);
  }
  for (const std::string& call : journal.Entries()) seen += call + "\n";
  ASSERT_NE(seen.find("0020000108"), std::string::npos);  // the PIN went by
  // As digits, and as the bytes of a command.
  for (const char* secret : {"97531864", "86429753", "12345678", "3937353331383634",
                             "3836343239373533", "3132333435363738"}) {
    EXPECT_EQ(seen.find(secret), std::string::npos) << secret;
  }
}

TEST_F(CardPinTest, ACardWithoutAPinOpensWithoutAQuestion) {
  PutIn(3);
  service.reset();
  card->Channel().SetTrace(nullptr);
  state.reset();
  card = std::make_unique<SoftCard>("usim");
  service = std::make_unique<device::card::SimService>(card->Channel());
  ports =
      std::make_unique<Ports>(Ports{*service, *service, devices, registry, kernel, shell, programs,
                                    telephone, contacts, clock, log, screen, service.get()});
  state = std::make_unique<AppState>(*ports);
  Start();
  EXPECT_EQ(List().ItemCount(), kEntries);
  EXPECT_EQ(asked, 0);
}

}  // namespace
}  // namespace kelpin::app
