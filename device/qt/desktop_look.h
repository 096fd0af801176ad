#pragma once

#include <QDBusVariant>
#include <QFont>
#include <QObject>
#include <QVariant>
#include <optional>

#include "device/qt/theme.h"

namespace kelpin::qt {

// What the desktop and the user's environment say about colours and text size, as it stands now:
// the desktop's palette, its settings service where a session bus is there, and the variables
// KELPIN_THEME (light, dark, light-contrast, dark-contrast), KELPIN_TEXT_SCALE (percent) and
// KELPIN_FONT (a family), which come before both.
class DesktopLook : public QObject {
  Q_OBJECT

 public:
  explicit DesktopLook(const QFont& desktopFont);

  Look For(const QPalette& desktopPalette) const;
  QFont Font() const;
  // Asks the settings service, without waiting. Changed() tells when it knew something new.
  void Ask();

 Q_SIGNALS:
  void Changed();

 private Q_SLOTS:
  void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void Take(const QString& group, const QString& key, const QVariant& value);
  void AskFor(const QString& group, const QString& key);

  QFont desktopFont_;
  double fontScale_ = 1.0;  // of the desktop's font, against the design's
  std::optional<bool> dark_;
  std::optional<bool> contrast_;
  std::optional<QColor> accent_;
  double textScale_ = 1.0;
};

// The session bus, when there is one; without starting one.
bool HasSessionBus();

}  // namespace kelpin::qt
