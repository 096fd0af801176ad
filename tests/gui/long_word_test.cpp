#include <QFontMetrics>
#include <QLabel>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>

#include "device/qt/breakable_text.h"
#include "tests/gui/gui_support.h"

namespace kelpin::test {
namespace {

const QChar kPlaceToBreak(0x200B);

int WidestPiece(const QString& text, const QFont& font) {
  int widest = 0;
  for (const QString& piece : text.split(QRegularExpression(QStringLiteral("[\\s\\x{200B}]")))) {
    widest = std::max(widest, QFontMetrics(font).horizontalAdvance(piece));
  }
  return widest;
}

TEST(BreakableText, AWordThatIsTooWideIsBrokenWhereItsLineIsFullAndNothingElseChanges) {
  const QFont font;
  const int width = QFontMetrics(font).horizontalAdvance(QStringLiteral("**21*0123456789"));
  const QString text = QStringLiteral("Dial **21*01234567890123456789012345678901234#?\n\nIt may.");
  const QString broken = qt::BreakableText(text, font, width);
  EXPECT_LE(WidestPiece(broken, font), width);
  EXPECT_GT(WidestPiece(text, font), width);
  EXPECT_EQ(QString(broken).remove(kPlaceToBreak), text);
  EXPECT_EQ(broken.count(kPlaceToBreak), 2);  // 39 characters at 15 a line, some narrower
  EXPECT_EQ(qt::BreakableText(text, font, 100000), text);
  EXPECT_EQ(qt::BreakableText(QStringLiteral("one two three four"), font, width),
            QStringLiteral("one two three four"));
  EXPECT_EQ(qt::BreakableText(QString(), font, width), QString());
}

class LongWords : public GuiTest {};

TEST_F(LongWords, ANumberInABoxIsSeenWhole) {
  const std::u16string number = u"**21*" + std::u16string(60, u'8') + u"#";
  QTimer::singleShot(20, [&] {
    qt::MessageWindow* box = OpenBox();
    ASSERT_NE(box, nullptr);
    auto* text = box->findChild<QLabel*>(QStringLiteral("messageText"));
    EXPECT_LE(WidestPiece(text->text(), text->font()), text->width());
    EXPECT_LE(text->width(), text->parentWidget()->width());
    EXPECT_LE(text->height(), text->parentWidget()->height());
    EXPECT_TRUE(text->text().remove(kPlaceToBreak).contains(QString::fromStdU16String(number)));
    EXPECT_TRUE(text->accessibleName().contains(QString::fromStdU16String(number)));
    box->reject();
  });
  screen_->MessageBox(0, u"Dial " + number + u"?\n\nIt may be a service code.", u"Warning",
                      ui::kBoxQuestion);
}

}  // namespace
}  // namespace kelpin::test
