#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QLineEdit>
#include <QStyleHints>
#include <QTest>
#include <QWindow>

#include "app/edit_context_menu.h"
#include "device/qt/popup_menu.h"
#include "sim/sim_text.h"
#include "tests/gui/gui_support.h"

// The pop-up of an edit in the real window: a finger's hold, the right button and the menu key.
namespace kelpin::test {
namespace {

// A form whose fields have the menu; the number's takes what can be dialled alone, as the program's
// number fields do.
class FormWithMenus : public SampleDialog {
 public:
  explicit FormWithMenus(ui::Screen& screen) : SampleDialog(screen), name(screen), number(screen) {}

  void OnInit(ui::Dialog& dialog) override {
    SampleDialog::OnInit(dialog);
    name.Attach(dialog, kNameEdit);
    number.Attach(dialog, kNumberEdit);
  }
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override {
    if (name.OnNotify(notification) || number.OnNotify(notification) ||
        notification.control != kNumberEdit) {
      return;
    }
    const auto kept = sim::FilterEditInput(static_cast<int>(notification.code),
                                           sim::kOwnNumberControl, dialog.Text(kNumberEdit), 0);
    if (kept) {
      dialog.SetText(kNumberEdit, *kept);
      const int end = static_cast<int>(kept->size());
      dialog.SetSelection(kNumberEdit, end, end);
    }
  }
  void OnCommand(ui::Dialog& dialog, int id) override {
    ++given;
    if (!name.OnCommand(id) && !number.OnCommand(id)) SampleDialog::OnCommand(dialog, id);
  }

  app::EditContextMenu name;
  app::EditContextMenu number;
  int given = 0;  // commands
};

class EditMenuOnScreen : public GuiTest {
 protected:
  void SetUp() override {
    QGuiApplication::styleHints()->setMousePressAndHoldInterval(120);
    QGuiApplication::clipboard()->clear();
    dialog_ = Show(kFormTemplate, handler_);
    name_ = Find<QLineEdit>(*dialog_, "c" + std::to_string(kNameEdit));
    number_ = Find<QLineEdit>(*dialog_, "c" + std::to_string(kNumberEdit));
    dialog_->SetText(kNameEdit, u"Anna");
    dialog_->SetText(kNumberEdit, u"12345");
    Settle();
  }
  void TearDown() override {
    QGuiApplication::styleHints()->setMousePressAndHoldInterval(-1);
    GuiTest::TearDown();
  }

  qt::PopupMenu* Popup() { return Find<qt::PopupMenu>(*dialog_, "popup"); }
  bool AwaitPopup() {
    return ServeUntil([this] { return Popup() != nullptr && Popup()->isVisible(); });
  }
  bool AwaitNoPopup() {
    return ServeUntil([this] { return Popup() == nullptr; });
  }

  // Where the window's own events come in, so that everything on the way takes part.
  QWindow* Window() { return WindowOf(*dialog_)->windowHandle(); }
  QPoint InWindow(const QLineEdit& edit, QPoint at) { return edit.mapTo(edit.window(), at); }
  static QPoint Middle(const QLineEdit& edit) { return {edit.width() / 2, edit.height() / 2}; }
  // The middle of the text between two characters.
  static QPoint OnText(QLineEdit& edit, int position) {
    for (int x = 0; x < edit.width(); ++x) {
      if (edit.cursorPositionAt({x, edit.height() / 2}) == position) {
        return {x, edit.height() / 2};
      }
    }
    return {0, 0};
  }
  void RightClick(QLineEdit& edit, QPoint at) {
    QTest::mouseClick(Window(), Qt::RightButton, Qt::NoModifier, InWindow(edit, at));
  }
  // The field that has the focus. No window manager is here to give the window its own back when a
  // menu has closed.
  void PressMenuKey(QLineEdit& edit) {
    edit.activateWindow();
    edit.setFocus();
    ASSERT_TRUE(ServeUntil([&] { return edit.hasFocus(); }));
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(0, 0), QPoint(0, 0));
    QCoreApplication::sendEvent(Window(), &event);
  }
  void Hold(QLineEdit& edit, QPoint at) {
    QTest::mousePress(Window(), Qt::LeftButton, Qt::NoModifier, InWindow(edit, at));
    EXPECT_TRUE(AwaitPopup());
    QTest::mouseRelease(Window(), Qt::LeftButton, Qt::NoModifier, InWindow(edit, at));
  }

  // "Cut-", with a minus for what is greyed.
  std::vector<std::string> Items() {
    std::vector<std::string> items;
    for (const QAction* action : Popup()->actions()) {
      items.push_back(action->isSeparator()
                          ? "|"
                          : action->text().toStdString() + (action->isEnabled() ? "" : "-"));
    }
    return items;
  }
  // Presses an item and waits until the menu is gone and its command was given.
  void Choose(const char* text) {
    ASSERT_TRUE(AwaitPopup());
    for (QAction* action : Popup()->actions()) {
      if (action->text() == QLatin1String(text)) {
        ASSERT_TRUE(action->isEnabled()) << text;
        const int before = handler_.given;
        QTest::mouseClick(Popup(), Qt::LeftButton, Qt::NoModifier,
                          Popup()->actionGeometry(action).center());
        ASSERT_TRUE(AwaitNoPopup());
        ASSERT_TRUE(ServeUntil([&] { return handler_.given > before; })) << text;
        Settle();
        return;
      }
    }
    FAIL() << text;
  }
  static QString Clipboard() { return QGuiApplication::clipboard()->text(); }
  using Strings = std::vector<std::string>;

  FormWithMenus handler_{*screen_};
  std::shared_ptr<ui::Dialog> dialog_;
  QLineEdit* name_ = nullptr;
  QLineEdit* number_ = nullptr;
};

TEST_F(EditMenuOnScreen, TheRightButtonOpensItAtThePointer) {
  name_->setFocus();
  const QPoint at(40, number_->height() / 2);
  RightClick(*number_, at);
  ASSERT_TRUE(AwaitPopup());
  EXPECT_EQ(Items(), (Strings{"Cut-", "Copy-", "Paste-", "Clear-", "|", "Select All"}));
  EXPECT_EQ(Popup()->pos(), number_->mapToGlobal(at));
  EXPECT_EQ(dialog_->Focus(), kNumberEdit);
  EXPECT_TRUE(number_->hasFocus());
  QTest::keyClick(Popup(), Qt::Key_Escape);
  EXPECT_TRUE(AwaitNoPopup());
  EXPECT_EQ(dialog_->Text(kNumberEdit), u"12345");
}

TEST_F(EditMenuOnScreen, TheMenuKeyOpensItAtTheCaret) {
  PressMenuKey(*name_);
  ASSERT_TRUE(AwaitPopup());
  const QRect field(name_->mapToGlobal(QPoint(0, 0)), name_->size());
  EXPECT_TRUE(field.contains(Popup()->pos()));
  // Keys alone: to the last item and on it.
  QTest::keyClick(Popup(), Qt::Key_Up);
  QTest::keyClick(Popup(), Qt::Key_Return);
  ASSERT_TRUE(AwaitNoPopup());
  Settle();
  EXPECT_EQ(name_->selectedText(), QStringLiteral("Anna"));
}

TEST_F(EditMenuOnScreen, AHoldOpensItAndOnSelectedTextKeepsTheSelection) {
  Hold(*name_, OnText(*name_, 2));
  Choose("Select All");
  EXPECT_EQ(dialog_->SelectedText(kNameEdit), u"Anna");
  Hold(*name_, OnText(*name_, 2));
  EXPECT_EQ(Items(), (Strings{"Cut", "Copy", "Paste-", "Clear", "|", "Select All-"}));
  Choose("Copy");
  EXPECT_EQ(Clipboard(), QStringLiteral("Anna"));
  EXPECT_EQ(name_->selectedText(), QStringLiteral("Anna"));
}

TEST_F(EditMenuOnScreen, APressThatIsNoHoldGoesToTheField) {
  name_->setFocus();
  name_->selectAll();
  const QPoint at = InWindow(*name_, OnText(*name_, 2));
  QTest::mouseClick(Window(), Qt::LeftButton, Qt::NoModifier, at);
  EXPECT_FALSE(name_->hasSelectedText());
  EXPECT_EQ(name_->cursorPosition(), 2);
  EXPECT_EQ(Popup(), nullptr);
}

TEST_F(EditMenuOnScreen, ADragFromSelectedTextSelectsAnew) {
  name_->setFocus();
  name_->selectAll();
  QTest::mousePress(Window(), Qt::LeftButton, Qt::NoModifier, InWindow(*name_, OnText(*name_, 1)));
  QTest::mouseMove(Window(), InWindow(*name_, OnText(*name_, 3) + QPoint(0, 1)));
  QTest::mouseMove(Window(), InWindow(*name_, OnText(*name_, 3)));
  QTest::mouseRelease(Window(), Qt::LeftButton, Qt::NoModifier,
                      InWindow(*name_, OnText(*name_, 3)));
  EXPECT_EQ(name_->selectedText(), QStringLiteral("nn"));
  EXPECT_EQ(Popup(), nullptr);
}

TEST_F(EditMenuOnScreen, CutCopyAndPasteGoThroughTheClipboard) {
  number_->setFocus();
  number_->setSelection(1, 2);
  RightClick(*number_, OnText(*number_, 2));
  Choose("Cut");
  EXPECT_EQ(number_->text(), QStringLiteral("145"));
  EXPECT_EQ(dialog_->Text(kNumberEdit), u"145");
  EXPECT_EQ(Clipboard(), QStringLiteral("23"));
  name_->setCursorPosition(4);
  PressMenuKey(*name_);
  Choose("Paste");
  EXPECT_EQ(name_->text(), QStringLiteral("Anna23"));
  EXPECT_EQ(name_->cursorPosition(), 6);
  name_->undo();
  EXPECT_EQ(dialog_->Text(kNameEdit), u"Anna");
}

TEST_F(EditMenuOnScreen, APasteIsFilteredAndCutAsTypingIs) {
  QGuiApplication::clipboard()->setText(QStringLiteral("+49 (0)17-x"));
  number_->selectAll();
  PressMenuKey(*number_);
  Choose("Paste");
  EXPECT_EQ(number_->text(), QStringLiteral("+49017"));
  EXPECT_EQ(dialog_->Text(kNumberEdit), u"+49017");
  EXPECT_EQ(number_->cursorPosition(), 6);
  dialog_->SetLimit(kNameEdit, 6);
  QGuiApplication::clipboard()->setText(QStringLiteral("bella"));
  name_->setCursorPosition(4);
  PressMenuKey(*name_);
  Choose("Paste");
  EXPECT_EQ(name_->text(), QStringLiteral("Annabe"));
}

TEST_F(EditMenuOnScreen, ClearLeavesTheClipboardAlone) {
  QGuiApplication::clipboard()->setText(QStringLiteral("kept"));
  number_->setSelection(0, 2);
  PressMenuKey(*number_);
  Choose("Clear");
  EXPECT_EQ(number_->text(), QStringLiteral("345"));
  EXPECT_EQ(Clipboard(), QStringLiteral("kept"));
}

TEST_F(EditMenuOnScreen, DetachedOrDisabledThereIsNoMenu) {
  handler_.name.Detach();
  RightClick(*name_, Middle(*name_));
  dialog_->Enable(kNumberEdit, false);
  Settle();
  RightClick(*number_, Middle(*number_));
  Settle();
  EXPECT_EQ(Popup(), nullptr);
}

}  // namespace
}  // namespace kelpin::test
