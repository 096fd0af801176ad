#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace kelpin::qt {

inline QString ToQt(std::u16string_view text) {
  return QString(reinterpret_cast<const QChar*>(text.data()), static_cast<qsizetype>(text.size()));
}

inline std::u16string FromQt(const QString& text) {
  return text.toStdU16String();
}

}  // namespace kelpin::qt
