#include "device/qt/desktop_look.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>
#include <QFontInfo>
#include <algorithm>
#include <cmath>

namespace kelpin::qt {
namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString kAppearance = QStringLiteral("org.freedesktop.appearance");
const QString kGnome = QStringLiteral("org.gnome.desktop.interface");

// What Qt draws selections in when no desktop told it anything.
const QColor kUntold(0x30, 0x8c, 0xc6);

QVariant Unwrap(QVariant value) {
  while (value.userType() == qMetaTypeId<QDBusVariant>()) {
    value = value.value<QDBusVariant>().variant();
  }
  return value;
}

std::optional<QColor> ColorFrom(const QVariant& value) {
  if (value.userType() != qMetaTypeId<QDBusArgument>()) {
    return std::nullopt;
  }
  const auto argument = value.value<QDBusArgument>();
  double red = -1;
  double green = -1;
  double blue = -1;
  argument.beginStructure();
  argument >> red >> green >> blue;
  argument.endStructure();
  const auto inRange = [](double part) { return part >= 0 && part <= 1; };
  if (!inRange(red) || !inRange(green) || !inRange(blue)) {
    return std::nullopt;  // the service says so when there is none
  }
  return QColor::fromRgbF(static_cast<float>(red), static_cast<float>(green),
                          static_cast<float>(blue));
}

}  // namespace

bool HasSessionBus() {
  if (!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")) {
    return true;
  }
  const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
  return !runtime.isEmpty() && QFile::exists(runtime + QStringLiteral("/bus"));
}

DesktopLook::DesktopLook(const QFont& desktopFont) : desktopFont_(desktopFont) {
  // A desktop that asks for larger text gets it; the design's own size is the least.
  constexpr double kUsualPixels = 15;
  fontScale_ = std::max(1.0, QFontInfo(desktopFont).pixelSize() / kUsualPixels);
}

Look DesktopLook::For(const QPalette& desktopPalette) const {
  Look look;
  look.dark = dark_.value_or(desktopPalette.color(QPalette::Window).lightness() <
                             desktopPalette.color(QPalette::WindowText).lightness());
  look.highContrast = contrast_.value_or(false);
  look.accent = accent_;
  const QColor highlight = desktopPalette.color(QPalette::Active, QPalette::Highlight);
  if (!look.accent && highlight.rgb() != kUntold.rgb() && highlight.saturation() > 40) {
    look.accent = highlight;
  }
  look.textScale = fontScale_ * textScale_;
  const QString theme = qEnvironmentVariable("KELPIN_THEME");
  if (!theme.isEmpty()) {
    look.dark = theme.startsWith(QLatin1String("dark"));
    look.highContrast = theme.endsWith(QLatin1String("-contrast"));
    look.accent.reset();
  }
  bool told = false;
  const int percent = qEnvironmentVariableIntValue("KELPIN_TEXT_SCALE", &told);
  if (told) {
    look.textScale = std::clamp(percent, 50, 400) / 100.0;
  }
  return look;
}

QFont DesktopLook::Font() const {
  return BaseFont(desktopFont_, qEnvironmentVariable("KELPIN_FONT"), For(QPalette()).textScale);
}

void DesktopLook::Ask() {
  if (!HasSessionBus()) {
    return;
  }
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) {
    return;
  }
  bus.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
              SLOT(SettingChanged(QString, QString, QDBusVariant)));
  for (const char* key : {"color-scheme", "contrast", "accent-color"}) {
    AskFor(kAppearance, QString::fromLatin1(key));
  }
  AskFor(kGnome, QStringLiteral("text-scaling-factor"));
}

void DesktopLook::AskFor(const QString& group, const QString& key) {
  QDBusMessage question =
      QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Read"));
  question << group << key;
  auto* watcher =
      new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, group, key] {
    watcher->deleteLater();
    const QDBusPendingReply<QDBusVariant> reply = *watcher;
    if (!reply.isError()) {
      Take(group, key, reply.value().variant());
    }
  });
}

void DesktopLook::SettingChanged(const QString& group, const QString& key,
                                 const QDBusVariant& value) {
  Take(group, key, value.variant());
}

void DesktopLook::Take(const QString& group, const QString& key, const QVariant& wrapped) {
  const QVariant value = Unwrap(wrapped);
  const auto dark = dark_;
  const auto contrast = contrast_;
  const auto accent = accent_;
  const double scale = textScale_;
  if (group == kAppearance && key == QLatin1String("color-scheme")) {
    // 0: no preference, 1: dark, 2: light.
    const uint scheme = value.toUInt();
    dark_ = scheme == 0 ? std::nullopt : std::optional(scheme == 1);
  } else if (group == kAppearance && key == QLatin1String("contrast")) {
    contrast_ = value.toUInt() == 1;
  } else if (group == kAppearance && key == QLatin1String("accent-color")) {
    accent_ = ColorFrom(value);
  } else if (group == kGnome && key == QLatin1String("text-scaling-factor")) {
    const double factor = value.toDouble();
    textScale_ = factor > 0 ? std::clamp(factor, 0.5, 4.0) : 1.0;
  }
  if (dark != dark_ || contrast != contrast_ || accent != accent_ ||
      std::abs(scale - textScale_) > 0.001) {
    Q_EMIT Changed();
  }
}

}  // namespace kelpin::qt
