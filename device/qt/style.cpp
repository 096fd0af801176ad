#include "device/qt/style.h"

#include <QAbstractScrollArea>
#include <QFontMetrics>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOption>
#include <algorithm>
#include <array>

#include "device/qt/style_menu.h"

namespace kelpin::qt {
namespace {

constexpr int kScrollBarExtent = 10;
constexpr int kScrollHandle = 4;

void DrawField(QPainter& painter, const QStyleOption& option) {
  const bool enabled = option.state.testFlag(QStyle::State_Enabled);
  const bool readOnly = option.state.testFlag(QStyle::State_ReadOnly);
  const bool focus = enabled && option.state.testFlag(QStyle::State_HasFocus);
  const QPalette& palette = option.palette;
  DrawPanel(painter, option.rect,
            palette.color(enabled && !readOnly ? QPalette::Base : QPalette::Window),
            palette.color(focus ? kAccentRole : kBorderRole), focus ? kFocusRing : 1);
}

void DrawButton(QPainter& painter, const QStyleOption& option, bool primary) {
  const QPalette& palette = option.palette;
  const bool enabled = option.state.testFlag(QStyle::State_Enabled);
  const bool down = option.state.testFlag(QStyle::State_Sunken);
  const bool hover = enabled && option.state.testFlag(QStyle::State_MouseOver);
  const bool focus = enabled && option.state.testFlag(QStyle::State_HasFocus);
  // One that is off is as flat as a field that is.
  QColor fill = palette.color(!enabled ? QPalette::Window
                              : down   ? kSelectionRole
                              : hover  ? kHoverRole
                                       : QPalette::Button);
  const QColor border = palette.color(focus ? kAccentRole : kBorderRole);
  if (primary && enabled) {
    const QColor accent = palette.color(kAccentRole);
    fill = down ? accent.darker(112) : accent;
    DrawPanel(painter, option.rect, fill, fill, 1);
    if (focus) {
      DrawPanel(painter, option.rect.adjusted(3, 3, -3, -3), Qt::transparent,
                palette.color(kOnAccentRole), kFocusRing);
    }
    return;
  }
  DrawPanel(painter, option.rect, fill, border, focus ? kFocusRing : 1);
}

void DrawScrollBar(QPainter& painter, const QStyleOptionSlider& option, const QRect& handle) {
  const bool active = option.state.testFlag(QStyle::State_Sunken) ||
                      (option.activeSubControls & QStyle::SC_ScrollBarSlider) != 0;
  QColor color = option.palette.color(QPalette::Active, QPalette::WindowText);
  color.setAlphaF(active ? 0.7F : 0.5F);
  const int thick = active ? kScrollHandle + 2 : kScrollHandle;
  QRect bar = handle;
  if (option.orientation == Qt::Vertical) {
    bar.setLeft(bar.right() - thick - 1);
    bar.setWidth(thick);
    bar.adjust(0, 2, 0, -2);
  } else {
    bar.setTop(bar.bottom() - thick - 1);
    bar.setHeight(thick);
    bar.adjust(2, 0, -2, 0);
  }
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(color);
  painter.drawRoundedRect(bar, thick / 2.0, thick / 2.0);
  painter.restore();
}

void DrawProgress(QPainter& painter, const QStyleOptionProgressBar& option) {
  const auto part = [](const QRectF& rect, const QColor& color, QPainter& on) {
    on.setBrush(color);
    on.drawRoundedRect(rect, rect.height() / 2, rect.height() / 2);
  };
  const QRectF groove(option.rect);
  const double range = option.maximum - option.minimum;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  part(groove, option.palette.color(kBorderRole), painter);
  if (range > 0 && option.progress > option.minimum) {
    const double done = std::min(1.0, (option.progress - option.minimum) / range);
    QRectF bar = groove;
    bar.setWidth(std::max(groove.height(), groove.width() * done));
    if (option.direction == Qt::RightToLeft) {
      bar.moveRight(groove.right());
    }
    part(bar, option.palette.color(kAccentRole), painter);
  }
  painter.restore();
}

void DrawSubMenuArrow(QPainter& painter, const QStyleOption& option) {
  const QPointF center = QRectF(option.rect).center();
  const double unit = Scaled(100) / 100.0;
  const double side = option.direction == Qt::RightToLeft ? -unit : unit;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(option.palette.color(kMutedRole), 1.6 * unit, Qt::SolidLine, Qt::RoundCap,
                      Qt::RoundJoin));
  painter.drawPolyline(
      std::array{center + QPointF(-2 * side, -4 * unit), center + QPointF(2 * side, 0),
                 center + QPointF(-2 * side, 4 * unit)}
          .data(),
      3);
  painter.restore();
}

}  // namespace

int CheckBoxSize() {
  return std::max(22, Scaled(22));
}

void DrawPanel(QPainter& painter, const QRect& rect, const QColor& fill, const QColor& border,
               int width) {
  const double inset = width / 2.0;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(border, width));
  painter.setBrush(fill);
  painter.drawRoundedRect(QRectF(rect).adjusted(inset, inset, -inset, -inset),
                          kCornerRadius - inset, kCornerRadius - inset);
  painter.restore();
}

void DrawCheckBox(QPainter& painter, const QRect& box, const QPalette& palette, bool checked,
                  bool enabled) {
  const auto group = enabled ? QPalette::Active : QPalette::Disabled;
  const QColor accent = palette.color(group, kAccentRole);
  const QRectF outer = QRectF(box).adjusted(1, 1, -1, -1);
  const double unit = outer.width() / 20;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(checked ? accent : palette.color(group, kMutedRole), 1.6));
  painter.setBrush(checked ? accent : palette.color(group, QPalette::Base));
  painter.drawRoundedRect(outer, 5 * unit, 5 * unit);
  if (checked) {
    painter.setPen(QPen(palette.color(group, kOnAccentRole), 2.4 * unit, Qt::SolidLine,
                        Qt::RoundCap, Qt::RoundJoin));
    const QPointF at = outer.topLeft();
    painter.drawPolyline(std::array{at + QPointF(5.2, 10.6) * unit, at + QPointF(8.7, 14) * unit,
                                    at + QPointF(15, 6.8) * unit}
                             .data(),
                         3);
  }
  painter.restore();
}

Style::Style(std::function<Look(const QPalette&)> wish)
    : QProxyStyle(QStringLiteral("Fusion")), wish_(std::move(wish)) {}

void Style::polish(QPalette& palette) {
  palette = MakePalette(wish_(palette));
}

void Style::polish(QWidget* widget) {
  QProxyStyle::polish(widget);
  if (widget->inherits("QAbstractButton") || widget->inherits("QScrollBar")) {
    widget->setAttribute(Qt::WA_Hover);
  }
}

void Style::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                          const QWidget* widget) const {
  switch (element) {
    case PE_PanelLineEdit:
      DrawField(*painter, *option);
      return;
    case PE_PanelButtonCommand:
      DrawButton(*painter, *option, widget != nullptr && widget->property("primary").toBool());
      return;
    case PE_IndicatorCheckBox:
      DrawCheckBox(*painter, option->rect, option->palette, option->state.testFlag(State_On),
                   option->state.testFlag(State_Enabled));
      return;
    case PE_PanelMenu:
      painter->fillRect(option->rect, option->palette.color(QPalette::Base));
      return;
    case PE_FrameMenu:
      painter->save();
      painter->setPen(option->palette.color(kBorderRole));
      painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
      painter->restore();
      return;
    case PE_IndicatorArrowRight:
    case PE_IndicatorArrowLeft:
      DrawSubMenuArrow(*painter, *option);
      return;
    case PE_FrameLineEdit:
    case PE_Frame:
    case PE_FrameFocusRect:
    case PE_PanelItemViewItem:
    case PE_PanelItemViewRow:
    case PE_PanelScrollAreaCorner:
      return;
    default:
      QProxyStyle::drawPrimitive(element, option, painter, widget);
  }
}

void Style::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                        const QWidget* widget) const {
  switch (element) {
    case CE_MenuItem:
      if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option)) {
        DrawMenuItem(*painter, *item, *this, widget);
        return;
      }
      break;
    case CE_ProgressBar:
      if (const auto* bar = qstyleoption_cast<const QStyleOptionProgressBar*>(option)) {
        DrawProgress(*painter, *bar);
        return;
      }
      break;
    case CE_PushButtonLabel:
      if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option)) {
        const bool primary = widget != nullptr && widget->property("primary").toBool();
        painter->save();
        painter->setPen(option->palette.color(primary ? kOnAccentRole : QPalette::ButtonText));
        painter->drawText(option->rect, Qt::AlignCenter | Qt::TextShowMnemonic, button->text);
        painter->restore();
        return;
      }
      break;
    case CE_CheckBox: {
      QStyleOption box = *option;
      box.rect = subElementRect(SE_CheckBoxIndicator, option, widget);
      drawPrimitive(PE_IndicatorCheckBox, &box, painter, widget);
      if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option)) {
        const auto group =
            option->state.testFlag(State_Enabled) ? QPalette::Active : QPalette::Disabled;
        painter->save();
        painter->setPen(option->palette.color(group, QPalette::WindowText));
        painter->drawText(subElementRect(SE_CheckBoxContents, option, widget),
                          static_cast<int>(Qt::AlignVCenter | Qt::TextShowMnemonic |
                                           visualAlignment(option->direction, Qt::AlignLeft)),
                          button->text);
        painter->restore();
      }
      if (option->state.testFlag(State_HasFocus)) {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(option->palette.color(kAccentRole), kFocusRing));
        painter->drawRoundedRect(QRectF(option->rect).adjusted(1, 1, -1, -1), kCornerRadius,
                                 kCornerRadius);
        painter->restore();
      }
      return;
    }
    default:
      break;
  }
  QProxyStyle::drawControl(element, option, painter, widget);
}

void Style::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                               QPainter* painter, const QWidget* widget) const {
  if (control == CC_ScrollBar) {
    if (const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
        slider != nullptr && slider->maximum > slider->minimum) {
      DrawScrollBar(*painter, *slider, subControlRect(control, option, SC_ScrollBarSlider, widget));
    }
    return;
  }
  QProxyStyle::drawComplexControl(control, option, painter, widget);
}

QRect Style::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                            SubControl subControl, const QWidget* widget) const {
  const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
  if (control != CC_ScrollBar || slider == nullptr) {
    return QProxyStyle::subControlRect(control, option, subControl, widget);
  }
  const bool vertical = slider->orientation == Qt::Vertical;
  const QRect groove = option->rect;
  const int length = vertical ? groove.height() : groove.width();
  const int range = slider->maximum - slider->minimum;
  int handle = length;
  if (range > 0) {
    handle = static_cast<int>(static_cast<qint64>(slider->pageStep) * length /
                              (static_cast<qint64>(range) + slider->pageStep));
    handle = std::clamp(handle, std::min(36, length), length);
  }
  const int start =
      sliderPositionFromValue(slider->minimum, slider->maximum, slider->sliderPosition,
                              length - handle, slider->upsideDown);
  const auto along = [&](int from, int size) {
    return vertical ? QRect(groove.left(), groove.top() + from, groove.width(), size)
                    : QRect(groove.left() + from, groove.top(), size, groove.height());
  };
  switch (subControl) {
    case SC_ScrollBarSlider:
      return along(start, handle);
    case SC_ScrollBarSubPage:
      return along(0, start);
    case SC_ScrollBarAddPage:
      return along(start + handle, length - start - handle);
    case SC_ScrollBarGroove:
      return groove;
    default:
      return {};
  }
}

QRect Style::subElementRect(SubElement element, const QStyleOption* option,
                            const QWidget* widget) const {
  const QRect rect = option->rect;
  switch (element) {
    case SE_LineEditContents:
      return rect.adjusted(9, 1, -9, -1);
    case SE_CheckBoxIndicator: {
      const QRect box(rect.left() + 4, rect.top() + (rect.height() - CheckBoxSize()) / 2,
                      CheckBoxSize(), CheckBoxSize());
      return visualRect(option->direction, rect, box);
    }
    case SE_CheckBoxContents:
      return visualRect(option->direction, rect, rect.adjusted(4 + CheckBoxSize() + 10, 0, -4, 0));
    case SE_CheckBoxClickRect:
    case SE_ProgressBarGroove:
    case SE_ProgressBarContents:
      return rect;
    default:
      return QProxyStyle::subElementRect(element, option, widget);
  }
}

int Style::pixelMetric(PixelMetric metric, const QStyleOption* option,
                       const QWidget* widget) const {
  switch (metric) {
    case PM_ScrollBarExtent:
    case PM_ScrollView_ScrollBarOverlap:
      return kScrollBarExtent;
    case PM_ScrollBarSliderMin:
      return 36;
    case PM_ScrollView_ScrollBarSpacing:
    case PM_DefaultFrameWidth:
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
    case PM_FocusFrameHMargin:
    case PM_FocusFrameVMargin:
      return 0;
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
      return CheckBoxSize();
    case PM_MenuPanelWidth:
      return 1;
    case PM_MenuVMargin:
      return 6;
    case PM_MenuHMargin:
    case PM_SubMenuOverlap:
      return 0;
    case PM_SmallIconSize:
      return Scaled(20);
    case PM_TextCursorWidth:
      return std::max(1, Scaled(1));
    default:
      return QProxyStyle::pixelMetric(metric, option, widget);
  }
}

int Style::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                     QStyleHintReturn* data) const {
  switch (hint) {
    case SH_ScrollBar_LeftClickAbsolutePosition:
    case SH_Menu_MouseTracking:
    case SH_Menu_Scrollable:
      return 1;
    case SH_ScrollBar_Transient:
    case SH_DialogButtonBox_ButtonsHaveIcons:
    case SH_EtchDisabledText:
    case SH_ScrollView_FrameOnlyAroundContents:
    case SH_Menu_FlashTriggeredItem:
      return 0;
    default:
      return QProxyStyle::styleHint(hint, option, widget, data);
  }
}

QSize Style::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                              const QWidget* widget) const {
  switch (type) {
    case CT_MenuItem:
      if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option)) {
        return MenuItemSize(*item);
      }
      break;
    case CT_PushButton:
      return {std::max(size.width() + 32, kMinimumTouch), std::max(size.height(), kMinimumTouch)};
    case CT_CheckBox:
      return {size.width(), std::max(size.height(), kMinimumTouch)};
    default:
      break;
  }
  return QProxyStyle::sizeFromContents(type, option, size, widget);
}

}  // namespace kelpin::qt
