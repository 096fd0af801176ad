#include <QApplication>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <string>

#include "app/settings.h"
#include "editor/entry_form.h"
#include "editor/entry_layout.h"
#include "res/ids.h"
#include "res/templates.h"
#include "tests/gui/gui_support.h"

// An entry's form on a phone: under a finger, and with the input panel up, which takes nearly half
// of the window.
namespace kelpin::test {
namespace {

class EntryForm : public ui::DialogHandler {
 public:
  explicit EntryForm(ui::Screen& screen) : screen_(screen) {
    settings_.Enable_SNE = 1;
    settings_.Enable_AAS = 1;
    settings_.Enable_GAS = 1;
  }
  void OnInit(ui::Dialog& dialog) override {
    editor::ShowFields(dialog, editor::kEditEntryControls, settings_);
  }
  void OnSize(ui::Dialog& dialog, ui::Size client) override {
    editor::PlaceFields(dialog, editor::kEditEntryControls, client, screen_.GetMetrics());
  }

 private:
  ui::Screen& screen_;
  app::AppSettings settings_;
};

class FormInHand : public GuiTest {
 protected:
  void Open() {
    form_ = std::make_unique<EntryForm>(*screen_);
    dialog_ = Show(*res::FindDialog(res::kDialogEditEntry), *form_);
  }
  QScrollBar& Bar() { return *WindowOf(*dialog_)->findChild<QScrollArea*>()->verticalScrollBar(); }
  static QWidget& Focused() { return *QApplication::focusWidget(); }
  // What has the focus is seen whole.
  static bool IsWhole() { return Focused().visibleRegion() == QRegion(Focused().rect()); }
  void PanelUp(bool up) {
    WindowOf(*dialog_)->resize(360, up ? 340 : 640);
    Settle();
  }

  std::unique_ptr<EntryForm> form_;
  std::shared_ptr<ui::Dialog> dialog_;
};

TEST_F(FormInHand, TheFieldThatIsEditedStaysInSightWhenTheInputPanelComes) {
  Open();
  const QWidget* const first = QApplication::focusWidget();
  int fields = 0;
  do {
    PanelUp(true);
    EXPECT_TRUE(IsWhole()) << Focused().accessibleName().toStdString();
    PanelUp(false);
    QTest::keyClick(&Focused(), Qt::Key_Tab);
    ++fields;
  } while (&Focused() != first && fields < 20);
  EXPECT_EQ(fields, 10);
}

TEST_F(FormInHand, EachFieldComesIntoSightAboveTheInputPanel) {
  Open();
  PanelUp(true);
  const QWidget* const first = QApplication::focusWidget();
  int fields = 0;
  do {
    EXPECT_TRUE(IsWhole()) << Focused().accessibleName().toStdString();
    QTest::keyClick(&Focused(), Qt::Key_Tab);
    ++fields;
  } while (&Focused() != first && fields < 20);
  EXPECT_EQ(fields, 10);
}

TEST_F(FormInHand, AFlickOnAFieldScrollsTheForm) {
  static QPointingDevice* const finger = QTest::createTouchDevice();
  Open();
  PanelUp(true);
  ASSERT_EQ(Bar().value(), 0);
  ASSERT_GT(Bar().maximum(), 100);
  const auto touch = [this] {
    return QTest::touchEvent(WindowOf(*dialog_)->windowHandle(), finger);
  };
  const std::string number = "c" + std::to_string(res::kEditNumber);
  QWidget* const edit = Find<QWidget>(*dialog_, number);
  QPoint at = edit->mapTo(WindowOf(*dialog_), edit->rect().center());
  touch().press(1, at).commit();
  for (int step = 0; step < 10; ++step) {
    QTest::qWait(10);
    at -= QPoint(0, 12);
    touch().move(1, at).commit();
  }
  touch().release(1, at).commit();
  EXPECT_TRUE(ServeUntil([&] { return Bar().value() > 60; }));
}

TEST_F(FormInHand, NothingAFingerPressesIsUnderFortyPixels) {
  Open();
  for (const ui::ControlState& control : dialog_->Controls()) {
    if (!control.visible ||
        (control.kind != ui::ControlKind::kEdit && control.kind != ui::ControlKind::kButton)) {
      continue;
    }
    const QWidget* const widget = Find<QWidget>(*dialog_, "c" + std::to_string(control.id));
    EXPECT_GE(widget->height(), 40) << widget->accessibleName().toStdString();
    EXPECT_GE(widget->width(), 40) << widget->accessibleName().toStdString();
  }
}

}  // namespace
}  // namespace kelpin::test
