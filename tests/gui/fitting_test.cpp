#include <gtest/gtest.h>

#include <QApplication>
#include <QFontMetrics>
#include <QHelpEvent>
#include <QTextDocument>
#include <QToolTip>

#include "device/qt/fitting_font.h"
#include "device/qt/theme.h"
#include "tests/gui/gui_support.h"

namespace kelpin::test {
namespace {

QFont Pixels(int size) {
  QFont font = QApplication::font();
  font.setPixelSize(size);
  return font;
}

// A place for `text` as it is written with `size` pixels, in one line.
QSize PlaceFor(const QString& text, int size) {
  const QFontMetrics metrics(Pixels(size));
  return {metrics.horizontalAdvance(text), metrics.height()};
}

class Fitting : public GuiTest {};

TEST_F(Fitting, ATextThatFitsKeepsItsSize) {
  const QString text = QStringLiteral("Abbrechen");
  EXPECT_EQ(qt::FittingFont(Pixels(28), text, PlaceFor(text, 28), 0)->pixelSize(), 28);
}

TEST_F(Fitting, ATextTooLongIsWrittenAsLargeAsThereIsRoom) {
  const QString text = QStringLiteral("Abbrechen");
  EXPECT_EQ(qt::FittingFont(Pixels(28), text, PlaceFor(text, 20), 0)->pixelSize(), 20);
}

TEST_F(Fitting, HalfTheSizeIsTheLeast) {
  const QString text = QStringLiteral("Abbrechen");
  EXPECT_EQ(qt::FittingFont(Pixels(40), text, PlaceFor(text, 19), 0), std::nullopt);
  EXPECT_EQ(qt::FittingOrSmallestFont(Pixels(40), text, PlaceFor(text, 19), 0).pixelSize(), 20);
}

TEST_F(Fitting, NothingIsWrittenSmallerThanTwelvePixels) {
  const QString text = QStringLiteral("Abbrechen");
  EXPECT_EQ(qt::FittingOrSmallestFont(Pixels(14), text, {5, 20}, 0).pixelSize(), 12);
  EXPECT_EQ(qt::FittingOrSmallestFont(Pixels(10), text, {5, 20}, 0).pixelSize(), 10);
}

TEST_F(Fitting, WordsAreBrokenBetweenWhereThatIsAllowed) {
  const QString text = QStringLiteral("Nummernnamen ändern");
  QSize room = PlaceFor(QStringLiteral("Nummernnamen"), 24);
  room.setHeight(2 * room.height() + 4);
  EXPECT_EQ(qt::FittingFont(Pixels(24), text, room, Qt::TextWordWrap)->pixelSize(), 24);
  EXPECT_LT(qt::FittingOrSmallestFont(Pixels(24), text, room, 0).pixelSize(), 24);
}

// 360 pixels wide, with text of twice the size.
class LargeText : public GuiTest {
 protected:
  LargeText() { QApplication::setFont(Pixels(28)); }
  ~LargeText() override { QApplication::setFont(before_); }

  const QFont before_ = QApplication::font();
};

TEST_F(LargeText, TheKeysOfABarAreWrittenWholeAndAlike) {
  SampleHandler handler;
  handler.init = [](ui::Dialog& dialog) {
    static const ui::SoftKeyTemplate keys[] = {{kDone, u"Fertig"}, {kCancel, u"Abbrechen"}};
    static const ui::MenuBarTemplate bar = {3, keys};
    dialog.CreateMenuBar(bar);
  };
  const auto dialog = Show(kBareTemplate, handler);
  auto* done = Find<qt::SoftKeyButton>(*dialog, "key0");
  auto* cancel = Find<qt::SoftKeyButton>(*dialog, "key1");
  ASSERT_NE(cancel, nullptr);
  const int usual = qt::FontFor(qt::TextRole::kKey).pixelSize();
  EXPECT_EQ(done->FittingTextSize(), usual);
  EXPECT_LT(cancel->FittingTextSize(), usual);
  EXPECT_EQ(cancel->TextSize(), cancel->FittingTextSize());
  EXPECT_EQ(done->TextSize(), cancel->TextSize());
  QFont font = qt::FontFor(qt::TextRole::kKey);
  font.setPixelSize(cancel->TextSize());
  EXPECT_LT(QFontMetrics(font).horizontalAdvance(cancel->text()), cancel->width());
}

// A dialog whose own keys are off has a Done key between them.
TEST_F(LargeText, OfThreeKeysTheOneWithTheLongWordIsTheWidest) {
  SampleHandler handler;
  handler.init = [](ui::Dialog& dialog) {
    static const ui::SoftKeyTemplate keys[] = {{kDone, u"OK"}, {kCancel, u"Abbrechen"}};
    static const ui::MenuBarTemplate bar = {3, keys};
    dialog.SetFullScreen(true, true);
    ui::MenuBar* const own = dialog.CreateMenuBar(bar);
    own->EnableSoftKey(0, false);
    own->EnableSoftKey(1, false);
  };
  const auto dialog = Show(kBareTemplate, handler);
  auto* ok = Find<qt::SoftKeyButton>(*dialog, "key0");
  auto* cancel = Find<qt::SoftKeyButton>(*dialog, "key1");
  auto* done = Find<qt::SoftKeyButton>(*dialog, "done");
  ASSERT_NE(done, nullptr);
  EXPECT_GT(cancel->width(), done->width());
  EXPECT_GT(done->width(), ok->width());
  EXPECT_GE(ok->width(), 40);
  EXPECT_LE(cancel->geometry().right(), 360);
  // A third of the width would take little more than half of the size.
  EXPECT_GE(3 * cancel->TextSize(), 2 * qt::FontFor(qt::TextRole::kKey).pixelSize());
}

// What is read of a tool tip.
QString Shown(const QString& tip) {
  QTextDocument page;
  if (Qt::mightBeRichText(tip)) {
    page.setHtml(tip);
  } else {
    page.setPlainText(tip);
  }
  return page.toPlainText();
}

// What a screen reader is told and what pointing at it shows is always the whole text.
TEST_F(LargeText, ACellThatIsCutTellsItsWholeText) {
  const std::u16string name = u"Featherstonehaugh-Cholmondeley";
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  ui::ListView& list = *dialog->List(kSampleList);
  FillList(list, SampleEntries());
  list.SetItemText(0, 1, name);
  Settle();
  qt::ListTable* table = Table(*dialog, kSampleList);
  const auto pointAt = [&](int row) {
    const QPoint at = Cell(*table, row, 1);
    QHelpEvent event(QEvent::ToolTip, at, table->viewport()->mapToGlobal(at));
    QApplication::sendEvent(table->viewport(), &event);
    return QToolTip::text();
  };
  EXPECT_EQ(Shown(pointAt(0)).toStdU16String(), name);
  // Names are texts, not pages.
  const std::u16string page = u"<i>Featherstonehaugh</i> &lt; Cholmondeley";
  list.SetItemText(0, 1, page);
  Settle();
  EXPECT_EQ(Shown(pointAt(0)).toStdU16String(), page);
  list.SetItemText(0, 1, name);
  Settle();
  EXPECT_EQ(table->model()->index(0, 1).data().toString().toStdU16String(), name);
  list.SetItemText(0, 1, u"Al");
  Settle();
  pointAt(0);
  EXPECT_TRUE(ServeUntil([] { return QToolTip::text().isEmpty(); }));
}

}  // namespace
}  // namespace kelpin::test
