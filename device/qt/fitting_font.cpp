#include "device/qt/fitting_font.h"

#include <QFontMetrics>
#include <QRect>
#include <algorithm>

namespace kelpin::qt {
namespace {

constexpr int kSmallest = 12;  // pixels
constexpr int kHalf = 50;      // percent
constexpr int kTall = 10000;   // higher than any text

int SmallestSize(const QFont& font, int least) {
  return std::min(font.pixelSize(), std::max(kSmallest, font.pixelSize() * least / 100));
}

}  // namespace

std::optional<QFont> FittingFont(const QFont& font, const QString& text, QSize room, int flags,
                                 int least) {
  QFont smaller = font;
  for (int size = font.pixelSize(); size >= SmallestSize(font, least); --size) {
    smaller.setPixelSize(size);
    const QFontMetrics metrics(smaller);
    const bool wraps = (flags & Qt::TextWordWrap) != 0;
    const QSize needed =
        wraps ? metrics.boundingRect(QRect(0, 0, room.width(), kTall), flags, text).size()
              : QSize(metrics.horizontalAdvance(text), metrics.height());
    if (needed.width() <= room.width() && needed.height() <= room.height()) {
      return smaller;
    }
  }
  return std::nullopt;
}

QFont FittingOrSmallestFont(const QFont& font, const QString& text, QSize room, int flags) {
  if (const std::optional<QFont> fitting = FittingFont(font, text, room, flags, kHalf)) {
    return *fitting;
  }
  QFont smallest = font;
  smallest.setPixelSize(SmallestSize(font, kHalf));
  return smallest;
}

}  // namespace kelpin::qt
