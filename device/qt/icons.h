#pragma once

#include <QColor>
#include <QIcon>
#include <QPalette>
#include <QPixmap>
#include <QSize>
#include <QString>

// The program's drawings: SVG files in the resource folder ":/kelpin/icons".
namespace kelpin::qt {

QString IconPath(const QString& name);
// A line icon in one colour; null when there is no such drawing.
QPixmap LineIcon(const QString& name, const QColor& color, int size, qreal pixelRatio);
// A line icon in the accent, muted where it is disabled.
QIcon AccentIcon(const QString& name, const QPalette& palette, int size);
// A drawing in its own colours, as large as fits into `size`; null when there is none.
QPixmap Drawing(const QString& name, QSize size, qreal pixelRatio);
QIcon ProgramIcon();

}  // namespace kelpin::qt
