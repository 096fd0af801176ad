#include "device/qt/message_window.h"

#include <QAccessible>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <algorithm>

#include "device/qt/breakable_text.h"
#include "device/qt/button_words.h"
#include "device/qt/text.h"
#include "device/qt/theme.h"

namespace kelpin::qt {
namespace {

constexpr int kMargin = 20;
constexpr int kWidth = 328;  // a phone's width less a margin

// Stop, exclamation, information: a disc or a triangle with its sign.
class BoxSign : public QWidget {
 public:
  BoxSign(ui::BoxIcon icon, QWidget* parent) : QWidget(parent), icon_(icon) {
    setFixedSize(Scaled(28), Scaled(28));
  }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double unit = width() / 28.0;
    painter.scale(unit, unit);
    const QColor color = palette().color(icon_ == ui::BoxIcon::kStop ? kErrorRole : kAccentRole);
    painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (icon_ == ui::BoxIcon::kExclamation) {
      QPainterPath triangle(QPointF(14, 3));
      triangle.lineTo(26, 24);
      triangle.lineTo(2, 24);
      triangle.closeSubpath();
      painter.drawPath(triangle);
      painter.drawLine(QPointF(14, 11), QPointF(14, 16.5));
      Dot(painter, color, 20.2);
      return;
    }
    painter.drawEllipse(QPointF(14, 14), 11.5, 11.5);
    if (icon_ == ui::BoxIcon::kStop) {
      painter.drawLine(QPointF(14, 8.5), QPointF(14, 15));
      Dot(painter, color, 19);
    } else {
      Dot(painter, color, 9);
      painter.drawLine(QPointF(14, 13), QPointF(14, 19.5));
    }
  }

 private:
  static void Dot(QPainter& painter, const QColor& color, double y) {
    painter.save();
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(QPointF(14, y), 1.4, 1.4);
    painter.restore();
  }

  ui::BoxIcon icon_;
};

}  // namespace

ui::BoxAnswer MessageWindow::SafeAnswer(ui::BoxStyle style) {
  return style.buttons == ui::BoxButtons::kYesNo ? ui::BoxAnswer::kNo : ui::BoxAnswer::kOk;
}

MessageWindow::MessageWindow(std::u16string_view text, std::u16string_view caption,
                             ui::BoxStyle style, QWidget* parent)
    : QDialog(parent), style_(style), answer_(SafeAnswer(style)) {
  setObjectName(QStringLiteral("messageBox"));
  setWindowTitle(ToQt(caption));
  setAccessibleName(ToQt(caption));
  setAccessibleDescription(ToQt(text));

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(kMargin, kMargin, kMargin, kMargin - 4);
  column->setSpacing(12);
  auto* top = new QHBoxLayout;
  top->setSpacing(14);
  top->addWidget(new BoxSign(style.icon, this), 0, Qt::AlignTop);
  auto* heading = new QLabel(ToQt(caption), this);
  heading->setTextFormat(Qt::PlainText);
  heading->setFont(FontFor(TextRole::kTitle));
  heading->setWordWrap(true);
  top->addWidget(heading, 1, Qt::AlignVCenter);
  column->addLayout(top);
  // Long texts in large letters scroll, so that the buttons stay on the screen.
  scroll_ = new QScrollArea(this);
  scroll_->setFrameShape(QFrame::NoFrame);
  scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  scroll_->setWidgetResizable(true);
  scroll_->setFocusPolicy(Qt::NoFocus);
  text_ = new QLabel(ToQt(text));
  text_->setAccessibleName(ToQt(text));
  text_->setObjectName(QStringLiteral("messageText"));
  text_->setTextFormat(Qt::PlainText);
  text_->setFont(FontFor(TextRole::kBase));
  text_->setWordWrap(true);
  text_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  text_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  scroll_->setWidget(text_);
  column->addWidget(scroll_, 1);
  column->addSpacing(kMargin - 12);

  auto* row = new QWidget(this);
  auto* buttons = new QHBoxLayout(row);
  buttons->setContentsMargins(0, 0, 0, 0);
  buttons->setSpacing(10);
  const ButtonWords& words = CurrentButtonWords();
  if (style.buttons == ui::BoxButtons::kYesNo) {
    AddButton(row, ToQt(words.yes), ui::BoxAnswer::kYes, false);
    AddButton(row, ToQt(words.no), ui::BoxAnswer::kNo, true);
  } else {
    AddButton(row, ToQt(words.ok), ui::BoxAnswer::kOk, true);
  }
  column->addWidget(row);

  FitTo(parent != nullptr ? parent->window()->size() : screen()->availableGeometry().size());
}

// As wide as reads well, as high as the text needs, within `room`.
void MessageWindow::FitTo(QSize room) {
  const int width = std::max(240, std::min(room.width() - 16, std::max(kWidth, Scaled(kWidth))));
  setFixedWidth(width);
  const int line = width - 2 * kMargin;
  const int beside = line - style()->pixelMetric(QStyle::PM_ScrollBarExtent);
  text_->setText(BreakableText(text_->text(), text_->font(), beside));
  const int text = text_->heightForWidth(line);
  scroll_->setFixedHeight(0);
  const int frame = layout()->totalHeightForWidth(width);
  scroll_->setFixedHeight(std::min(text, std::max(Scaled(40), room.height() - 16 - frame)));
  setFixedHeight(layout()->totalHeightForWidth(width));
}

void MessageWindow::AddButton(QWidget* row, const QString& text, ui::BoxAnswer answer,
                              bool primary) {
  auto* button = new QPushButton(text, row);
  button->setObjectName(QStringLiteral("answer%1").arg(static_cast<int>(answer)));
  button->setProperty("primary", primary);
  button->setFont(FontFor(TextRole::kKey));
  button->setMinimumHeight(MenuItemHeight());
  button->setAutoDefault(true);
  button->setDefault(primary);
  row->layout()->addWidget(button);
  connect(button, &QPushButton::clicked, this, [this, answer] { Give(answer); });
  if (primary) {
    button->setFocus();
  }
}

void MessageWindow::Give(ui::BoxAnswer answer) {
  if (given_) {
    return;
  }
  given_ = true;
  answer_ = answer;
  hide();
  Q_EMIT Answered();
}

void MessageWindow::reject() {
  Give(SafeAnswer(style_));
}

void MessageWindow::keyPressEvent(QKeyEvent* event) {
  const QString letter = event->text().toUpper();
  const QString yes = ToQt(CurrentButtonWords().yes).left(1).toUpper();
  const QString no = ToQt(CurrentButtonWords().no).left(1).toUpper();
  const bool asked = style_.buttons == ui::BoxButtons::kYesNo && !letter.isEmpty() && yes != no;
  if (asked && letter == yes) {
    Give(ui::BoxAnswer::kYes);
  } else if (asked && letter == no) {
    Give(ui::BoxAnswer::kNo);
  } else if (event->key() == Qt::Key_Back) {
    reject();
  } else {
    QDialog::keyPressEvent(event);
  }
}

void MessageWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  reject();
}

// In the middle of the window it belongs to.
void MessageWindow::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (const QWidget* owner = parentWidget()) {
    const QRect frame = owner->window()->frameGeometry();
    move(frame.center() - QPoint(width() / 2, height() / 2));
  }
  QAccessibleEvent alert(this, QAccessible::Alert);
  QAccessible::updateAccessibility(&alert);
}

}  // namespace kelpin::qt
