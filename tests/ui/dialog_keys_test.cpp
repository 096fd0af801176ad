#include "tests/ui/dialog_fixture.h"

// Soft keys, accelerators and keys of a dialog.
namespace kelpin::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ui::Key;

TEST_F(DialogTest, ASoftKeyGivesItsCommand) {
  const auto dialog = OpenWithKeys();
  dialog->PressSoftKey(0);
  EXPECT_THAT(handler_.calls, ElementsAre("command 312"));
}

TEST_F(DialogTest, ADropDownAMissingAndADisabledKeyGiveNone) {
  const auto dialog = OpenWithKeys();
  dialog->PressSoftKey(1);
  dialog->PressSoftKey(2);
  dialog->Bar()->EnableSoftKey(0, false);
  dialog->PressSoftKey(0);
  dialog->DestroyMenuBar();
  dialog->PressSoftKey(0);
  EXPECT_THAT(handler_.calls, IsEmpty());
}

TEST_F(DialogTest, AGreyedCommandIsNotDelivered) {
  const auto dialog = OpenWithKeys();
  dialog->Bar()->SubMenu(kMenuKey)->EnableItem(kDeleteCommand, false);
  dialog->Command(kDeleteCommand);
  EXPECT_THAT(handler_.calls, IsEmpty());
  dialog->Bar()->SubMenu(kMenuKey)->EnableItem(kDeleteCommand, true);
  dialog->Command(kDeleteCommand);
  EXPECT_THAT(handler_.calls, ElementsAre("command 315"));
}

TEST_F(DialogTest, ACommandPostedByTheProgramIsDeliveredThoughItsKeyIsDisabled) {
  const auto dialog = OpenWithKeys();
  dialog->Bar()->EnableSoftKey(0, false);
  dialog->Bar()->EnableSoftKey(1, false);
  dialog->PostCommand(kSelectAll);
  screen_.RunPending();
  EXPECT_THAT(handler_.calls, ElementsAre("command 319"));
}

TEST_F(DialogTest, ABarsChangeHasTheDialogDrawn) {
  const auto dialog = OpenWithKeys();
  const std::uint64_t before = screen_.Repaints();
  dialog->Bar()->SubMenu(kMenuKey)->EnableItem(kDeleteCommand, false);
  EXPECT_GT(screen_.Repaints(), before);
}

TEST_F(DialogTest, ANewBarReplacesTheOld) {
  const auto dialog = OpenWithKeys();
  const ui::MenuBar* second = dialog->CreateMenuBar({.id = 310, .keys = {}});
  EXPECT_EQ(dialog->Bar().get(), second);
  dialog->DestroyMenuBar();
  EXPECT_EQ(dialog->Bar(), nullptr);
}

TEST_F(DialogTest, AButtonAndACheckBoxGiveTheirOwnIdsAsCommands) {
  const auto dialog = OpenWithKeys();
  dialog->PressButton(kButton);
  dialog->PressCheckBox(kCheck);
  EXPECT_TRUE(dialog->Checked(kCheck));
  EXPECT_THAT(handler_.calls, ElementsAre("command 106", "command 107"));
  dialog->PressCheckBox(kCheck);
  EXPECT_FALSE(dialog->Checked(kCheck));
}

TEST_F(DialogTest, ADisabledButtonOrCheckBoxCannotBePressed) {
  const auto dialog = Open();
  dialog->Enable(kButton, false);
  dialog->Enable(kCheck, false);
  dialog->PressButton(kButton);
  dialog->PressCheckBox(kCheck);
  EXPECT_FALSE(dialog->Checked(kCheck));
  EXPECT_THAT(handler_.calls, IsEmpty());
}

TEST_F(DialogTest, EnterIsOkAndEscapeIsCancel) {
  const auto dialog = Open();
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kEnter)));
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kEscape)));
  EXPECT_THAT(handler_.calls, ElementsAre("command 1", "command 2"));
}

TEST_F(DialogTest, EnterAndSpacePressAFocusedButton) {
  const auto dialog = OpenWithKeys();
  dialog->SetFocus(kButton);
  handler_.calls.clear();
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kEnter)));
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kSpace)));
  EXPECT_THAT(handler_.calls, ElementsAre("command 106", "command 106"));
}

TEST_F(DialogTest, SpaceTogglesAFocusedCheckBoxAndEnterIsOk) {
  const auto dialog = Open();
  dialog->SetFocus(kCheck);
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kSpace)));
  EXPECT_TRUE(dialog->Checked(kCheck));
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kEnter)));
  EXPECT_THAT(handler_.calls, ElementsAre("command 107", "command 1"));
}

TEST_F(DialogTest, F1IsHelp) {
  const auto dialog = Open();
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kF1)));
  EXPECT_THAT(handler_.calls, ElementsAre("help"));
}

TEST_F(DialogTest, TheCallAndBackKeysAreHotKeysWithTheirModifiers) {
  const auto dialog = Open();
  EXPECT_FALSE(dialog->KeyDown(Press(Key::kTalk)));
  handler_.usesHotKeys = true;
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kTalk, ui::kShift)));
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kBack)));
  EXPECT_THAT(handler_.calls, ElementsAre("hot key 114 0", "hot key 114 1", "hot key 27 0"));
}

TEST_F(DialogTest, AcceleratorsWorkFromTheList) {
  const auto dialog = OpenWithKeys();
  dialog->SetFocus(kList);
  handler_.calls.clear();
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kDelete)));
  EXPECT_TRUE(dialog->KeyDown(Type(u'A', ui::kControl)));
  EXPECT_TRUE(dialog->KeyDown(Type(u'C', ui::kControl)));
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kF2)));
  EXPECT_THAT(handler_.calls,
              ElementsAre("command 315", "command 319", "command 400", "command 314"));
}

TEST_F(DialogTest, AnAcceleratorNeedsItsModifiers) {
  const auto dialog = OpenWithKeys();
  dialog->SetFocus(kList);
  EXPECT_FALSE(dialog->KeyDown(Press(Key::kDelete, ui::kShift)));
  EXPECT_FALSE(dialog->KeyDown(Type(u'N', ui::kControl | ui::kShift)));
  EXPECT_THAT(handler_.calls, IsEmpty());
}

TEST_F(DialogTest, AnAcceleratorOfAGreyedCommandDoesNothing) {
  const auto dialog = OpenWithKeys();
  dialog->SetFocus(kList);
  dialog->Bar()->SubMenu(kMenuKey)->EnableItem(kDeleteCommand, false);
  EXPECT_FALSE(dialog->KeyDown(Press(Key::kDelete)));
  EXPECT_THAT(handler_.calls, IsEmpty());
}

TEST_F(DialogTest, WhatAnEditNeedsForEditingIsNoAcceleratorThere) {
  const auto dialog = OpenWithKeys();
  ASSERT_EQ(dialog->Focus(), kName);
  for (const ui::KeyPress& press :
       {Press(Key::kDelete), Press(Key::kBackspace), Press(Key::kHome), Press(Key::kEnd),
        Press(Key::kLeft), Press(Key::kRight), Press(Key::kLeft, ui::kControl), Press(Key::kSpace),
        Type(u'X'), Type(u'X', ui::kShift), Type(u'A', ui::kControl), Type(u'C', ui::kControl),
        Type(u'V', ui::kControl), Type(u'N', ui::kControl | ui::kAlt)}) {
    EXPECT_FALSE(dialog->KeyDown(press));
  }
  EXPECT_THAT(handler_.calls, IsEmpty());
}

TEST_F(DialogTest, OtherAcceleratorsWorkFromAnEdit) {
  const auto dialog = OpenWithKeys();
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kF2)));
  EXPECT_TRUE(dialog->KeyDown(Type(u'N', ui::kControl)));
  EXPECT_THAT(handler_.calls, ElementsAre("command 314", "command 312"));
}

TEST_F(DialogTest, TheListsFilterComesBeforeAccelerators) {
  const auto dialog = OpenWithKeys();
  dialog->List(kList)->SetKeyFilter([&](const ui::KeyPress& press) {
    handler_.calls.push_back("filter");
    return press.key == Key::kDelete;
  });
  dialog->SetFocus(kList);
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kDelete)));
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kF2)));
  EXPECT_THAT(handler_.calls, ElementsAre("filter", "filter", "command 314"));
}

TEST_F(DialogTest, TheListsFilterIsNotAskedWhenTheFocusIsElsewhere) {
  const auto dialog = OpenWithKeys();
  dialog->List(kList)->SetKeyFilter([&](const ui::KeyPress&) { return true; });
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kEscape)));
  EXPECT_THAT(handler_.calls, ElementsAre("command 2"));
}

TEST_F(DialogTest, AcceleratorsComeBeforeTheListsOwnKeys) {
  const auto dialog = OpenWithKeys();
  ui::ListView* list = dialog->List(kList);
  Fill(*list, 3);
  dialog->SetFocus(kList);
  handler_.notifications.clear();
  EXPECT_TRUE(dialog->KeyDown(Type(u'A', ui::kControl)));
  EXPECT_EQ(list->SelectedCount(), 0) << "the command selects, not the list";
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kDown)));
  EXPECT_EQ(list->FocusedItem(), 0);
}

TEST_F(DialogTest, EnterInAListActivatesItsRowOrElseIsOk) {
  const auto dialog = OpenWithKeys();
  ui::ListView* list = dialog->List(kList);
  dialog->SetFocus(kList);
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kEnter)));
  EXPECT_THAT(handler_.calls, ElementsAre("command 1")) << "there is no row";
  Fill(*list, 2);
  dialog->KeyDown(Press(Key::kDown));
  handler_.notifications.clear();
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kEnter)));
  ASSERT_EQ(handler_.notifications.size(), 1u);
  EXPECT_EQ(handler_.notifications[0].code, ui::NotifyCode::kItemActivated);
  list->SetExtendedStyle(ui::kListCheckBoxes);
  handler_.calls.clear();
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kEnter)));
  EXPECT_THAT(handler_.calls, ElementsAre("command 1")) << "boxes are confirmed, not activated";
}

TEST_F(DialogTest, ADisabledOkIsNotGivenByEnter) {
  constexpr ui::SoftKeyTemplate kOkKey[] = {{.command = ui::kCommandOk, .text = u"OK"}};
  const auto dialog = Open();
  dialog->CreateMenuBar({.id = 303, .keys = kOkKey})->EnableSoftKey(0, false);
  EXPECT_TRUE(dialog->KeyDown(Press(Key::kEnter)));
  EXPECT_THAT(handler_.calls, IsEmpty());
}

TEST_F(DialogTest, KeysOfNobodyAreNotUsedUp) {
  const auto dialog = OpenWithKeys();
  dialog->SetFocus(kButton);
  EXPECT_FALSE(dialog->KeyDown(Press(Key::kTab)));
  EXPECT_FALSE(dialog->KeyDown(Press(Key::kF4)));
  EXPECT_FALSE(dialog->KeyDown(Press(Key::kEnter, ui::kAlt)));
}

}  // namespace
}  // namespace kelpin::test
