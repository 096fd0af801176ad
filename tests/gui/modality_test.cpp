#include <QAbstractButton>
#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QTest>
#include <QTimer>

#include "tests/gui/gui_support.h"

// A screen reader can press what a modal window has put out of reach.
namespace kelpin::test {
namespace {

class Modality : public GuiTest {
 protected:
  static void Press(QObject* object) {
    QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(object);
    ASSERT_NE(spoken, nullptr);
    ASSERT_NE(spoken->actionInterface(), nullptr);
    spoken->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  }
  // Runs `look` with a message box over `owner`, and answers it.
  void UnderABox(const ui::Dialog& owner, const std::function<void()>& look) {
    bool looked = false;
    QTimer::singleShot(30, [&] {
      ASSERT_NE(OpenBox(), nullptr);
      look();
      QTest::qWait(300);  // a press by the tree takes its time, and a choice is told later
      looked = true;
      OpenBox()->reject();
    });
    screen_->MessageBox(owner.Handle(), u"Done.", u"Info", ui::kBoxNotice);
    EXPECT_TRUE(looked);
  }
};

TEST_F(Modality, KeysAndMenuItemsUnderADialogAreDropped) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  auto* const left = Find<qt::SoftKeyButton>(*dialog, "key0");
  auto* const right = Find<qt::SoftKeyButton>(*dialog, "key1");
  QAction* const refresh =
      right->Menu()->findChild<QAction*>(QStringLiteral("command%1").arg(kRefresh));
  UnderABox(*dialog, [&] {
    QAccessibleInterface* const menu = QAccessible::queryAccessibleInterface(right->Menu());
    menu->child(3)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    refresh->trigger();
    Press(left);
    Press(right);
  });
  EXPECT_TRUE(handler.commands.empty());
  EXPECT_FALSE(right->Menu()->isVisible());
  // At rest each does what it says.
  Press(left);
  EXPECT_TRUE(ServeUntil([&] { return handler.commands == std::vector<int>{kNew}; }));
  refresh->trigger();
  EXPECT_TRUE(ServeUntil([&] { return handler.commands == std::vector<int>({kNew, kRefresh}); }));
}

TEST_F(Modality, ButtonsAndCheckBoxesUnderABoxAreDropped) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kFormTemplate, handler);
  auto* const button = Find<QAbstractButton>(*dialog, "c" + std::to_string(kNumberButton));
  auto* const box = Find<QCheckBox>(*dialog, "c" + std::to_string(kEverybody));
  const bool checked = box->isChecked();
  handler.commands.clear();
  UnderABox(*dialog, [&] {
    Press(button);
    box->click();
  });
  EXPECT_TRUE(handler.commands.empty());
  EXPECT_EQ(box->isChecked(), checked);
  EXPECT_EQ(dialog->Checked(kEverybody), checked);
  box->click();
  EXPECT_EQ(dialog->Checked(kEverybody), !checked);
}

TEST_F(Modality, TheWindowInFrontIsNotBlockedByItself) {
  SampleDialog owner(*screen_);
  const auto dialog = Show(kListTemplate, owner);
  SampleDialog form(*screen_);
  form.command = [](ui::Dialog& one, int command) {
    if (command == kDone) one.End(5);
  };
  QTimer::singleShot(50, [&] {
    ASSERT_NE(OpenWindow(kFormDialog), nullptr);
    Press(OpenWindow(kFormDialog)->findChild<QWidget*>(QStringLiteral("key0")));
  });
  EXPECT_EQ(screen_->DialogBox(kFormTemplate, dialog->Handle(), form), 5);
}

// The second of two items that were pressed at once comes when the first one's dialog is open.
TEST_F(Modality, WhatWasChosenBeforeADialogOpenedDoesNotComeUnderIt) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  auto* const menu = Find<qt::SoftKeyButton>(*dialog, "key1")->Menu();
  bool answered = false;
  handler.command = [&](ui::Dialog& one, int command) {
    if (command != kEdit) return;
    UnderABox(one, [] {});
    answered = true;
  };
  menu->findChild<QAction*>(QStringLiteral("command%1").arg(kEdit))->trigger();
  menu->findChild<QAction*>(QStringLiteral("command%1").arg(kRefresh))->trigger();
  EXPECT_TRUE(ServeUntil([&] { return answered; }));
  Settle();
  EXPECT_EQ(handler.commands, std::vector<int>{kEdit});
}

}  // namespace
}  // namespace kelpin::test
