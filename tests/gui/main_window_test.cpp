#include "tests/gui/main_window.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPointingDevice>
#include <QStyleHints>

// Every command of the main window by key, by finger and by mouse, on the window itself.
namespace kelpin::test {
namespace {

// In menu order; those of Tools apart.
const std::vector<int> kMenuCommands = {314,  315, 316,  1076, 345, 317,
                                        1107, 318, 1108, 319,  320, 322};
const std::vector<int> kToolsCommands = {1083, 1084, 323, 348, 324, 325};
const std::vector<int> kPopupCommands = {314, 315, 316, 1076, 317};

class MainWindow : public MainWindowTest {
 protected:
  void Open() {
    sim.SetEntry(1, u"Anna", u"111");
    sim.SetEntry(2, u"Bert", u"222");
    MainWindowTest::Open();
  }
  // Goes down in a menu until this item is the active one.
  static void GoTo(QMenu* menu, const QString& item) {
    for (int step = 0; step < 20; ++step) {
      if (menu->activeAction() != nullptr && menu->activeAction()->objectName() == item) return;
      QTest::keyClick(menu, Qt::Key_Down);
    }
    ADD_FAILURE() << "no " << item.toStdString();
  }
  static auto Touch(QWidget* window) {
    static QPointingDevice* const finger = QTest::createTouchDevice();
    return QTest::touchEvent(window->windowHandle(), finger);
  }
  static void Tap(QWidget* widget, QPoint at) {
    const QPoint there = widget->mapTo(widget->window(), at);
    Touch(widget->window()).press(1, there).commit();
    Touch(widget->window()).release(1, there).commit();
  }
  void PressTalk() {
    QKeyEvent talk(QEvent::KeyPress, Qt::Key_Call, Qt::NoModifier);
    QApplication::sendEvent(Rows(), &talk);
  }
  static QString Item(int command) { return QStringLiteral("command%1").arg(command); }
  QMenu* OpenMenu() {
    QTest::keyClick(Rows(), Qt::Key_F10);
    EXPECT_TRUE(Key(1)->Menu()->isVisible());
    return Key(1)->Menu();
  }
  QMenu* Tools() { return Key(1)->Menu()->findChild<qt::PopupMenu*>(); }
  qt::PopupMenu* Popup() { return Find<qt::PopupMenu>(*state->dialog, "popup"); }
  bool PopupOpens() {
    return ServeUntil([this] { return Popup() != nullptr && Popup()->isVisible(); });
  }
};

TEST_F(MainWindow, EveryAcceleratorGivesItsCommand) {
  Open();
  struct Case {
    Qt::Key key;
    Qt::KeyboardModifiers modifiers;
    int command;
  };
  for (const Case& one :
       {Case{Qt::Key_Delete, Qt::NoModifier, 315}, Case{Qt::Key_F2, Qt::NoModifier, 314},
        Case{Qt::Key_F5, Qt::NoModifier, 320}, Case{Qt::Key_A, Qt::ControlModifier, 319},
        Case{Qt::Key_C, Qt::ControlModifier, res::kCommandCopyNumber},
        Case{Qt::Key_D, Qt::ControlModifier, 316}, Case{Qt::Key_N, Qt::ControlModifier, 312},
        Case{Qt::Key_N, Qt::AltModifier, 312}, Case{Qt::Key_Return, Qt::NoModifier, 314}}) {
    QTest::keyClick(Rows(), one.key, one.modifiers);
    EXPECT_EQ(Ran(), std::vector<int>{one.command});
  }
  PressTalk();
  EXPECT_EQ(Ran(), std::vector<int>{316});
}

TEST_F(MainWindow, WithoutASelectionTheKeysOfGreyedCommandsDoNothing) {
  Open();
  List().SetItemState(-1, 0, ui::kItemSelected);
  Settle();
  QTest::keyClick(Rows(), Qt::Key_Delete);
  QTest::keyClick(Rows(), Qt::Key_F2);
  QTest::keyClick(Rows(), Qt::Key_D, Qt::ControlModifier);
  PressTalk();
  EXPECT_EQ(Ran(), std::vector<int>{});
  QTest::keyClick(Rows(), Qt::Key_F5);
  EXPECT_EQ(Ran(), std::vector<int>{320});
}

TEST_F(MainWindow, EveryItemOfTheMenuIsReachedByArrows) {
  Open();
  for (const int command : kMenuCommands) {
    GoTo(OpenMenu(), Item(command));
    QTest::keyClick(Key(1)->Menu(), Qt::Key_Return);
    EXPECT_TRUE(Runs(command)) << command;
    EXPECT_FALSE(Key(1)->Menu()->isVisible());
  }
}

TEST_F(MainWindow, EveryItemOfToolsIsReachedByKeys) {
  Open();
  for (const int command : kToolsCommands) {
    QTest::keyClick(OpenMenu(), Qt::Key_T);
    ASSERT_TRUE(ServeUntil([this] { return Tools()->isVisible(); }));
    GoTo(Tools(), Item(command));
    QTest::keyClick(Tools(), Qt::Key_Return);
    EXPECT_TRUE(Runs(command)) << command;
  }
}

TEST_F(MainWindow, ALetterChoosesTheOnlyItemThatBeginsWithIt) {
  Open();
  QTest::keyClick(Rows(), Qt::Key_M, Qt::AltModifier);
  ASSERT_TRUE(Key(1)->Menu()->isVisible());
  QTest::keyClick(Key(1)->Menu(), Qt::Key_E);
  EXPECT_TRUE(Runs(314));
  QTest::keyClick(OpenMenu(), Qt::Key_A, Qt::AltModifier);
  EXPECT_TRUE(Runs(322));
  QTest::keyClick(OpenMenu(), Qt::Key_T);
  ASSERT_TRUE(ServeUntil([this] { return Tools()->isVisible(); }));
  QTest::keyClick(Tools(), Qt::Key_G);
  EXPECT_TRUE(Runs(1084));
}

TEST_F(MainWindow, OfSeveralItemsALetterGoesToTheNext) {
  Open();
  QMenu* const menu = OpenMenu();
  for (const int command : {1076, 317, 319, 1076}) {  // Send, Save, Select All, around
    QTest::keyClick(menu, Qt::Key_S);
    ASSERT_NE(menu->activeAction(), nullptr);
    EXPECT_EQ(menu->activeAction()->objectName(), Item(command));
    EXPECT_TRUE(menu->isVisible());
  }
  QTest::keyClick(menu, Qt::Key_Return);
  EXPECT_TRUE(Runs(1076));
}

TEST_F(MainWindow, ALetterPassesOverGreyedItemsAndChoosesNone) {
  Open();
  List().SetItemState(-1, 0, ui::kItemSelected);
  Settle();
  QMenu* const menu = OpenMenu();
  QTest::keyClick(menu, Qt::Key_E);  // Edit is greyed
  EXPECT_TRUE(menu->isVisible());
  QTest::keyClick(menu, Qt::Key_D);  // Delete too; Delete Contacts is not, and waits for Enter
  EXPECT_TRUE(menu->isVisible());
  ASSERT_NE(menu->activeAction(), nullptr);
  EXPECT_EQ(menu->activeAction()->objectName(), Item(345));
  QTest::keyClick(menu, Qt::Key_Escape);
  Settle();
  EXPECT_EQ(Ran(), std::vector<int>{});
}

TEST_F(MainWindow, TheMenuKeyOpensThePopUpOfWhichEveryItemRuns) {
  Open();
  for (const int command : kPopupCommands) {
    QTest::keyClick(Rows(), Qt::Key_Menu);
    ASSERT_TRUE(PopupOpens());
    GoTo(Popup(), Item(command));
    QTest::keyClick(Popup(), Qt::Key_Return);
    EXPECT_TRUE(Runs(command)) << command;
    ASSERT_TRUE(ServeUntil([this] { return Popup() == nullptr; }));
  }
}

TEST_F(MainWindow, TheMouseOpensMenusAndChooses) {
  Open();
  QTest::mouseClick(Key(0), Qt::LeftButton);
  EXPECT_TRUE(Runs(312));
  QTest::mouseClick(Key(1), Qt::LeftButton);
  QMenu* const menu = Key(1)->Menu();
  QAction* const refresh = menu->findChild<QAction*>(Item(320));
  QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(refresh).center());
  EXPECT_TRUE(Runs(320));
  const QPoint row = Cell(*Rows(), 1, 1);
  QContextMenuEvent right(QContextMenuEvent::Mouse, row, Rows()->viewport()->mapToGlobal(row));
  QApplication::sendEvent(Rows()->viewport(), &right);
  ASSERT_TRUE(PopupOpens());
  QAction* const send = Popup()->findChild<QAction*>(Item(1076));
  QTest::mouseClick(Popup(), Qt::LeftButton, Qt::NoModifier,
                    Popup()->actionGeometry(send).center());
  EXPECT_TRUE(Runs(1076));
  EXPECT_EQ(List().NextItem(-1, ui::kItemSelected), 1);
}

TEST_F(MainWindow, AFingerPressesKeysAndItems) {
  Open();
  Tap(Key(0), Key(0)->rect().center());
  EXPECT_TRUE(Runs(312));
  Tap(Key(1), Key(1)->rect().center());
  QMenu* const menu = Key(1)->Menu();
  ASSERT_TRUE(ServeUntil([menu] { return menu->isVisible(); }));
  Tap(menu, menu->actionGeometry(menu->findChild<QAction*>(Item(322))).center());
  EXPECT_TRUE(Runs(322));
}

TEST_F(MainWindow, AHoldOpensThePopUpThatStaysWhenTheFingerGoes) {
  Open();
  const QPoint there = Rows()->viewport()->mapTo(Window(), Cell(*Rows(), 1, 1));
  Touch(Window()).press(1, there).commit();
  QTest::qWait(QGuiApplication::styleHints()->mousePressAndHoldInterval() + 100);
  ASSERT_TRUE(PopupOpens());
  Touch(Window()).release(1, there).commit();
  Settle();
  ASSERT_TRUE(Popup() != nullptr && Popup()->isVisible());
  Tap(Popup(), Popup()->actionGeometry(Popup()->findChild<QAction*>(Item(317))).center());
  EXPECT_TRUE(Runs(317));
  EXPECT_EQ(List().NextItem(-1, ui::kItemSelected), 1);
}

}  // namespace
}  // namespace kelpin::test
