#include "app/start_up.h"

#include "tests/app/start_up_fixture.h"

namespace kelpin::app {
namespace {

using platform::RegistryRoot;
using platform::SimResult;

// A kernel that lets a test look around when the mutex is made, the first call of all.
class ProbingKernel : public test::FakeKernel {
 public:
  using FakeKernel::FakeKernel;
  std::unique_ptr<platform::NamedMutex> CreateMutex(std::u16string_view name, bool owned,
                                                    bool& alreadyExists) override {
    if (onMutex) onMutex();
    return FakeKernel::CreateMutex(name, owned, alreadyExists);
  }
  std::function<void()> onMutex;
};

TEST_F(StartUpTest, InstanceAndTitleAreThereBeforeAnythingIsAsked) {
  test::Journal journal;
  test::FailPlan failures;
  ProbingKernel kernel(journal, failures);
  const Ports ports{device.sim,      device.radio, device.devices,  device.registry,
                    kernel,          device.shell, device.programs, device.telephone,
                    device.contacts, device.clock, device.log,      device.screen};
  failures.FailCallOf("CreateThread", 1);
  state = std::make_unique<AppState>(ports);
  mainDialog = std::make_unique<MainDialog>(*state, wiring);
  ModuleHandle instance = 0;
  std::u16string title;
  kernel.onMutex = [&] {
    instance = state->hInstance;
    title = state->appTitle;
  };
  EXPECT_EQ(InitInstance(*state, *mainDialog, 0x4000, 0), 1);
  EXPECT_EQ(instance, 0x4000u);
  EXPECT_EQ(title, u"Kelpin");
  Leave();
}

TEST_F(StartUpTest, CommandLineAndShowCommandChangeNothing) {
  CloseWhenServed();
  EntryArguments arguments;
  arguments.commandLine = u"/quiet \"C:\\x\" --help";
  arguments.showCommand = 6;
  EXPECT_EQ(RunProgram(), 0);
  const std::vector<std::string> plain = device.journal.Entries();
  Device second;
  second.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kHold);
  EXPECT_EQ(app::Run(second.ports, wiring, arguments), 0);
  EXPECT_EQ(second.journal.Entries(), plain);
}

TEST_F(StartUpTest, ThePlatformIsASmartphoneInAnyLetterCase) {
  struct Case {
    const char16_t* type;
    std::uint32_t expected;
  };
  for (const Case& one : {Case{u"SMARTPHONE", 1}, Case{u"Smartphone", 1}, Case{u"smartPhone", 1},
                          Case{u"PocketPC", 0}, Case{u"Smartphone2", 0}, Case{u"", 0}}) {
    Device another;
    another.shell.SetPlatformType(one.type);
    another.shell.SetReadiness(platform::ShellReadiness::kMissing);
    AppState app(another.ports);
    MainDialog dialog(app, wiring);
    EXPECT_EQ(InitInstance(app, dialog, 1, 0), 0);
    EXPECT_EQ(app.isSmartphone, one.expected) << test::Utf8(one.type);
  }
}

TEST_F(StartUpTest, APhoneWithoutASimSaysSoWithoutAskingTheCard) {
  PutPhoneWithoutSim(2, 0);
  EXPECT_EQ(RunProgram(), 0);
  EXPECT_EQ(Calls("SimInitialize"), 0u);
  ASSERT_EQ(device.screen.Anchors().size(), 1u);
  const test::AnchorWindow anchor = device.screen.Anchors()[0];
  EXPECT_EQ(anchor.style, ui::AnchorStyle::kDisabled);
  EXPECT_EQ(anchor.className, u"OEM_KELPIN_OEM");
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].owner, anchor.handle);
  EXPECT_EQ(Boxes()[0].text, u"SIM isn't inserted into the phone. ");
  EXPECT_EQ(Calls("RunMessageLoop"), 0u);
  EXPECT_EQ(Calls("ReleaseMutex"), 0u);
  EXPECT_EQ(Calls("WaitForShell"), 0u);
  EXPECT_TRUE(device.log.Lines().empty());
}

TEST_F(StartUpTest, EveryOtherPhoneAsksTheCard) {
  for (const auto& [phoneType, simType] :
       std::vector<std::pair<std::uint32_t, std::uint32_t>>{{2, 1}, {1, 0}, {0, 0}, {3, 0}}) {
    Device another;
    another.registry.PutDword(RegistryRoot::kLocalMachine, kProgramKey, u"PhoneType", phoneType);
    another.registry.PutDword(RegistryRoot::kLocalMachine, u"Software\\OEM\\RIL", u"SIMTYPE",
                              simType);
    another.shell.SetReadiness(platform::ShellReadiness::kMissing);
    EXPECT_EQ(app::Run(another.ports, wiring), 0);
    EXPECT_EQ(another.journal.Count("SimInitialize(0, none"), 1u) << phoneType << " " << simType;
  }
}

TEST_F(StartUpTest, ARadioThatIsOffEndsTheProgramWithItsText) {
  device.sim.SetResult("SimInitialize", SimResult::kRadioOff);
  EXPECT_EQ(RunProgram(), 0);
  ASSERT_EQ(device.screen.Anchors().size(), 1u);
  EXPECT_EQ(device.screen.Anchors()[0].style, ui::AnchorStyle::kDisabled);
  EXPECT_EQ(BoxTexts(), (std::vector<std::u16string>{
                            u"The phone function is disabled. Please turn on the phone function "
                            u"first in Relaydeck."}));
  EXPECT_EQ(Calls("WaitForShell"), 0u);
}

TEST_F(StartUpTest, AMissingCardEndsTheProgramWithItsText) {
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kNotInserted);
  EXPECT_EQ(RunProgram(), 0);
  ASSERT_EQ(device.screen.Anchors().size(), 1u);
  EXPECT_EQ(device.screen.Anchors()[0].style, ui::AnchorStyle::kDisabled);
  EXPECT_EQ(BoxTexts(), (std::vector<std::u16string>{u"SIM isn't inserted into the phone. "}));
}

TEST_F(StartUpTest, ACardWithAnyOtherTroubleDoesNotEndTheStart) {
  for (const SimResult result : {SimResult::kSimBusy, SimResult::kNoSim, SimResult::kPinRequired}) {
    Device another;
    another.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kHold);
    another.sim.SetResult("SimGetPhonebookStatus", result);
    AppState app(another.ports);
    MainDialog dialog(app, wiring);
    EXPECT_EQ(InitInstance(app, dialog, 1, 0), 1);
    EXPECT_EQ(another.journal.Count("WaitForShell"), 1u);
    EXPECT_TRUE(another.screen.Boxes().empty());
    app.dialog->PostClose();
    another.screen.RunMessageLoop();
  }
}

TEST_F(StartUpTest, WithoutItsWindowTheCardsTroubleIsNotTold) {
  PutPhoneWithoutSim(2, 0);
  device.failures.FailCallOf("CreateAnchorWindow", 1);
  EXPECT_EQ(RunProgram(), 0);
  EXPECT_TRUE(Boxes().empty());

  Device another;
  another.sim.SetResult("SimInitialize", SimResult::kRadioOff);
  another.failures.FailCallOf("CreateAnchorWindow", 1);
  EXPECT_EQ(app::Run(another.ports, wiring), 0);
  EXPECT_TRUE(another.screen.Boxes().empty());
}

TEST_F(StartUpTest, TheShellIsWaitedForOnce) {
  ASSERT_EQ(Start(), 1);
  EXPECT_EQ(device.journal.Entries("WaitForShell"),
            (std::vector<std::string>{"WaitForShell(0, 0, 1, 1)"}));
  EXPECT_EQ(Calls("Sleep"), 0u);
  EXPECT_LT(Position("WaitForShell"), Position("CreateAnchorWindow"));
}

TEST_F(StartUpTest, WithoutAShellTheProgramEndsAtOnce) {
  device.shell.SetReadiness(platform::ShellReadiness::kMissing);
  EXPECT_EQ(RunProgram(), 0);
  EXPECT_EQ(Calls("Sleep"), 0u);
  EXPECT_TRUE(device.screen.Anchors().empty());
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(StartUpTest, AShellThatDoesNotBecomeReadyEndsTheProgramAfterThreeSeconds) {
  device.shell.SetReadiness(platform::ShellReadiness::kNotReady);
  EXPECT_EQ(RunProgram(), 0);
  EXPECT_EQ(device.journal.Entries("Sleep"), (std::vector<std::string>{"Sleep(3000)"}));
  EXPECT_TRUE(device.screen.Anchors().empty());
}

TEST_F(StartUpTest, AScreenIsHighResolutionWhenBothSidesAreOver320) {
  struct Case {
    ui::Size screen;
    std::uint32_t expected;
  };
  for (const Case& one : {Case{{320, 480}, 0}, Case{{480, 320}, 0}, Case{{321, 321}, 1},
                          Case{{480, 640}, 1}, Case{{240, 320}, 0}}) {
    Device another;
    another.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kHold);
    another.failures.FailCallOf("CreateDialog", 1);
    ui::Metrics metrics;
    metrics.screen = one.screen;
    another.screen.SetMetrics(metrics);
    AppState app(another.ports);
    MainDialog dialog(app, wiring);
    EXPECT_EQ(InitInstance(app, dialog, 1, 0), 0);  // the dialog cannot be made
    EXPECT_EQ(app.isHighRes, one.expected) << one.screen.width << "x" << one.screen.height;
  }
}

TEST_F(StartUpTest, TheInputPanelSettingIsReadOrZero) {
  ASSERT_EQ(Start(), 1);
  EXPECT_EQ(state->sipAutoDeployOff, 0u);
  Leave();

  Device another;
  another.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kHold);
  another.registry.PutDword(RegistryRoot::kCurrentUser, u"ControlPanel\\Sip", u"TurnOffAutoDeploy",
                            5);
  another.failures.FailCallOf("CreateDialog", 1);
  AppState app(another.ports);
  MainDialog dialog(app, wiring);
  EXPECT_EQ(InitInstance(app, dialog, 1, 0), 0);
  EXPECT_EQ(app.sipAutoDeployOff, 5u);
}

TEST_F(StartUpTest, OnAPocketPcTheMainDialogIsModelessAndOwnedByTheAnchor) {
  ASSERT_EQ(Start(), 1);
  const auto dialog = device.screen.Find(res::kDialogMain);
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(dialog->Owner(), state->mainWindow);
  EXPECT_EQ(dialog->Handle(), state->mainDialog);
  EXPECT_TRUE(device.screen.Shown(*dialog));
  EXPECT_FALSE(dialog->Ended());
  EXPECT_EQ(Calls("DialogBox"), 0u);
}

TEST_F(StartUpTest, OnASmartphoneTheMainDialogIsModalAndTheLoopRunsAfterIt) {
  device.shell.SetPlatformType(u"Smartphone");
  bool loopRanBefore = false;
  device.screen.ScriptDialog(res::kDialogMain, [&](ui::Dialog& dialog) {
    loopRanBefore = Calls("RunMessageLoop") != 0;
    dialog.Close();
  });
  EXPECT_EQ(RunProgram(), 0);
  EXPECT_FALSE(loopRanBefore);
  EXPECT_EQ(Calls("CreateDialog"), 0u);
  EXPECT_LT(Position("DialogBox"), Position("RunMessageLoop"));
  EXPECT_LT(Position("PostQuit"), Position("RunMessageLoop"));
  EXPECT_EQ(device.log.Lines().size(), 1u);
}

TEST_F(StartUpTest, OneLineTellsTheVersion) {
  CloseWhenServed();
  EXPECT_EQ(RunProgram(), 0);
  EXPECT_EQ(device.log.Lines(), (std::vector<std::u16string>{u"[KELPIN]:VER=[6.80].\r\n"}));
}

TEST_F(StartUpTest, TheExitCodeIsTheQuitMessages) {
  wiring.startWatchers = [](AppState& app, Commands&, ListLoader&) {
    app.ports.screen.PostQuit(42);
  };
  EXPECT_EQ(RunProgram(), 42);
}

TEST_F(StartUpTest, NoThreadIsMadeBeforeTheMainDialog) {
  ASSERT_EQ(Start(), 1);
  EXPECT_EQ(Calls("CreateThread"), 1u);
  EXPECT_LT(Position("CreateDialog"), Position("CreateThread"));
}

TEST_F(StartUpTest, TheProgramEndsCleanlyWhileALoadIsUnderWay) {
  device.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kRun);
  device.sim.SetEntry(1, u"Anna", u"123");
  // The card never answers the header's question.
  device.radio.SetResponder([](const test::FakeRadio::Command&) {
    test::FakeRadio::Answer answer;
    answer.answering = test::FakeRadio::Answering::kNever;
    return std::optional(answer);
  });
  wiring.startWatchers = [this](AppState& app, Commands&, ListLoader&) {
    device.radio.AwaitCommands(1);
    app.dialog->PostClose();
  };
  EXPECT_EQ(RunProgram(), 0);
  EXPECT_TRUE(Boxes().empty()) << test::Utf8(BoxTexts()[0]);
  EXPECT_EQ(device.radio.OpenSessions(), 0u);
  EXPECT_EQ(device.sim.OpenSessions(), 0u);
}

}  // namespace
}  // namespace kelpin::app
