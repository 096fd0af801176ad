#include "device/qt/label_views.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

#include "device/qt/dialog_accessible.h"
#include "device/qt/fitting_font.h"
#include "device/qt/icons.h"
#include "device/qt/text.h"
#include "device/qt/theme.h"

namespace kelpin::qt {
namespace {

constexpr int kHeaderMargin = 16;
constexpr int kHeaderRim = 4;  // above and below
constexpr int kCardIcon = 28;
constexpr int kCardGap = 12;

bool IsNumber(QStringView text) {
  bool digit = false;
  for (const QChar c : text) {
    digit = digit || c.isDigit();
    if (!c.isDigit() && !QStringLiteral("+*#pPwW").contains(c)) {
      return false;
    }
  }
  return digit;
}

}  // namespace

HeaderTexts SplitHeader(const QString& text) {
  const qsizetype blank = text.lastIndexOf(QLatin1Char(' '));
  if (blank > 0 && IsNumber(QStringView(text).mid(blank + 1))) {
    return {text.left(blank).trimmed(), text.mid(blank + 1)};
  }
  return {text.trimmed(), {}};
}

HeaderView::HeaderView(QWidget* parent) : QWidget(parent) {
  setProperty(kIsText, true);
}

void HeaderView::Apply(const ui::ControlState& state) {
  const HeaderTexts texts = SplitHeader(ToQt(state.text));
  caption_ = texts.caption;
  number_ = texts.number;
  centered_ = (state.style & ui::kStyleCentered) != 0;
  valued_ = (state.style & ui::kStyleValue) != 0;
  setAccessibleName(ToQt(state.text));
  update();
}

void HeaderView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QPalette& colors = palette();
  QRect room = rect().adjusted(kHeaderMargin, 0, -kHeaderMargin, 0);
  if (!valued_ && number_.isEmpty()) {
    const int flags = static_cast<int>(Qt::AlignVCenter | Qt::TextWordWrap |
                                       (centered_ ? Qt::AlignHCenter : Qt::AlignLeft));
    painter.setFont(FittingOrSmallestFont(FontFor(TextRole::kHeader), caption_,
                                          room.size() - QSize(0, 2 * kHeaderRim), flags));
    painter.setPen(colors.color(QPalette::WindowText));
    painter.drawText(room, flags, caption_);
    return;
  }
  const int side = std::min(Scaled(kCardIcon), room.height() - 8);
  const QPixmap card =
      LineIcon(QStringLiteral("sim"), colors.color(kAccentRole), side, devicePixelRatioF());
  if (!card.isNull()) {
    painter.drawPixmap(room.left(), room.top() + (room.height() - side) / 2, card);
    room.setLeft(room.left() + side + kCardGap);
  }
  const QFont small = FontFor(TextRole::kCaption);
  const int flags = static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine);
  const QFont large =
      FittingOrSmallestFont(FontFor(TextRole::kHeader), number_, room.size(), flags);
  const int above = QFontMetrics(small).height();
  const int below = number_.isEmpty() ? 0 : QFontMetrics(large).height();
  const int top = room.top() + (room.height() - above - below) / 2;
  painter.setFont(small);
  painter.setPen(colors.color(kMutedRole));
  painter.drawText(QRect(room.left(), top, room.width(), above), flags, caption_);
  painter.setFont(large);
  painter.setPen(colors.color(QPalette::WindowText));
  painter.drawText(QRect(room.left(), top + above, room.width(), below), flags,
                   QFontMetrics(large).elidedText(number_, Qt::ElideRight, room.width()));
}

PictureView::PictureView(QWidget* parent) : QWidget(parent) {}

void PictureView::Apply(const ui::ControlState& state) {
  const QString kind =
      state.kind == ui::ControlKind::kIcon ? QStringLiteral("icon") : QStringLiteral("picture");
  drawing_ = kind + QString::number(state.resource);
  setAccessibleName(ToQt(state.text));
  update();
}

void PictureView::paintEvent(QPaintEvent* /*event*/) {
  const QPixmap picture = Drawing(drawing_, size(), devicePixelRatioF());
  if (picture.isNull()) {
    return;
  }
  const QSizeF shown = picture.deviceIndependentSize();
  QPainter(this).drawPixmap(QPointF((width() - shown.width()) / 2, (height() - shown.height()) / 2),
                            picture);
}

}  // namespace kelpin::qt
