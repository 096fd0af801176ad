#include "app/main_dialog.h"

#include "res/templates.h"
#include "tests/app/app_fixture.h"

namespace kelpin::app {
namespace {

using platform::RegistryRoot;
using platform::SimResult;

const ui::KeyPress kDown = {ui::Key::kDown};

class MainDialogTest : public AppTest {};

TEST_F(MainDialogTest, TheWindowStandsBeforeTheCardIsOpened) {
  bool looked = false;
  device.sim.onOpen = [&] {
    looked = true;
    EXPECT_NE(state->mainDialog, 0u);
    EXPECT_EQ(Dialog().Handle(), state->mainDialog);
    EXPECT_TRUE(Dialog().InputPanelDown());
    EXPECT_EQ(Dialog().Title(), u"Kelpin");
    ASSERT_NE(Dialog().Bar(), nullptr);
    EXPECT_EQ(state->menuBar, Dialog().Bar());
    EXPECT_FALSE(Menu().IsEnabled(res::kCommandEdit));
    EXPECT_TRUE(Menu().Contains(res::kCommandServiceNumbers));  // the settings are not read yet
    EXPECT_EQ(Header(), u"My No.");
    EXPECT_EQ(List().ExtendedStyle(), ui::kListFullRowSelect);
    EXPECT_EQ(List().Columns().size(), 3u);
    EXPECT_EQ(Calls("RIL_Initialize"), 0u);
    EXPECT_EQ(Calls("CreateThread"), 0u);
  };
  ASSERT_EQ(Start(), 1);
  EXPECT_TRUE(looked);
}

TEST_F(MainDialogTest, TheTitleIsLoadedAgainWhenItOpens) {
  Make();
  state->appTitle = u"as it was";
  const auto dialog =
      device.screen.CreateDialog(*res::FindDialog(res::kDialogMain), 0, *mainDialog);
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(dialog->Title(), u"Kelpin");
  EXPECT_EQ(state->appTitle, u"Kelpin");
}

TEST_F(MainDialogTest, TheListHasThreeColumnsInTheirOrder) {
  ui::Metrics metrics;
  metrics.screen = {240, 320};
  device.screen.SetMetrics(metrics);
  device.screen.SetClientSize({240, 268});
  ASSERT_EQ(Start(), 1);
  EXPECT_EQ(List().Columns(),
            (std::vector<ui::Column>{{u"#", 38}, {u"Name", 110}, {u"Phone", 300}}));
  EXPECT_EQ(List().ExtendedStyle(), ui::kListFullRowSelect);
}

TEST_F(MainDialogTest, AHighResolutionScreenDoublesTheMeasures) {
  ui::Metrics metrics;
  metrics.screen = {480, 640};
  device.screen.SetMetrics(metrics);
  device.screen.SetClientSize({480, 536});
  ASSERT_EQ(Start(), 1);
  EXPECT_EQ(List().Columns(),
            (std::vector<ui::Column>{{u"#", 76}, {u"Name", 220}, {u"Phone", 600}}));
}

TEST_F(MainDialogTest, TheHeaderStandsAboveTheList) {
  Open();
  const ui::Rect header = Dialog().Bounds(res::kMainHeader);
  const ui::Rect list = Dialog().Bounds(res::kMainList);
  EXPECT_EQ(header, (ui::Rect{0, 0, 360, 56}));
  EXPECT_EQ(list, (ui::Rect{0, 56, 360, 504}));
}

TEST_F(MainDialogTest, SessionsThenSettingsAreOpenedInTheirOrder) {
  device.registry.PutDword(RegistryRoot::kCurrentUser, u"MUI", u"CurLang", 1028);
  Open();
  EXPECT_EQ(Calls("SimInitialize(1, callback, parameter)"), 1u);
  EXPECT_EQ(device.journal.Entries("RIL_Initialize"),
            (std::vector<std::string>{"RIL_Initialize(1, 0x80C00000)", "RIL_Initialize(1, 0x0)"}));
  const std::size_t sim = Position("SimInitialize(1, callback");
  const std::size_t notifying = Position("RIL_Initialize(1, 0x80C00000)");
  const std::size_t plain = Position("RIL_Initialize(1, 0x0)");
  const std::size_t settings = Position("CreateKey(HKLM, \\Software\\OEM\\KELPIN");
  const std::size_t language = Position("OpenKey(HKCU, MUI");
  EXPECT_LT(sim, notifying);
  EXPECT_LT(notifying, plain);
  EXPECT_LT(plain, settings);
  EXPECT_LT(settings, language);
  EXPECT_LT(language, Position("CreateThread"));
  EXPECT_EQ(Calls("CreateKey(HKLM, \\Software\\OEM\\KELPIN"), 1u);  // read once
  EXPECT_EQ(state->settings.CurLang, 1028u);
  EXPECT_EQ(state->language, 1028u);
}

TEST_F(MainDialogTest, ACardThatDoesNotOpenIsToldAndNoRadioIsOpened) {
  SetSwitch(u"Enable_SDN", 1);
  device.sim.onOpen = [this] { device.sim.SetResult("SimInitialize", SimResult::kSimBusy); };
  ASSERT_EQ(Start(), 1);
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].text, u"SIM is busy.");
  EXPECT_EQ(Boxes()[0].owner, state->mainDialog);
  EXPECT_EQ(Calls("RIL_Initialize"), 0u);
  EXPECT_EQ(Calls("CreateKey(HKLM, \\Software\\OEM\\KELPIN"), 0u);
  EXPECT_FALSE(Menu().Contains(res::kCommandServiceNumbers));  // the defaults
  EXPECT_EQ(Calls("CreateThread"), 1u);                        // the load says for itself
}

TEST_F(MainDialogTest, ARadioThatDoesNotOpenIsLikeOneThatFailsEveryCommand) {
  device.radio.SetInitializeFails(true);
  device.sim.SetEntry(1, u"Anna", u"111");
  Open();
  EXPECT_EQ(List().ItemCount(), 0);
  EXPECT_TRUE(Boxes().empty());  // the card itself is well
  EXPECT_TRUE(List().Visible());
  EXPECT_EQ(List().Message().text, u"The card could not be read");
}

TEST_F(MainDialogTest, QuestionPruningNoticeAndLoadFollowInTheirOrder) {
  SetSwitch(u"QueryNewSIM", 1);
  SetDriverValue(u"SIMChanged", 1);
  SetSwitch(u"Enable_PBCMsg", 1);
  SetSwitch(u"Disable_OwnNumber", 1);
  device.radio.SetPhonebookChanged(1);
  std::vector<std::u16string> seen;
  device.screen.OnBox([&](const test::ShownBox& box) {
    seen.push_back(box.text);
    const bool question = box.style.buttons == ui::BoxButtons::kYesNo;
    EXPECT_EQ(Menu().Contains(res::kCommandOwnNumbers), question);
    EXPECT_EQ(Calls("CreateThread"), 0u);
  });
  ASSERT_EQ(Start(), 1);
  EXPECT_EQ(seen,
            (std::vector<std::u16string>{u"Do you want to copy SIM card entries to your Contacts?",
                                         u"Address book data is updated. Please check."}));
  EXPECT_EQ(Calls("CreateThread"), 1u);
}

TEST_F(MainDialogTest, WithoutALoadThreadTheOpeningStopsThere) {
  device.failures.FailCallOf("CreateThread", 1);
  ASSERT_EQ(Start(), 1);
  device.screen.RunPending();
  EXPECT_EQ(watchersStarted, 0);
  InsertListRow(*state, 1, u"111", u"Anna");
  Select(0);
  EXPECT_FALSE(List().WantsKey(kDown));
  EXPECT_EQ(List().Message().text, u"The card could not be read");
  EXPECT_TRUE(List().Visible());
  EXPECT_TRUE(SoftKeyEnabled(0));
  EXPECT_TRUE(SoftKeyEnabled(1));
  EXPECT_FALSE(IsListLoading(*state));
}

TEST_F(MainDialogTest, TheWatchersAreStartedByAPostedMessage) {
  ASSERT_EQ(Start(), 1);
  EXPECT_EQ(watchersStarted, 0);
  device.screen.RunPending();
  EXPECT_EQ(watchersStarted, 1);
  mainDialog->OnMessage(Dialog(), 0x0464, 0, 0);
  EXPECT_EQ(watchersStarted, 2);
}

TEST_F(MainDialogTest, ClosingEndsItWithSixteen) {
  Open();
  Dialog().Close();
  EXPECT_TRUE(Dialog().Ended());
  EXPECT_EQ(Dialog().Result(), 16);
}

TEST_F(MainDialogTest, ItsEndClosesCardAndRadioAndEndsTheProgram) {
  PutThree();
  Open();
  Select(2);
  const auto dialog = state->dialog;
  ASSERT_TRUE(List().WantsKey(kDown));
  device.journal.Clear();
  dialog->Close();
  EXPECT_EQ(device.screen.RunMessageLoop(), 0);
  std::vector<std::string> calls;
  for (const std::string& line : device.journal.Entries()) {
    if (line.starts_with("SimDeinit") || line.starts_with("RIL_") || line.starts_with("PostQuit")) {
      calls.push_back(line);
    }
  }
  EXPECT_EQ(calls, (std::vector<std::string>{"SimDeinitialize(2)", "RIL_Deinitialize(1)",
                                             "RIL_Deinitialize(2)", "PostQuit(0)"}));
  EXPECT_EQ(dialog->Bar(), nullptr);
  EXPECT_FALSE(dialog->List(res::kMainList)->WantsKey(kDown));
}

TEST_F(MainDialogTest, AFailedCloseOfTheFirstSessionLeavesTheSecondOpen) {
  Open();
  device.radio.SetDeinitializeFails(true);
  device.journal.Clear();
  Dialog().Close();
  device.screen.RunMessageLoop();
  EXPECT_EQ(Calls("RIL_Deinitialize"), 1u);
  EXPECT_EQ(Calls("PostQuit(0)"), 1u);
  device.radio.SetDeinitializeFails(false);
}

TEST_F(MainDialogTest, HelpOpensTheManual) {
  Open();
  Dialog().KeyDown({ui::Key::kF1});
  ASSERT_EQ(device.programs.Started().size(), 1u);
  EXPECT_EQ(device.programs.Started()[0].program, u"peghelp");
  EXPECT_EQ(device.programs.Started()[0].commandLine, u"Kelpin.htm");
}

// Size, activation, cursor.

TEST_F(MainDialogTest, AChangeOfOneSideAloneMovesNothing) {
  Open();
  const ui::Rect list = Dialog().Bounds(res::kMainList);
  const std::vector<ui::Column> columns = List().Columns();
  device.screen.SetClientSize({500, 560});
  EXPECT_EQ(Dialog().Bounds(res::kMainList), list);
  EXPECT_EQ(List().Columns(), columns);
  device.screen.SetClientSize({360, 700});
  EXPECT_EQ(Dialog().Bounds(res::kMainList), list);
}

TEST_F(MainDialogTest, AChangeOfBothSidesPlacesTheListAnew) {
  Open();
  device.screen.SetClientSize({600, 300});
  EXPECT_EQ(Dialog().Bounds(res::kMainHeader), (ui::Rect{0, 0, 600, 56}));
  EXPECT_EQ(Dialog().Bounds(res::kMainList), (ui::Rect{0, 56, 600, 244}));
  EXPECT_EQ(List().Columns(),
            (std::vector<ui::Column>{{u"#", 76}, {u"Name", 280}, {u"Phone", 660}}));
}

TEST_F(MainDialogTest, ActivationIsRemembered) {
  Open();
  EXPECT_TRUE(state->active);
  Dialog().Activate(false);
  EXPECT_FALSE(state->active);
  Dialog().Activate(true);
  EXPECT_TRUE(state->active);
}

TEST_F(MainDialogTest, BusyMessagesSetTheWaitCursor) {
  Open();
  Dialog().PostMessage(0x0471, 0, 1);
  device.screen.RunPending();
  EXPECT_TRUE(device.screen.WaitCursor());
  Dialog().PostMessage(0x0471, 0, 0);
  device.screen.RunPending();
  EXPECT_FALSE(device.screen.WaitCursor());
  Dialog().PostMessage(0x0471, 0, 0x00050001);  // the low word counts
  device.screen.RunPending();
  EXPECT_TRUE(device.screen.WaitCursor());
  Dialog().PostMessage(0x0471, 1, 2);
  device.screen.RunPending();
  EXPECT_FALSE(device.screen.WaitCursor());
}

// What is asked and told at the opening.

TEST_F(MainDialogTest, ANewSimIsAskedAbout) {
  SetSwitch(u"QueryNewSIM", 1);
  SetDriverValue(u"SIMChanged", 1);
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  ASSERT_EQ(Start(), 1);
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].caption, u"New SIM Card Inserted");
  EXPECT_EQ(Boxes()[0].text, u"Do you want to copy SIM card entries to your Contacts?");
  EXPECT_EQ(Boxes()[0].style, ui::kBoxQuestion);
  EXPECT_EQ(Boxes()[0].owner, state->mainDialog);
  EXPECT_EQ(state->settings.QueryNewSIM, 1u);
}

TEST_F(MainDialogTest, AnAnswerOfNoIsKeptForThisRun) {
  SetSwitch(u"QueryNewSIM", 1);
  SetDriverValue(u"SIMChanged", 1);
  PutThree();
  device.screen.ScriptBox(ui::BoxAnswer::kNo);
  Open();
  EXPECT_EQ(state->settings.QueryNewSIM, 0u);
  Refresh();
  EXPECT_EQ(Boxes().size(), 1u);
  EXPECT_TRUE(ran.empty());
}

TEST_F(MainDialogTest, TheSameSimIsNotAskedAbout) {
  SetSwitch(u"QueryNewSIM", 1);
  SetDriverValue(u"SIMChanged", 0);
  Open();
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(MainDialogTest, NobodyIsAskedForWhatCannotBeDone) {
  SetSwitch(u"QueryNewSIM", 1);
  SetDriverValue(u"SIMChanged", 1);
  known = {};
  Open();
  EXPECT_TRUE(Boxes().empty());
  EXPECT_EQ(state->settings.QueryNewSIM, 0u);
}

TEST_F(MainDialogTest, AChangedPhonebookIsToldWhenWanted) {
  SetSwitch(u"Enable_PBCMsg", 2);
  device.radio.SetPhonebookChanged(1);
  ASSERT_EQ(Start(), 1);
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].text, u"Address book data is updated. Please check.");
  EXPECT_EQ(Boxes()[0].caption, u"Kelpin");
  EXPECT_EQ(Boxes()[0].style, ui::kBoxNotice);
  EXPECT_EQ(Boxes()[0].owner, state->mainDialog);
  EXPECT_EQ(Calls("RIL_DevSpecific(1, 129"), 1u);  // on the session of the list
}

TEST_F(MainDialogTest, AnyOtherAnswerIsNotTold) {
  SetSwitch(u"Enable_PBCMsg", 1);
  device.radio.SetPhonebookChanged(2);
  ASSERT_EQ(Start(), 1);
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(MainDialogTest, ARadioThatCannotSayIsNotTold) {
  SetSwitch(u"Enable_PBCMsg", 1);
  device.failures.FailCallOf("RIL_DevSpecific", 1);
  device.radio.SetPhonebookChanged(1);
  ASSERT_EQ(Start(), 1);
  EXPECT_TRUE(device.failures.Failed());
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(MainDialogTest, TheRadioIsNotAskedWhenNobodyWantsToKnow) {
  device.radio.SetPhonebookChanged(1);
  ASSERT_EQ(Start(), 1);
  EXPECT_TRUE(Boxes().empty());
  EXPECT_EQ(Calls("RIL_DevSpecific"), 0u);
}

}  // namespace
}  // namespace kelpin::app
