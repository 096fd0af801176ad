#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QLineEdit>
#include <QTest>

#include "tests/gui/gui_support.h"

namespace kelpin::test {
namespace {

class EditOnScreen : public GuiTest {
 protected:
  void Open() {
    dialog_ = Show(kFormTemplate, handler_);
    name_ = Find<QLineEdit>(*dialog_, "c" + std::to_string(kNameEdit));
    number_ = Find<QLineEdit>(*dialog_, "c" + std::to_string(kNumberEdit));
    third_ = Find<QLineEdit>(*dialog_, "c" + std::to_string(kThirdEdit));
    handler_.notifications.clear();
  }

  SampleDialog handler_{*screen_};
  std::shared_ptr<ui::Dialog> dialog_;
  QLineEdit* name_ = nullptr;
  QLineEdit* number_ = nullptr;
  QLineEdit* third_ = nullptr;
};

TEST_F(EditOnScreen, WhatIsTypedReachesTheDialogWithItsUpdates) {
  Open();
  name_->setFocus();
  name_->selectAll();
  QTest::keyClicks(name_, QStringLiteral("Ada"));
  EXPECT_EQ(dialog_->Text(kNameEdit), u"Ada");
  EXPECT_EQ(handler_.Count(ui::NotifyCode::kEditUpdate), 3u);
  EXPECT_EQ(dialog_->Focus(), kNameEdit);
}

TEST_F(EditOnScreen, TheFirstFieldHasTheFocusAndNothingSelected) {
  Open();
  EXPECT_TRUE(name_->hasFocus());
  EXPECT_FALSE(name_->hasSelectedText());
}

TEST_F(EditOnScreen, TypingStopsAtTheLimitAndAPasteIsCut) {
  Open();
  dialog_->SetText(kNameEdit, u"");
  dialog_->SetLimit(kNameEdit, 4);
  Settle();
  QTest::keyClicks(name_, QStringLiteral("abcdef"));
  EXPECT_EQ(dialog_->Text(kNameEdit), u"abcd");
  QGuiApplication::clipboard()->setText(QStringLiteral("0123456789"));
  name_->selectAll();
  name_->paste();
  EXPECT_EQ(dialog_->Text(kNameEdit), u"0123");
  EXPECT_EQ(name_->text(), QStringLiteral("0123"));
}

TEST_F(EditOnScreen, AProgramsTextLongerThanTheLimitStaysWhole) {
  Open();
  dialog_->SetLimit(kNameEdit, 4);
  dialog_->SetText(kNameEdit, u"longer than four");
  Settle();
  EXPECT_EQ(name_->text(), QStringLiteral("longer than four"));
  EXPECT_EQ(name_->cursorPosition(), 0);
}

// As the program's input filters do: digits alone, the caret at the end when any were dropped.
void KeepDigits(ui::Dialog& dialog, const ui::Notification& notification) {
  if (notification.control != kNumberEdit || notification.code != ui::NotifyCode::kEditUpdate) {
    return;
  }
  const std::u16string text = dialog.Text(kNumberEdit);
  std::u16string digits;
  for (const char16_t c : text) {
    if (c >= u'0' && c <= u'9') {
      digits += c;
    }
  }
  if (digits != text) {
    dialog.SetText(kNumberEdit, digits);
    dialog.SetSelection(kNumberEdit, static_cast<int>(digits.size()), -1);
  }
}

TEST_F(EditOnScreen, AFilterReplacesWhatIsTyped) {
  Open();
  dialog_->SetText(kNumberEdit, u"");
  Settle();
  handler_.notify = KeepDigits;
  number_->setFocus();
  QTest::keyClicks(number_, QStringLiteral("1a2b"));
  EXPECT_EQ(number_->text(), QStringLiteral("12"));
  EXPECT_EQ(dialog_->Text(kNumberEdit), u"12");
  EXPECT_EQ(number_->cursorPosition(), 2);
}

TEST_F(EditOnScreen, UndoGoesBackPastWhatAFilterRefused) {
  Open();
  dialog_->SetText(kNumberEdit, u"");
  Settle();
  handler_.notify = KeepDigits;
  number_->setFocus();
  QTest::keyClicks(number_, QStringLiteral("12"));
  QTest::keyClicks(number_, QStringLiteral("x"));
  EXPECT_EQ(number_->text(), QStringLiteral("12"));
  for (int i = 0; i < 4; ++i) {
    QTest::keyClick(number_, Qt::Key_Z, Qt::ControlModifier);
  }
  EXPECT_EQ(number_->text(), QString());
  EXPECT_EQ(dialog_->Text(kNumberEdit), u"");
}

TEST_F(EditOnScreen, AFilterThatSaysNothingOfTheCaretLeavesItWhereItWas) {
  Open();
  dialog_->SetText(kNameEdit, u"abcd");
  Settle();
  handler_.notify = [](ui::Dialog& dialog, const ui::Notification& notification) {
    const std::u16string text = dialog.Text(kNameEdit);
    if (notification.control == kNameEdit && text.find(u'-') != std::u16string::npos) {
      std::u16string kept;
      for (const char16_t c : text) {
        if (c != u'-') {
          kept += c;
        }
      }
      dialog.SetText(kNameEdit, kept);
    }
  };
  name_->setCursorPosition(2);
  QTest::keyClicks(name_, QStringLiteral("-"));
  EXPECT_EQ(name_->text(), QStringLiteral("abcd"));
  EXPECT_EQ(name_->cursorPosition(), 2);
}

TEST_F(EditOnScreen, TheSelectionIsTheDialogsBothWays) {
  Open();
  name_->setSelection(1, 3);
  EXPECT_EQ(dialog_->SelectedText(kNameEdit), u"üll");
  dialog_->SetSelection(kNameEdit, 0, -1);
  Settle();
  EXPECT_EQ(name_->selectedText(), name_->text());
  dialog_->ReplaceSelection(kNameEdit, u"Neu");
  Settle();
  EXPECT_EQ(name_->text(), QStringLiteral("Neu"));
  EXPECT_EQ(name_->cursorPosition(), 3);
}

TEST_F(EditOnScreen, AnUnavailableFieldIsItalicAndCannotBeTypedInto) {
  Open();
  EXPECT_EQ(third_->text(), QStringLiteral("<Not available>"));
  EXPECT_TRUE(third_->font().italic());
  EXPECT_FALSE(third_->isEnabled());
  EXPECT_FALSE(name_->font().italic());
}

TEST_F(EditOnScreen, FieldsHaveTheNamesOfTheirLabels) {
  Open();
  EXPECT_EQ(name_->accessibleName(), QStringLiteral("Name"));
  EXPECT_EQ(number_->accessibleName(), QStringLiteral("Phone Number"));
  EXPECT_EQ(Find<QWidget>(*dialog_, "c" + std::to_string(kNumberButton))->accessibleName(),
            QStringLiteral("Phone Number ..."));
}

TEST_F(EditOnScreen, ALongPressAndTheRightButtonAskForTheEditMenu) {
  Open();
  const QPoint at(20, name_->height() / 2);
  QTest::mousePress(name_, Qt::LeftButton, Qt::NoModifier, at);
  EXPECT_TRUE(ServeUntil([&] { return handler_.Count(ui::NotifyCode::kEditPress) > 0; }));
  QTest::mouseRelease(name_, Qt::LeftButton, Qt::NoModifier, at);
  EXPECT_EQ(handler_.Count(ui::NotifyCode::kEditPress), 1u);
  QContextMenuEvent event(QContextMenuEvent::Mouse, at, name_->mapToGlobal(at));
  QApplication::sendEvent(name_, &event);
  EXPECT_EQ(handler_.Count(ui::NotifyCode::kEditPress), 2u);
}

TEST_F(EditOnScreen, TabGoesThroughTheFieldsInOrderAndTellsTheDialog) {
  Open();
  std::vector<int> visited = {dialog_->Focus()};
  for (int i = 0; i < 4; ++i) {
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    visited.push_back(dialog_->Focus());
  }
  // The third field is disabled; the number's button stands before its field.
  EXPECT_EQ(visited,
            (std::vector<int>{kNameEdit, kNumberButton, kNumberEdit, kThirdButton, kEverybody}));
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget()->objectName(), QStringLiteral("key0"));
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget()->objectName(), QStringLiteral("key1"));
}

TEST_F(EditOnScreen, TheProgramMovesTheFocus) {
  Open();
  dialog_->SetFocus(kNumberEdit);
  Settle();
  EXPECT_TRUE(number_->hasFocus());
}

TEST_F(EditOnScreen, ButtonsAndCheckBoxesGiveTheirCommands) {
  Open();
  QTest::mouseClick(Find<QWidget>(*dialog_, "c" + std::to_string(kNumberButton)), Qt::LeftButton);
  auto* box = Find<QWidget>(*dialog_, "c" + std::to_string(kEverybody));
  QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, QPoint(12, box->height() / 2));
  EXPECT_EQ(handler_.commands, (std::vector<int>{kNumberButton, kEverybody}));
  EXPECT_TRUE(dialog_->Checked(kEverybody));
  box->setFocus();
  QTest::keyClick(box, Qt::Key_Space);
  EXPECT_FALSE(dialog_->Checked(kEverybody));
}

TEST_F(EditOnScreen, NothingToPressIsSmallerThanAFinger) {
  Open();
  for (const int control : {kNameEdit, kNumberButton, kEverybody}) {
    EXPECT_GE(Find<QWidget>(*dialog_, "c" + std::to_string(control))->height(), 40) << control;
  }
  for (const char* key : {"key0", "key1"}) {
    EXPECT_GE(Find<QWidget>(*dialog_, key)->height(), 40);
  }
}

TEST_F(EditOnScreen, AFormHigherThanTheWindowScrollsToItsFocus) {
  Open();
  WindowOf(*dialog_)->resize(360, 300);
  Settle();
  auto* box = Find<QWidget>(*dialog_, "c" + std::to_string(kEverybody));
  box->setFocus();
  const QRect visible(WindowOf(*dialog_)->rect().adjusted(0, 0, 0, -56));
  EXPECT_TRUE(visible.contains(QRect(box->mapTo(WindowOf(*dialog_), QPoint(0, 0)), box->size())));
}

// Also where there was room enough for its caret before.
TEST_F(EditOnScreen, AFieldThatTakesTheFocusIsSeenWhole) {
  Open();
  auto* first = Find<QWidget>(*dialog_, "c" + std::to_string(kNameEdit));
  auto* last = Find<QWidget>(*dialog_, "c" + std::to_string(kNumberEdit));
  for (int height = 180; height <= 260; height += 8) {
    WindowOf(*dialog_)->resize(360, height);
    Settle();
    first->setFocus();
    last->setFocus();
    const QRect visible(WindowOf(*dialog_)->rect().adjusted(0, 0, 0, -56));
    EXPECT_TRUE(
        visible.contains(QRect(last->mapTo(WindowOf(*dialog_), QPoint(0, 0)), last->size())))
        << height;
  }
}

}  // namespace
}  // namespace kelpin::test
