#include "device/qt/icons.h"

#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QSvgRenderer>
#include <algorithm>

#include "device/qt/theme.h"

namespace kelpin::qt {
namespace {

QPixmap Render(QSvgRenderer& renderer, QSize size, qreal pixelRatio) {
  QPixmap pixmap(size * pixelRatio);
  pixmap.setDevicePixelRatio(pixelRatio);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(size)));
  return pixmap;
}

}  // namespace

QString IconPath(const QString& name) {
  return QStringLiteral(":/kelpin/icons/") + name + QStringLiteral(".svg");
}

QPixmap LineIcon(const QString& name, const QColor& color, int size, qreal pixelRatio) {
  QFile file(IconPath(name));
  if (name.isEmpty() || !file.open(QIODevice::ReadOnly)) {
    return {};
  }
  QByteArray svg = file.readAll();
  svg.replace("currentColor", color.name(QColor::HexRgb).toLatin1());
  QSvgRenderer renderer(svg);
  return renderer.isValid() ? Render(renderer, QSize(size, size), pixelRatio) : QPixmap();
}

QIcon AccentIcon(const QString& name, const QPalette& palette, int size) {
  const qreal ratio = std::max<qreal>(1, qGuiApp->devicePixelRatio());
  const QPixmap normal = LineIcon(name, palette.color(QPalette::Active, kAccentRole), size, ratio);
  if (normal.isNull()) {
    return {};
  }
  QIcon icon(normal);
  icon.addPixmap(normal, QIcon::Active);
  icon.addPixmap(LineIcon(name, palette.color(QPalette::Disabled, kAccentRole), size, ratio),
                 QIcon::Disabled);
  return icon;
}

QPixmap Drawing(const QString& name, QSize size, qreal pixelRatio) {
  QSvgRenderer renderer(IconPath(name));
  if (!renderer.isValid() || size.isEmpty()) {
    return {};
  }
  return Render(renderer, renderer.defaultSize().scaled(size, Qt::KeepAspectRatio), pixelRatio);
}

QIcon ProgramIcon() {
  QIcon icon;
  for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
    const QPixmap pixmap = Drawing(QStringLiteral("icon353"), QSize(size, size), 1);
    if (!pixmap.isNull()) {
      icon.addPixmap(pixmap);
    }
  }
  return icon;
}

}  // namespace kelpin::qt
