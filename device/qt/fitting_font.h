#pragma once

#include <QFont>
#include <QSize>
#include <QString>
#include <optional>

namespace kelpin::qt {

// Texts that are too long for their place, in another language or in large letters, are drawn
// smaller rather than cut.

// The largest font, `font` or a smaller one, in which the text stays within `room`; with
// Qt::TextWordWrap in `flags` it may be broken between words. None when even `least` percent of
// the size, or 12 pixels, is too large.
std::optional<QFont> FittingFont(const QFont& font, const QString& text, QSize room, int flags,
                                 int least = 50);

// The same, and the smallest font that was tried where none fits.
QFont FittingOrSmallestFont(const QFont& font, const QString& text, QSize room, int flags);

}  // namespace kelpin::qt
