#include <cstring>

#include "tests/app/start_up_fixture.h"

// One copy of the program at a time, and the window by which a second one finds it.
namespace kelpin::app {
namespace {

using platform::RegistryResult;
using platform::RegistryRoot;

TEST_F(StartUpTest, TheFirstCopyKeepsTheMutexAndLooksForNobody) {
  Make();
  EXPECT_EQ(Check(), 1);
  EXPECT_NE(state->instanceMutex, nullptr);
  EXPECT_EQ(device.journal.Entries("CreateMutex"),
            (std::vector<std::string>{
                "CreateMutex(KELPIN_{3259ED9D-01DC-49f9-A630-7197A5DA6006}, not owned)"}));
  EXPECT_EQ(Calls("FindWindow"), 0u);
  EXPECT_EQ(Calls("OpenKey"), 0u);
  EXPECT_EQ(Calls("ReleaseMutex"), 0u);
}

TEST_F(StartUpTest, ASecondCopyBringsTheWindowOfTheClassForwardAndLetsTheMutexGo) {
  RunAsSecondCopy();
  device.screen.AddForeignWindow(u"OEM_KELPIN_OEM", u"Any title", 0x7770);
  PutStoredWindow(0x5550);
  Make();
  EXPECT_EQ(Check(), 0);
  EXPECT_EQ(Raised(), (std::vector<ui::WindowHandle>{0x7771}));
  EXPECT_EQ(Calls("ReleaseMutex"), 1u);
  EXPECT_EQ(Calls("CloseMutex"), 1u);
  EXPECT_LT(Position("ReleaseMutex"), Position("CloseMutex"));
  EXPECT_EQ(state->instanceMutex, nullptr);
  EXPECT_EQ(Calls("OpenKey"), 0u);
}

TEST_F(StartUpTest, WithoutAWindowTheStoredHandleIsBroughtForward) {
  RunAsSecondCopy();
  PutStoredWindow(0x5550);
  Make();
  EXPECT_EQ(Check(), 0);
  EXPECT_EQ(Raised(), (std::vector<ui::WindowHandle>{0x5551}));
  EXPECT_EQ(state->instanceMutex, nullptr);
  EXPECT_EQ(device.registry.OpenHandles(), 0u);
}

TEST_F(StartUpTest, WithoutAWindowAndAStoredHandleNothingIsBroughtForward) {
  RunAsSecondCopy();
  Make();
  EXPECT_EQ(Check(), 0);  // no key
  device.registry.PutKey(RegistryRoot::kLocalMachine, kStateKey);
  EXPECT_EQ(Check(), 0);  // no value
  PutStoredWindow(0);
  EXPECT_EQ(Check(), 0);
  PutStoredWindow(0x5550);
  device.registry.SetOpenResult(RegistryRoot::kLocalMachine, kStateKey, 0,
                                RegistryResult::kAccessDenied);
  EXPECT_EQ(Check(), 0);  // a key that cannot be opened
  EXPECT_TRUE(Raised().empty());
  EXPECT_TRUE(Boxes().empty());
  EXPECT_EQ(Calls("ReleaseMutex"), 4u);
  EXPECT_EQ(Calls("CloseMutex"), 4u);
  EXPECT_EQ(state->instanceMutex, nullptr);
}

TEST_F(StartUpTest, ASecondCopyThatFindsNoWindowStartsAllTheSame) {
  RunAsSecondCopy();
  PutStoredWindow(0x5550);  // of a copy that is gone
  EXPECT_EQ(Start(), 1);
  EXPECT_EQ(Raised(), (std::vector<ui::WindowHandle>{0x5551}));
  EXPECT_NE(device.screen.Find(res::kDialogMain), nullptr);
}

TEST_F(StartUpTest, ARunningCopyIsBroughtForwardAndTheSecondEndsWithoutAWindow) {
  RunAsSecondCopy();
  device.screen.AddForeignWindow(u"OEM_KELPIN_OEM", u"Kelpin", 0x7770);
  EXPECT_EQ(RunProgram(), 0);
  EXPECT_EQ(Raised(), (std::vector<ui::WindowHandle>{0x7771, 0x7771}));
  EXPECT_TRUE(device.screen.Anchors().empty());
  EXPECT_TRUE(device.screen.WindowClasses().empty());
  EXPECT_TRUE(Boxes().empty());
  EXPECT_EQ(Calls("CreateDialog"), 0u);
  EXPECT_EQ(Calls("RunMessageLoop"), 0u);
  EXPECT_TRUE(device.log.Lines().empty());
}

TEST_F(StartUpTest, AWindowWithAnotherTitleDoesNotEndTheStart) {
  device.screen.AddForeignWindow(u"OEM_KELPIN_OEM", u"Not Kelpin", 0x7770);
  EXPECT_EQ(Start(), 1);
  EXPECT_TRUE(Raised().empty());
}

TEST_F(StartUpTest, TheAnchorsClassHasTheProgramsIconAndAWhiteGround) {
  ASSERT_EQ(Start(), 1);
  ASSERT_EQ(device.screen.WindowClasses().size(), 1u);
  const ui::WindowClass windowClass = device.screen.WindowClasses()[0];
  EXPECT_EQ(windowClass.name, u"OEM_KELPIN_OEM");
  EXPECT_TRUE(windowClass.horizontalRedraw);
  EXPECT_TRUE(windowClass.verticalRedraw);
  EXPECT_TRUE(windowClass.whiteBackground);
  EXPECT_EQ(windowClass.icon, 353);
  EXPECT_EQ(windowClass.menu, 0);
  EXPECT_EQ(windowClass.extraBytes, 0);
}

TEST_F(StartUpTest, AClassThatCannotBeRegisteredEndsTheProgramSilently) {
  device.failures.FailCallOf("RegisterWindowClass", 1);
  EXPECT_EQ(RunProgram(), 0);
  EXPECT_TRUE(Boxes().empty());
  EXPECT_TRUE(device.screen.Anchors().empty());
  EXPECT_TRUE(device.log.Lines().empty());
}

TEST_F(StartUpTest, TheAnchorIsVisibleAndNamedAndItsHandleIsStored) {
  PutStoredWindow(0x1230);
  ASSERT_EQ(Start(), 1);
  ASSERT_EQ(device.screen.Anchors().size(), 1u);
  const test::AnchorWindow anchor = device.screen.Anchors()[0];
  EXPECT_EQ(anchor.style, ui::AnchorStyle::kVisible);
  EXPECT_EQ(anchor.title, u"Kelpin");
  EXPECT_EQ(state->mainWindow, anchor.handle);
  EXPECT_EQ(device.registry.Dword(RegistryRoot::kLocalMachine, kStateKey, u"KELPIN_HW"),
            anchor.handle);
  const auto flushed =
      device.registry.Flushed(RegistryRoot::kLocalMachine, kStateKey, u"KELPIN_HW");
  ASSERT_TRUE(flushed.has_value());
  EXPECT_EQ(flushed->type, platform::RegistryType::kDword);
  std::uint32_t handle = 0;
  ASSERT_EQ(flushed->data.size(), sizeof(handle));
  std::memcpy(&handle, flushed->data.data(), sizeof(handle));
  EXPECT_EQ(handle, anchor.handle);
  EXPECT_EQ(device.registry.OpenHandles(), 0u);
}

TEST_F(StartUpTest, WithoutItsAnchorTheProgramEndsSilently) {
  device.failures.FailCallOf("CreateAnchorWindow", 1);
  EXPECT_EQ(RunProgram(), 0);
  EXPECT_TRUE(Boxes().empty());
  EXPECT_EQ(Calls("CreateDialog"), 0u);
  EXPECT_FALSE(device.registry.Dword(RegistryRoot::kLocalMachine, kStateKey, u"KELPIN_HW"));
}

TEST_F(StartUpTest, TheMutexIsReleasedAndClosedAfterTheLoop) {
  CloseWhenServed();
  EXPECT_EQ(RunProgram(), 0);
  EXPECT_EQ(Calls("ReleaseMutex"), 1u);
  EXPECT_EQ(Calls("CloseMutex"), 1u);
  EXPECT_LT(Position("RunMessageLoop"), Position("ReleaseMutex"));
  EXPECT_LT(Position("ReleaseMutex"), Position("CloseMutex"));
}

TEST_F(StartUpTest, TheStoredHandleIsNoObstacleWhenTheKeyCannotBeMade) {
  device.registry.SetOpenResult(RegistryRoot::kLocalMachine, kStateKey, 0,
                                RegistryResult::kAccessDenied);
  EXPECT_EQ(Start(), 1);
  EXPECT_NE(device.screen.Find(res::kDialogMain), nullptr);
}

}  // namespace
}  // namespace kelpin::app
