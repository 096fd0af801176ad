#include "device/qt/list_pane.h"

#include <QAccessible>
#include <QAccessibleEvent>
#include <QFontMetrics>
#include <QHeaderView>
#include <QPainter>
#include <algorithm>

#include "device/qt/dialog_accessible.h"
#include "device/qt/list_table.h"
#include "device/qt/text.h"
#include "device/qt/theme.h"

namespace kelpin::qt {

// What is so, how far it is, what to do next.
class ListPane::Message : public QWidget {
 public:
  explicit Message(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("message"));
    setProperty(kIsText, true);
  }

  void Apply(const ui::ListMessage& message) {
    if (message == message_) {
      return;
    }
    const bool words = message.text != message_.text;
    message_ = message;
    QString name = ToQt(message_.text);
    if (!message_.hint.empty()) {
      name += QLatin1Char('\n') + ToQt(message_.hint);
    }
    setAccessibleName(name);
    if (words && isVisible()) {
      QAccessibleEvent event(this, QAccessible::NameChanged);
      QAccessible::updateAccessibility(&event);
    }
    update();
  }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int width = std::min(this->width() - 64, Scaled(320));
    const int left = (this->width() - width) / 2;
    const int wrap = static_cast<int>(Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap);
    const QFont strong = FontFor(TextRole::kTitle);
    const QFont plain = FontFor(TextRole::kBase);
    const QString text = ToQt(message_.text);
    const QString hint = ToQt(message_.hint);
    const auto height = [&](const QFont& font, const QString& words) {
      return words.isEmpty()
                 ? 0
                 : QFontMetrics(font).boundingRect(QRect(0, 0, width, 4000), wrap, words).height();
    };
    const int textHeight = height(strong, text);
    const int hintHeight = height(plain, hint);
    const int bar = message_.total > 0 ? 36 : 0;
    const int all = textHeight + bar + (hintHeight > 0 ? hintHeight + 8 : 0);
    int y = std::max(16, (this->height() - all) * 2 / 5);

    painter.setFont(strong);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(QRect(left, y, width, textHeight), wrap, text);
    y += textHeight;
    if (bar > 0) {
      DrawBar(painter, QRectF(left, y + 16, width, 4));
      y += bar;
    }
    painter.setFont(plain);
    painter.setPen(palette().color(kMutedRole));
    painter.drawText(QRect(left, y + 8, width, hintHeight), wrap, hint);
  }

 private:
  void DrawBar(QPainter& painter, const QRectF& groove) const {
    const double part = std::clamp(static_cast<double>(message_.done) / message_.total, 0.0, 1.0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(kBorderRole));
    painter.drawRoundedRect(groove, 2, 2);
    if (part > 0) {
      QRectF bar = groove;
      bar.setWidth(std::max(4.0, groove.width() * part));
      painter.setBrush(palette().color(kAccentRole));
      painter.drawRoundedRect(bar, 2, 2);
    }
  }

  ui::ListMessage message_;
};

ListPane::ListPane(ui::ListView& list, DialogEvents& events, QWidget* parent)
    : QWidget(parent),
      list_(list),
      table_(new ListTable(list, events, this)),
      message_(new Message(this)) {
  message_->hide();
}

void ListPane::Sync() {
  const bool shown = list_.Visible();
  message_->Apply(list_.Message());
  table_->setVisible(shown);
  table_->Sync();
  message_->setVisible(!shown || list_.ItemCount() == 0);
  LayOut();
}

void ListPane::LayOut() {
  table_->setGeometry(rect());
  const int top = list_.Visible() ? table_->horizontalHeader()->height() : 0;
  message_->setGeometry(0, top, width(), std::max(0, height() - top));
  message_->raise();
}

void ListPane::resizeEvent(QResizeEvent* /*event*/) {
  LayOut();
}

void ListPane::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().color(QPalette::Base));
  painter.fillRect(0, 0, width(), 1, palette().color(kHairlineRole));
}

}  // namespace kelpin::qt
