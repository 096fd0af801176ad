#pragma once

#include <QFont>
#include <QString>

namespace kelpin::qt {

// The text with a place to break (U+200B) in each word that is wider than `width` alone, where its
// line is full. A label breaks between words and would cut such a word off.
QString BreakableText(const QString& text, const QFont& font, int width);

}  // namespace kelpin::qt
