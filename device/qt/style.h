#pragma once

#include <QProxyStyle>
#include <functional>

#include "device/qt/theme.h"

namespace kelpin::qt {

// Draws the standard widgets: quiet, flat, hairlines instead of boxes.
class Style : public QProxyStyle {
  Q_OBJECT

 public:
  // `wish` is asked for the look whenever the palette is made; it is given the desktop's palette.
  explicit Style(std::function<Look(const QPalette& desktop)> wish);

  using QProxyStyle::polish;
  void polish(QPalette& palette) override;
  void polish(QWidget* widget) override;

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                          QPainter* painter, const QWidget* widget) const override;
  QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                       SubControl subControl, const QWidget* widget) const override;
  QRect subElementRect(SubElement element, const QStyleOption* option,
                       const QWidget* widget) const override;
  int pixelMetric(PixelMetric metric, const QStyleOption* option,
                  const QWidget* widget) const override;
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* data) const override;
  QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                         const QWidget* widget) const override;

 private:
  std::function<Look(const QPalette&)> wish_;
};

int CheckBoxSize();
inline constexpr int kFocusRing = 2;

// The check box of forms and lists.
void DrawCheckBox(QPainter& painter, const QRect& box, const QPalette& palette, bool checked,
                  bool enabled);
// A rounded panel with a border of `width` pixels wholly inside `rect`.
void DrawPanel(QPainter& painter, const QRect& rect, const QColor& fill, const QColor& border,
               int width);

}  // namespace kelpin::qt
