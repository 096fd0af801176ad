#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QTest>

#include "tests/gui/gui_support.h"

namespace kelpin::test {
namespace {

class SoftKeys : public GuiTest {
 protected:
  void Open(const ui::DialogTemplate& resource = kListTemplate) {
    dialog_ = Show(resource, handler_);
    left_ = Find<qt::SoftKeyButton>(*dialog_, "key0");
    right_ = Find<qt::SoftKeyButton>(*dialog_, "key1");
  }
  QAction* Item(int command) {
    return right_->Menu()->findChild<QAction*>(QStringLiteral("command%1").arg(command));
  }

  SampleDialog handler_{*screen_};
  std::shared_ptr<ui::Dialog> dialog_;
  qt::SoftKeyButton* left_ = nullptr;
  qt::SoftKeyButton* right_ = nullptr;
};

TEST_F(SoftKeys, APlainKeyGivesItsCommand) {
  Open();
  QTest::mouseClick(left_, Qt::LeftButton);
  EXPECT_EQ(handler_.commands, std::vector<int>{kNew});
}

TEST_F(SoftKeys, ADisabledKeyGivesNothing) {
  Open();
  dialog_->Bar()->EnableSoftKey(0, false);
  Settle();
  EXPECT_FALSE(left_->isEnabled());
  QTest::mouseClick(left_, Qt::LeftButton);
  EXPECT_TRUE(handler_.commands.empty());
}

TEST_F(SoftKeys, AMenuOpensAboveItsKeyAndGivesTheChosenCommand) {
  Open();
  QTest::mouseClick(right_, Qt::LeftButton);
  qt::PopupMenu* menu = right_->Menu();
  ASSERT_TRUE(menu->isVisible());
  EXPECT_LE(menu->frameGeometry().bottom(), right_->mapToGlobal(QPoint(0, 8)).y());
  QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                    menu->actionGeometry(Item(kRefresh)).center());
  EXPECT_TRUE(handler_.commands.empty()) << "told when the menu is gone";
  EXPECT_TRUE(ServeUntil([&] { return !handler_.commands.empty(); }));
  EXPECT_EQ(handler_.commands, std::vector<int>{kRefresh});
  EXPECT_FALSE(menu->isVisible());
}

TEST_F(SoftKeys, MenuItemsAreFitForAFingerAndShowTheirShortcuts) {
  Open();
  for (QAction* action : right_->Menu()->actions()) {
    if (!action->isSeparator()) {
      EXPECT_GE(right_->Menu()->actionGeometry(action).height(), 40);
      EXPECT_FALSE(action->icon().isNull()) << action->text().toStdString();
    }
  }
  EXPECT_EQ(Item(kEdit)->text(), QStringLiteral("Edit..."));
  EXPECT_EQ(Item(kEdit)->shortcut(), QKeySequence(Qt::Key_F2));
  EXPECT_TRUE(Item(kEdit)->isShortcutVisibleInContextMenu());
  // Read out as two, and left to the dialog: a greyed command's keys do nothing in either.
  QAccessibleInterface* item = QAccessible::queryAccessibleInterface(right_->Menu())->child(0);
  EXPECT_EQ(item->text(QAccessible::Name), QStringLiteral("Edit..."));
  EXPECT_EQ(item->text(QAccessible::Accelerator), QStringLiteral("F2"));
}

TEST_F(SoftKeys, ShortcutsInWordsOfAnotherLanguageAreShownAsTheyStand) {
  qt::PopupMenu menu([](int) {}, nullptr);
  ui::MenuItem item;
  item.command = kEdit;
  item.text = u"L\u00F6schen";
  menu.SetItems({item});
  const int width = menu.sizeHint().width();
  for (const char16_t* const keys : {u"Entf", u"Strg+D"}) {
    item.keys = keys;
    menu.SetItems({item});
    ASSERT_EQ(menu.actions().size(), 1);
    EXPECT_EQ(menu.actions().front()->text(),
              QStringLiteral("L\u00F6schen\t") + QString::fromUtf16(keys));
    EXPECT_GT(menu.sizeHint().width(), width);
  }
}

TEST_F(SoftKeys, AMenuOfLargeLettersLeavesItsShortcutsOutAndIsThenWrittenSmaller) {
  qt::PopupMenu menu([](int) {}, nullptr);
  ui::MenuItem item;
  item.command = kEdit;
  item.text = u"Contacts to SIM...";
  menu.SetItems({item});
  QFont large = menu.font();
  large.setPixelSize(32);
  menu.setFont(large);
  const int bare = menu.sizeHint().width();
  item.keys = u"Ctrl+D";
  menu.SetItems({item});
  const int whole = menu.sizeHint().width();
  ASSERT_GT(whole, bare);
  const auto keys = [&] { return menu.actions().front()->shortcut(); };

  menu.FitInto(whole);
  EXPECT_EQ(keys(), QKeySequence(Qt::CTRL | Qt::Key_D));
  menu.FitInto(whole - 1);
  EXPECT_TRUE(keys().isEmpty());
  EXPECT_EQ(menu.font().pixelSize(), 32);
  EXPECT_EQ(menu.sizeHint().width(), bare);
  menu.FitInto(bare - 1);
  EXPECT_LT(menu.font().pixelSize(), 32);
  EXPECT_LT(menu.sizeHint().width(), bare);
  EXPECT_EQ(menu.actions().front()->text(), QStringLiteral("Contacts to SIM..."));
  menu.FitInto(1);
  EXPECT_EQ(menu.font().pixelSize(), 12);
  menu.FitInto(whole);
  EXPECT_EQ(menu.font().pixelSize(), 32);
  EXPECT_EQ(keys(), QKeySequence(Qt::CTRL | Qt::Key_D));
  EXPECT_EQ(menu.sizeHint().width(), whole);
}

TEST_F(SoftKeys, GreyedAndRemovedItemsFollowTheDialog) {
  Open();
  ui::Menu* menu = dialog_->Bar()->SubMenu(kMenu);
  menu->EnableItem(kDelete, false);
  menu->RemoveItem(kEdit);
  Settle();
  ASSERT_NE(Item(kDelete), nullptr);
  EXPECT_FALSE(Item(kDelete)->isEnabled());
  EXPECT_EQ(Item(kEdit), nullptr);
  EXPECT_TRUE(Item(kRefresh)->isEnabled());
}

TEST_F(SoftKeys, AnItemThatIsGreyedWhileTheMenuIsOpenGivesNothing) {
  Open();
  right_->OpenMenu();
  dialog_->Bar()->SubMenu(kMenu)->EnableItem(kRefresh, false);
  Settle();
  EXPECT_TRUE(right_->Menu()->isVisible());
  EXPECT_FALSE(Item(kRefresh)->isEnabled());
  right_->Menu()->hide();
}

TEST_F(SoftKeys, ToolsIsAMenuInTheMenu) {
  Open();
  QAction* own = Item(kOwnNumbers);
  ASSERT_NE(own, nullptr);
  own->trigger();
  EXPECT_TRUE(ServeUntil([&] { return !handler_.commands.empty(); }));
  EXPECT_EQ(handler_.commands, std::vector<int>{kOwnNumbers});
}

TEST_F(SoftKeys, KeysReachThem) {
  Open();
  QWidget* list = Table(*dialog_, kSampleList);
  QTest::keyClick(list, Qt::Key_N, Qt::AltModifier);
  EXPECT_EQ(handler_.commands, std::vector<int>{kNew});
  QTest::keyClick(list, Qt::Key_M, Qt::AltModifier);
  EXPECT_TRUE(right_->Menu()->isVisible());
  right_->Menu()->hide();
  QTest::keyClick(list, Qt::Key_F10);
  EXPECT_TRUE(right_->Menu()->isVisible());
  QTest::keyClick(right_->Menu(), Qt::Key_Down);
  QTest::keyClick(right_->Menu(), Qt::Key_Return);
  EXPECT_TRUE(ServeUntil([&] { return handler_.commands.size() == 2; }));
  EXPECT_EQ(handler_.commands.back(), kEdit);
  left_->setFocus();
  QTest::keyClick(left_, Qt::Key_Return);
  EXPECT_EQ(handler_.commands.back(), kNew);
}

TEST_F(SoftKeys, AcceleratorsWorkInTheListAndNotWhenGreyed) {
  Open();
  const std::array keys = {ui::Accelerator{{ui::Key::kF5, ui::kNoModifier, 0}, kRefresh},
                           ui::Accelerator{{ui::Key::kCharacter, ui::kControl, u'N'}, kNew}};
  dialog_->SetAccelerators(keys);
  QWidget* list = Table(*dialog_, kSampleList);
  QTest::keyClick(list, Qt::Key_F5);
  QTest::keyClick(list, Qt::Key_N, Qt::ControlModifier);
  EXPECT_EQ(handler_.commands, (std::vector<int>{kRefresh, kNew}));
  dialog_->Bar()->SubMenu(kMenu)->EnableItem(kRefresh, false);
  QTest::keyClick(list, Qt::Key_F5);
  EXPECT_EQ(handler_.commands.size(), 2u);
}

TEST_F(SoftKeys, TheMenuIsAPartOfTheAccessibleTree) {
  Open();
  QAccessibleInterface* key = QAccessible::queryAccessibleInterface(right_);
  ASSERT_NE(key, nullptr);
  EXPECT_EQ(key->role(), QAccessible::ButtonMenu);
  EXPECT_EQ(key->text(QAccessible::Name), QStringLiteral("Menu"));
  ASSERT_EQ(key->childCount(), 1);
  QAccessibleInterface* menu = key->child(0);
  ASSERT_NE(menu, nullptr);
  EXPECT_EQ(menu->role(), QAccessible::PopupMenu);
  EXPECT_EQ(key->indexOfChild(menu), 0);
  // Edit, Delete, a line, Refresh, Tools.
  ASSERT_EQ(menu->childCount(), 5);
  QAccessibleInterface* refresh = menu->child(3);
  ASSERT_NE(refresh->actionInterface(), nullptr);
  refresh->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_TRUE(ServeUntil([&] { return !handler_.commands.empty(); }));
  EXPECT_EQ(handler_.commands, std::vector<int>{kRefresh});
}

TEST_F(SoftKeys, APopupIsAPartOfTheAccessibleTreeWhileItIsOpen) {
  Open();
  QAccessibleInterface* window = QAccessible::queryAccessibleInterface(WindowOf(*dialog_));
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(window->role(), QAccessible::Dialog);
  const int before = window->childCount();
  EXPECT_EQ(window->child(before), nullptr);
  auto menu = std::make_shared<ui::Menu>();
  menu->Append(kEdit, u"Edit...");
  dialog_->ShowPopup(menu, {40, 120});
  ASSERT_EQ(window->childCount(), before + 1);
  QAccessibleInterface* popup = window->child(before);
  ASSERT_NE(popup, nullptr);
  EXPECT_EQ(popup->role(), QAccessible::PopupMenu);
  EXPECT_EQ(window->indexOfChild(popup), before);
  ASSERT_EQ(popup->childCount(), 1);
  popup->child(0)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_TRUE(ServeUntil([&] { return !handler_.commands.empty(); }));
  EXPECT_EQ(handler_.commands, std::vector<int>{kEdit});
  Find<qt::PopupMenu>(*dialog_, "popup")->hide();
  EXPECT_EQ(window->childCount(), before);
}

TEST_F(SoftKeys, ADialogWithoutThemHasADoneKey) {
  Open(kBareTemplate);
  ASSERT_NE(left_, nullptr);
  EXPECT_EQ(right_, nullptr);
  EXPECT_EQ(left_->text(), QStringLiteral("Done"));
  QTest::mouseClick(left_, Qt::LeftButton);
  EXPECT_EQ(handler_.commands, std::vector<int>{ui::kCommandOk});
}

TEST_F(SoftKeys, APopupOfTheProgramStandsAtItsPointAndGivesTheChosenCommand) {
  Open();
  auto menu = std::make_shared<ui::Menu>();
  menu->Append(kEdit, u"Edit...");
  menu->Append(kDelete, u"Delete", false);
  dialog_->ShowPopup(menu, {40, 120});
  auto* popup = Find<qt::PopupMenu>(*dialog_, "popup");
  ASSERT_NE(popup, nullptr);
  ASSERT_TRUE(popup->isVisible());
  EXPECT_EQ(popup->pos(), WindowOf(*dialog_)->mapToGlobal(QPoint(40, 120)));
  QTest::mouseClick(popup, Qt::LeftButton, Qt::NoModifier,
                    popup->actionGeometry(popup->actions().first()).center());
  EXPECT_TRUE(ServeUntil([&] { return !handler_.commands.empty(); }));
  EXPECT_EQ(handler_.commands, std::vector<int>{kEdit});
  EXPECT_TRUE(ServeUntil([&] { return Find<qt::PopupMenu>(*dialog_, "popup") == nullptr; }));
}

// A dialog that switches none of its keys on is confirmed with its Done button.
class KeysOff : public SampleDialog {
 public:
  using SampleDialog::SampleDialog;
  void OnInit(ui::Dialog& dialog) override {
    SampleDialog::OnInit(dialog);
    dialog.DestroyMenuBar();
    ui::MenuBar* const bar = dialog.CreateMenuBar(kFormBar);
    bar->EnableSoftKey(0, false);
    bar->EnableSoftKey(1, false);
    dialog.SetFullScreen(true, true);
  }
};

class DoneOnScreen : public GuiTest {};

TEST_F(DoneOnScreen, ADialogWhoseKeysAreOffHasADoneKeyUntilOneIsOn) {
  KeysOff handler(*screen_);
  const auto dialog = Show(kFormTemplate, handler);
  auto* done = Find<QAbstractButton>(*dialog, "done");
  ASSERT_NE(done, nullptr);
  EXPECT_TRUE(done->isEnabled());
  EXPECT_EQ(done->text(), QStringLiteral("Done"));
  EXPECT_FALSE(Find<QAbstractButton>(*dialog, "key0")->isEnabled());
  EXPECT_FALSE(Find<QAbstractButton>(*dialog, "key1")->isEnabled());
  EXPECT_LT(Find<QWidget>(*dialog, "key0")->x(), done->x());
  EXPECT_LT(done->x(), Find<QWidget>(*dialog, "key1")->x());
  handler.commands.clear();
  QTest::mouseClick(done, Qt::LeftButton);
  EXPECT_EQ(handler.commands, (std::vector<int>{ui::kCommandOk}));
  dialog->Bar()->EnableSoftKey(0, true);
  Settle();
  EXPECT_EQ(Find<QAbstractButton>(*dialog, "done"), nullptr);
  dialog->Bar()->EnableSoftKey(0, false);
  Settle();
  EXPECT_EQ(Find<QAbstractButton>(*dialog, "done"), nullptr);
}

}  // namespace
}  // namespace kelpin::test
