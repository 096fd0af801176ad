#include "ui/dialog.h"

#include <optional>

#include "tests/ui/dialog_fixture.h"

namespace kelpin::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ui::NotifyCode;

TEST_F(DialogTest, StartsAsItsTemplateSays) {
  const auto dialog = Open();
  EXPECT_EQ(dialog->Resource(), kResource);
  EXPECT_EQ(dialog->HelpSection(), u"entry");
  EXPECT_EQ(dialog->Text(kLabel), u"Name:");
  EXPECT_TRUE(dialog->Control(kLabel)->bold);
  EXPECT_EQ(dialog->Control(kName)->labelledBy, kLabel);
  EXPECT_TRUE(dialog->Control(kGroup)->readOnly);
  EXPECT_FALSE(dialog->Enabled(kPlace));
  EXPECT_FALSE(dialog->Shown(kSecret));
  EXPECT_EQ(dialog->Controls().size(), 10u);
  EXPECT_THAT(dialog->ListControls(), ElementsAre(kList));
  EXPECT_EQ(dialog->Title(), u"");
}

TEST_F(DialogTest, ControlsItDoesNotHaveAreIgnoredAndReadEmpty) {
  const auto dialog = Open();
  dialog->SetText(999, u"x");
  dialog->Enable(999, true);
  dialog->SetFocus(999);
  dialog->EditByUser(999, u"x", 1);
  dialog->PressButton(999);
  EXPECT_EQ(dialog->Text(999), u"");
  EXPECT_FALSE(dialog->Enabled(999));
  EXPECT_FALSE(dialog->Shown(999));
  EXPECT_EQ(dialog->Control(999), std::nullopt);
  EXPECT_EQ(dialog->List(999), nullptr);
  EXPECT_EQ(dialog->List(kName), nullptr);
  EXPECT_THAT(handler_.calls, IsEmpty());
  EXPECT_THAT(handler_.notifications, IsEmpty());
}

TEST_F(DialogTest, InitialisesThenTellsTheSizeThenActivates) {
  const auto dialog = screen_.CreateDialog(kTemplate, 0x500, handler_);
  EXPECT_EQ(dialog->Owner(), 0x500u);
  EXPECT_THAT(handler_.calls, ElementsAre("init", "size 360x560"));
  screen_.ShowDialog(*dialog);
  EXPECT_THAT(handler_.calls, ElementsAre("init", "size 360x560", "active"));
  EXPECT_TRUE(dialog->Active());
}

TEST_F(DialogTest, TheClientSizeCanBeReadWhileInitialising) {
  ui::Size seen;
  handler_.onInit = [&](ui::Dialog& dialog) { seen = dialog.ClientSize(); };
  screen_.CreateDialog(kTemplate, 0, handler_);
  EXPECT_EQ(seen, (ui::Size{360, 560}));
}

TEST_F(DialogTest, TheSizeIsToldOnlyWhenItIsAnother) {
  const auto dialog = Open();
  screen_.SetClientSize({360, 560});
  EXPECT_THAT(handler_.calls, IsEmpty());
  screen_.SetClientSize({360, 300});
  EXPECT_THAT(handler_.calls, ElementsAre("size 360x300"));
}

TEST_F(DialogTest, SettingAnEditsTextTellsItAsTypingDoesAndSetsTheCaretFirst) {
  const auto dialog = Open();
  dialog->SetLimit(kName, 3);
  dialog->SetText(kName, u"longer than that");
  EXPECT_EQ(dialog->Text(kName), u"longer than that");
  EXPECT_EQ(dialog->Control(kName)->selectionStart, 0);
  EXPECT_EQ(dialog->Control(kName)->selectionEnd, 0);
  ASSERT_EQ(handler_.notifications.size(), 1u);
  EXPECT_EQ(handler_.notifications[0].code, NotifyCode::kEditUpdate);
  EXPECT_EQ(handler_.notifications[0].control, kName);
}

TEST_F(DialogTest, SettingALabelsTextTellsNothing) {
  const auto dialog = Open();
  dialog->SetText(kLabel, u"Phone:");
  EXPECT_EQ(dialog->Text(kLabel), u"Phone:");
  EXPECT_THAT(handler_.notifications, IsEmpty());
}

// An input filter as the edit dialogs have it: digits alone, the caret at the end.
TEST_F(DialogTest, AFilterMayReplaceTheTextWhileItIsTold) {
  const auto dialog = Open();
  int rounds = 0;
  handler_.onNotify = [&](ui::Dialog& self, const ui::Notification& notification) {
    if (notification.code != NotifyCode::kEditUpdate || notification.control != kPhone) {
      return;
    }
    ++rounds;
    std::u16string digits = self.Text(kPhone);
    std::erase_if(digits, [](char16_t unit) { return unit < u'0' || unit > u'9'; });
    if (digits != self.Text(kPhone)) {
      self.SetText(kPhone, digits);
      self.SetSelection(kPhone, static_cast<int>(digits.size()), -1);
    }
  };
  dialog->EditByUser(kPhone, u"12x3", 3);
  EXPECT_EQ(dialog->Text(kPhone), u"123");
  EXPECT_EQ(dialog->Control(kPhone)->selectionStart, 3);
  EXPECT_EQ(rounds, 2);
}

TEST_F(DialogTest, AnUnavailableTextIsToldDisablesTheEditAndLeavesWithTheNextText) {
  const auto dialog = Open();
  dialog->SetUnavailableText(kName, u"<Not available>");
  EXPECT_TRUE(dialog->Control(kName)->unavailable);
  EXPECT_FALSE(dialog->Enabled(kName));
  EXPECT_EQ(handler_.Of(NotifyCode::kEditUpdate).size(), 1u);
  dialog->SetText(kName, u"Ana");
  EXPECT_FALSE(dialog->Control(kName)->unavailable);
}

TEST_F(DialogTest, TypingIsCutToTheLimit) {
  const auto dialog = Open();
  dialog->SetLimit(kName, 4);
  dialog->EditByUser(kName, u"abcdef", 6);
  EXPECT_EQ(dialog->Text(kName), u"abcd");
  EXPECT_EQ(dialog->Control(kName)->selectionStart, 4);
}

TEST_F(DialogTest, WhatIsTypedIntoAFullEditIsRefusedAndItsEndStays) {
  const auto dialog = Open();
  dialog->SetLimit(kName, 4);
  dialog->SetText(kName, u"abcd");
  handler_.notifications.clear();
  dialog->EditByUser(kName, u"abXcd", 3);
  EXPECT_EQ(dialog->Text(kName), u"abcd");
  EXPECT_EQ(dialog->Control(kName)->selectionStart, 2);
  EXPECT_THAT(handler_.notifications, IsEmpty());
}

TEST_F(DialogTest, ATextLongerThanTheLimitCanBeShortened) {
  const auto dialog = Open();
  dialog->SetLimit(kName, 4);
  dialog->SetText(kName, u"abcdefgh");
  dialog->EditByUser(kName, u"abcdefg", 7);
  EXPECT_EQ(dialog->Text(kName), u"abcdefg");
}

TEST_F(DialogTest, TheLimitNeverLeavesHalfOfACharacter) {
  const auto dialog = Open();
  dialog->SetLimit(kName, 3);
  dialog->EditByUser(kName, u"ab\U0001F600", 4);
  EXPECT_EQ(dialog->Text(kName), u"ab");
}

TEST_F(DialogTest, ReadOnlyAndDisabledEditsTakeNoTyping) {
  const auto dialog = Open();
  dialog->EditByUser(kGroup, u"x", 1);
  dialog->EditByUser(kPlace, u"x", 1);
  EXPECT_EQ(dialog->Text(kGroup), u"");
  EXPECT_EQ(dialog->Text(kPlace), u"");
  EXPECT_THAT(handler_.notifications, IsEmpty());
}

TEST_F(DialogTest, MovingTheCaretTellsNothing) {
  const auto dialog = Open();
  dialog->EditByUser(kName, u"abc", 3);
  handler_.notifications.clear();
  dialog->EditByUser(kName, u"abc", 1);
  EXPECT_EQ(dialog->Control(kName)->selectionStart, 1);
  EXPECT_THAT(handler_.notifications, IsEmpty());
}

TEST_F(DialogTest, PastingReplacesTheSelectionWithWhatFits) {
  const auto dialog = Open();
  dialog->SetLimit(kName, 6);
  dialog->SetText(kName, u"abcdef");
  dialog->SetSelection(kName, 1, 3);
  EXPECT_EQ(dialog->SelectedText(kName), u"bc");
  dialog->ReplaceSelection(kName, u"XYZ");
  EXPECT_EQ(dialog->Text(kName), u"aXYdef");
  EXPECT_EQ(dialog->Control(kName)->selectionStart, 3);
}

TEST_F(DialogTest, ASelectionEndsAtTheTextsEnd) {
  const auto dialog = Open();
  dialog->SetText(kName, u"abc");
  dialog->SetSelection(kName, 0, -1);
  EXPECT_EQ(dialog->SelectedText(kName), u"abc");
  dialog->SetSelection(kName, 2, 99);
  EXPECT_EQ(dialog->SelectedText(kName), u"c");
  EXPECT_EQ(dialog->SelectedText(999), u"");
}

TEST_F(DialogTest, TheFirstControlThatCanHasTheFocusAtFirst) {
  const auto dialog = Open();
  EXPECT_EQ(dialog->Focus(), kName);
}

TEST_F(DialogTest, AFocusSetWhileInitialisingStays) {
  handler_.onInit = [](ui::Dialog& dialog) { dialog.SetFocus(kPhone); };
  EXPECT_EQ(Open()->Focus(), kPhone);
}

TEST_F(DialogTest, EditsTellThatTheyLoseAndTakeTheFocus) {
  const auto dialog = Open();
  dialog->FocusByUser(kPhone);
  ASSERT_EQ(handler_.notifications.size(), 2u);
  EXPECT_EQ(handler_.notifications[0].code, NotifyCode::kEditLeave);
  EXPECT_EQ(handler_.notifications[0].control, kName);
  EXPECT_EQ(handler_.notifications[1].code, NotifyCode::kEditFocus);
  EXPECT_EQ(handler_.notifications[1].control, kPhone);
  dialog->FocusByUser(kPhone);
  dialog->FocusByUser(kButton);
  EXPECT_EQ(handler_.notifications.size(), 3u);
}

TEST_F(DialogTest, DisabledHiddenAndStaticControlsTakeNoFocus) {
  const auto dialog = Open();
  dialog->Show(kPhone, false);
  for (const int control : {kPlace, kPhone, kLabel, kBar}) {
    dialog->SetFocus(control);
    EXPECT_EQ(dialog->Focus(), kName);
  }
}

TEST_F(DialogTest, AControlThatIsDisabledGivesTheFocusToTheNext) {
  const auto dialog = Open();
  dialog->Enable(kName, false);
  EXPECT_EQ(dialog->Focus(), kPhone);
  dialog->Show(kPhone, false);
  EXPECT_EQ(dialog->Focus(), kGroup);
  dialog->SetFocus(kList);
  dialog->Enable(kList, false);
  EXPECT_EQ(dialog->Focus(), kGroup);
}

TEST_F(DialogTest, ALongPressOnAnEditTakesTheFocusAndTellsWhere) {
  const auto dialog = Open();
  dialog->LongPressEdit(kPhone, {7, 9});
  EXPECT_EQ(dialog->Focus(), kPhone);
  const auto presses = handler_.Of(NotifyCode::kEditPress);
  ASSERT_EQ(presses.size(), 1u);
  EXPECT_EQ(presses[0].control, kPhone);
  EXPECT_EQ(presses[0].point, (ui::Point{7, 9}));
  dialog->LongPressEdit(kPlace, {7, 9});
  dialog->LongPressEdit(kList, {7, 9});
  EXPECT_EQ(handler_.Of(NotifyCode::kEditPress).size(), 1u);
}

TEST_F(DialogTest, AListsNotificationsCarryItsControl) {
  const auto dialog = Open();
  dialog->List(kList)->InsertItem(0, u"row", nullptr);
  dialog->List(kList)->Click(0, 0, ui::kNoModifier);
  ASSERT_EQ(handler_.notifications.size(), 3u);
  EXPECT_EQ(handler_.notifications[2].code, NotifyCode::kClick);
  EXPECT_EQ(handler_.notifications[2].control, kList);
}

TEST_F(DialogTest, ProgressStaysWithinItsRange) {
  const auto dialog = Open();
  dialog->SetProgressRange(kBar, 0, 30, 10);
  dialog->SetProgress(kBar, 0);
  for (int i = 0; i < 2; ++i) {
    dialog->StepProgress(kBar);
  }
  EXPECT_EQ(dialog->Control(kBar)->progressPosition, 20);
  dialog->StepProgress(kBar);
  dialog->StepProgress(kBar);
  EXPECT_EQ(dialog->Control(kBar)->progressPosition, 30);
  dialog->SetProgress(kBar, -5);
  EXPECT_EQ(dialog->Control(kBar)->progressPosition, 0);
}

TEST_F(DialogTest, KeepsWhatIsOnlyDrawn) {
  const auto dialog = Open();
  dialog->SetTitle(u"Kelpin");
  dialog->SetFullScreen(true, true);
  dialog->SetBold(kLabel, true);
  dialog->SetColor(kLabel, ui::TextColor::kError);
  dialog->SetInputMode(kPhone, ui::InputMode::kNumbers);
  dialog->SetBounds(kName, {1, 2, 3, 4});
  dialog->ScrollIntoView(kGroup);
  EXPECT_EQ(dialog->Title(), u"Kelpin");
  EXPECT_TRUE(dialog->HasDoneButton());
  EXPECT_TRUE(dialog->InputPanelDown());
  EXPECT_EQ(dialog->Control(kLabel)->color, ui::TextColor::kError);
  EXPECT_EQ(dialog->Control(kPhone)->inputMode, ui::InputMode::kNumbers);
  EXPECT_EQ(dialog->Bounds(kName), (ui::Rect{1, 2, 3, 4}));
  EXPECT_EQ(dialog->TakeScrollIntoView(), kGroup);
  EXPECT_EQ(dialog->TakeScrollIntoView(), 0);
}

TEST_F(DialogTest, AsksToBeDrawnOnlyWhenSomethingChanged) {
  const auto dialog = Open();
  dialog->SetText(kLabel, u"a");
  const std::uint64_t before = screen_.Repaints();
  dialog->SetText(kLabel, u"a");
  dialog->Enable(kName, true);
  dialog->SetTitle(u"");
  EXPECT_EQ(screen_.Repaints(), before);
  dialog->Enable(kName, false);
  EXPECT_GT(screen_.Repaints(), before);
}

TEST_F(DialogTest, PostedCallsComeLaterInOrder) {
  const auto dialog = Open();
  dialog->PostMessage(0x464, 1, 2);
  dialog->PostCommand(319);
  dialog->PostMessage(0x471);
  dialog->PostClose();
  EXPECT_THAT(handler_.calls, IsEmpty());
  screen_.RunPending();
  EXPECT_THAT(handler_.calls, ElementsAre("message 1124 1 2", "command 319", "message 1137 0 0",
                                          "close", "inactive", "destroy"));
}

TEST_F(DialogTest, TheFirstResultCounts) {
  const auto dialog = Open();
  EXPECT_FALSE(dialog->Ended());
  dialog->End(16);
  dialog->End(99);
  EXPECT_TRUE(dialog->Ended());
  EXPECT_EQ(dialog->Result(), 16);
}

TEST_F(DialogTest, TheCloseBoxEndsWithTheUsualResult) {
  const auto dialog = Open();
  dialog->Close();
  EXPECT_EQ(dialog->Result(), ui::kDialogDone);
  EXPECT_EQ(ui::kDialogDone, 16);
}

TEST_F(DialogTest, NothingPostedRunsOnceTheDialogHasEnded) {
  const auto dialog = Open();
  dialog->PostCommand(1);
  dialog->PostMessage(0x464);
  dialog->PostClose();
  dialog->End(16);
  screen_.RunPending();
  EXPECT_THAT(handler_.calls, ElementsAre("inactive", "destroy"));
}

TEST_F(DialogTest, TheUserCannotActOnADialogThatHasEnded) {
  const auto dialog = OpenWithKeys();
  dialog->End(16);
  dialog->Command(ui::kCommandOk);
  dialog->PressSoftKey(0);
  dialog->PressButton(kButton);
  dialog->Close();
  EXPECT_FALSE(dialog->KeyDown(Press(ui::Key::kEscape)));
  EXPECT_THAT(handler_.calls, IsEmpty());
}

TEST_F(DialogTest, NothingOfTheHandlerRunsAfterDestruction) {
  const auto dialog = OpenWithKeys();
  dialog->End(16);
  screen_.RunPending();
  handler_.calls.clear();
  handler_.notifications.clear();
  dialog->SetText(kName, u"x");
  dialog->List(kList)->InsertItem(0, u"x", nullptr);
  dialog->Command(1);
  dialog->PressButton(kButton);
  dialog->PostCommand(1);
  dialog->PostMessage(1);
  dialog->Resize({1, 1});
  dialog->Activate(true);
  dialog->Help();
  dialog->Close();
  dialog->SettingsChanged();
  EXPECT_FALSE(dialog->HotKey(27, 0));
  dialog->Destroyed();
  dialog->End(3);
  screen_.RunPending();
  EXPECT_THAT(handler_.calls, IsEmpty());
  EXPECT_THAT(handler_.notifications, IsEmpty());
}

TEST_F(DialogTest, TheHandlersRoutineEndsBeforeItsDialogIsDestroyed) {
  handler_.onCommand = [&](ui::Dialog& dialog, int) {
    dialog.End(16);
    handler_.calls.push_back("after the end");
  };
  const auto dialog = Open();
  dialog->Command(5);
  screen_.RunPending();
  EXPECT_THAT(handler_.calls, ElementsAre("command 5", "after the end", "inactive", "destroy"));
}

TEST_F(DialogTest, TheHandlerMayReadTheDialogWhileItIsDestroyed) {
  struct Reader : HandlerRecorder {
    void OnDestroy(ui::Dialog& dialog) override { text = dialog.Text(kName); }
    std::u16string text;
  } reader;
  const auto dialog = screen_.CreateDialog(kTemplate, 0, reader);
  dialog->SetText(kName, u"Ana");
  dialog->End(16);
  screen_.RunPending();
  EXPECT_EQ(reader.text, u"Ana");
}

TEST_F(DialogTest, SettingsAndHelpReachTheHandler) {
  const auto dialog = Open();
  dialog->SettingsChanged();
  dialog->Help();
  EXPECT_THAT(handler_.calls, ElementsAre("settings", "help"));
}

TEST_F(DialogTest, APopUpsChoiceIsACommand) {
  const auto dialog = OpenWithKeys();
  const auto menu = std::make_shared<ui::Menu>();
  menu->Append(kEditCommand, u"Edit...");
  menu->Append(768, u"Cut", false);
  dialog->ShowPopup(menu, {3, 4});
  ASSERT_EQ(screen_.Popups().size(), 1u);
  EXPECT_EQ(screen_.Popups()[0].resource, kResource);
  EXPECT_EQ(screen_.Popups()[0].point, (ui::Point{3, 4}));
  EXPECT_TRUE(screen_.ChoosePopup(kEditCommand));
  EXPECT_THAT(handler_.calls, ElementsAre("command 314"));
  EXPECT_FALSE(screen_.ChoosePopup(kEditCommand)) << "it closed with the choice";
  dialog->ShowPopup(menu, {3, 4});
  EXPECT_FALSE(screen_.ChoosePopup(768)) << "it is greyed";
}

}  // namespace
}  // namespace kelpin::test
