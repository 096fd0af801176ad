#include "device/qt/breakable_text.h"

#include <QTextBoundaryFinder>
#include <QTextLayout>
#include <QTextOption>

namespace kelpin::qt {

QString BreakableText(const QString& text, const QFont& font, int width) {
  QString lines = text;
  lines.replace(QLatin1Char('\n'), QChar(QChar::LineSeparator));
  QTextLayout layout(lines, font);
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout.setTextOption(option);
  QTextBoundaryFinder words(QTextBoundaryFinder::Line, lines);
  QString broken;
  int copied = 0;
  layout.beginLayout();
  for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
    line.setLineWidth(width);
    const int end = line.textStart() + line.textLength();
    broken += text.mid(copied, end - copied);
    copied = end;
    words.setPosition(end);
    if (end < text.size() && !words.isAtBoundary()) {
      broken += QChar(0x200B);
    }
  }
  layout.endLayout();
  return broken + text.mid(copied);
}

}  // namespace kelpin::qt
