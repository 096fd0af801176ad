#include <QAccessible>
#include <QApplication>
#include <QFocusEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

#include "res/ids.h"
#include "res/menus.h"
#include "res/templates.h"
#include "tests/gui/gui_support.h"

// What a screen reader says of the card's figures, and where a list goes on after a dialog.
namespace kelpin::test {
namespace {

class ViewDialogsOnScreen : public GuiTest {
 protected:
  QAccessibleInterface* Spoken(const ui::Dialog& dialog, int control) {
    auto* const widget = Find<QWidget>(dialog, "c" + std::to_string(control));
    return QAccessible::queryAccessibleInterface(widget);
  }
};

TEST_F(ViewDialogsOnScreen, AFigureIsSpokenWithItsLabelAndABarInWords) {
  SampleHandler figures;
  figures.init = [](ui::Dialog& dialog) {
    dialog.SetText(res::kInformationTotal, u"500");
    dialog.SetText(res::kInformationEntriesText, u"180 of 500 entries used");
    dialog.SetProgressRange(res::kInformationEntriesBar, 0, 500, 1);
    dialog.SetProgress(res::kInformationEntriesBar, 180);
  };
  const auto dialog = Show(*res::FindDialog(res::kDialogSimInformationPage), figures);
  EXPECT_EQ(Spoken(*dialog, res::kInformationTotal)->text(QAccessible::Name),
            QStringLiteral("Total phonebook size 500"));
  QAccessibleInterface* const bar = Spoken(*dialog, res::kInformationEntriesBar);
  EXPECT_EQ(bar->text(QAccessible::Name), QStringLiteral("180 of 500 entries used"));
  ASSERT_NE(bar->valueInterface(), nullptr);
  EXPECT_EQ(bar->valueInterface()->currentValue().toInt(), 180);
  EXPECT_EQ(bar->valueInterface()->maximumValue().toInt(), 500);
}

TEST_F(ViewDialogsOnScreen, APageThatIsTooLongIsReadOnByTheKeys) {
  SampleHandler figures;
  figures.init = [](ui::Dialog& dialog) {
    dialog.CreateMenuBar(*res::FindMenuBar(res::kBarOk));
    dialog.SetBounds(res::kInformationSmsLabel, {0, 2000, 300, 20});
  };
  const auto dialog = Show(*res::FindDialog(res::kDialogSimInformationPage), figures);
  QScrollBar& bar = *WindowOf(*dialog)->findChild<QScrollArea*>()->verticalScrollBar();
  ASSERT_GT(bar.maximum(), 500);
  QWidget* const key = QApplication::focusWidget();
  ASSERT_NE(key, nullptr);  // OK
  QTest::keyClick(key, Qt::Key_Down);
  const int line = bar.value();
  EXPECT_GT(line, 0);
  EXPECT_LT(line, 60);
  QTest::keyClick(key, Qt::Key_PageDown);
  EXPECT_EQ(bar.value(), line + bar.pageStep());
  QTest::keyClick(key, Qt::Key_End);
  EXPECT_EQ(bar.value(), bar.maximum());
  QTest::keyClick(key, Qt::Key_Up);
  EXPECT_EQ(bar.value(), bar.maximum() - line);
  QTest::keyClick(key, Qt::Key_Home);
  EXPECT_EQ(bar.value(), 0);
  EXPECT_EQ(QApplication::focusWidget(), key);
}

TEST_F(ViewDialogsOnScreen, TheFocusIsBackWhereItWasInTheList) {
  SampleHandler numbers;
  const auto dialog = Show(*res::FindDialog(res::kDialogOwnNumbers), numbers);
  ui::ListView& list = *dialog->List(res::kOwnNumbersList);
  list.InsertColumn(0, u"#", 36);
  for (const char16_t* const number : {u"1", u"2", u"3"}) {
    list.InsertRow(list.ItemCount(), {number}, nullptr);
  }
  list.SetItemState(1, ui::kItemSelected | ui::kItemFocused, ui::kItemSelected | ui::kItemFocused);
  Settle();
  QFocusEvent back(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
  QApplication::sendEvent(Table(*dialog, res::kOwnNumbersList), &back);
  EXPECT_EQ(list.FocusedItem(), 1);
  EXPECT_EQ(list.NextItem(-1, ui::kItemSelected), 1);
}

}  // namespace
}  // namespace kelpin::test
