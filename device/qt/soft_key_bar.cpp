#include "device/qt/soft_key_bar.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QEvent>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <algorithm>
#include <utility>

#include "device/qt/button_words.h"
#include "device/qt/fitting_font.h"
#include "device/qt/icons.h"
#include "device/qt/modality.h"
#include "device/qt/style.h"
#include "device/qt/text.h"
#include "device/qt/theme.h"

namespace kelpin::qt {
namespace {

constexpr int kIcon = 20;  // times the text size
constexpr int kIconGap = 6;
constexpr int kTextMargin = 4;
constexpr int kLeastKey = 48;     // one of three
constexpr int kWidestPair = 640;  // keys of a wide window stay together in its middle

class SoftKeyAccessible : public QAccessibleWidget {
 public:
  explicit SoftKeyAccessible(SoftKeyButton* key)
      : QAccessibleWidget(key,
                          key->Menu() != nullptr ? QAccessible::ButtonMenu : QAccessible::Button) {
    addControllingSignal(QStringLiteral("clicked()"));
  }

  int childCount() const override { return Menu() != nullptr ? 1 : 0; }
  QAccessibleInterface* child(int index) const override {
    return index == 0 && Menu() != nullptr ? QAccessible::queryAccessibleInterface(Menu())
                                           : nullptr;
  }
  int indexOfChild(const QAccessibleInterface* child) const override {
    return child != nullptr && child->object() == Menu() && Menu() != nullptr ? 0 : -1;
  }
  QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
  void doAction(const QString& action) override {
    if (action == pressAction()) {
      static_cast<SoftKeyButton*>(object())->animateClick();
    } else {
      QAccessibleWidget::doAction(action);
    }
  }

 private:
  PopupMenu* Menu() const { return static_cast<SoftKeyButton*>(object())->Menu(); }
};

QAccessibleInterface* MakeAccessible(const QString& /*key*/, QObject* object) {
  auto* key = qobject_cast<SoftKeyButton*>(object);
  return key == nullptr ? nullptr : new SoftKeyAccessible(key);
}

}  // namespace

void InstallSoftKeyAccessibility() {
  QAccessible::installFactory(MakeAccessible);
}

SoftKeyButton::SoftKeyButton(QWidget* parent) : QAbstractButton(parent) {
  setFocusPolicy(Qt::TabFocus);  // a press leaves the focus in the list
  setAttribute(Qt::WA_Hover);
}

void SoftKeyButton::Apply(const ui::SoftKey& key) {
  if (key == key_) {
    return;
  }
  const bool iconChanged = key.icon != key_.icon;
  key_ = key;
  setText(ToQt(key.text));
  setAccessibleName(text());
  setEnabled(key.enabled);
  if (iconChanged || icon_.isNull()) {
    LoadIcon();
  }
  update();
}

void SoftKeyButton::LoadIcon() {
  icon_ =
      LineIcon(QString::fromStdString(key_.icon),
               palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, kAccentRole),
               Scaled(kIcon), devicePixelRatioF());
}

void SoftKeyButton::changeEvent(QEvent* event) {
  QAbstractButton::changeEvent(event);
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::EnabledChange ||
      event->type() == QEvent::FontChange) {
    LoadIcon();
    update();
  }
}

QSize SoftKeyButton::sizeHint() const {
  const QFontMetrics metrics(FontFor(TextRole::kKey));
  return {metrics.horizontalAdvance(text()) + Scaled(kIcon) + kIconGap + 32, SoftKeyBarHeight()};
}

void SoftKeyButton::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QPalette& colors = palette();
  const QRect inside = Inside();
  if (isEnabled() && (isDown() || (menu_ != nullptr && menu_->isVisible()))) {
    DrawPanel(painter, inside, colors.color(kSelectionRole), Qt::transparent, 0);
  } else if (isEnabled() && underMouse()) {
    DrawPanel(painter, inside, colors.color(kHoverRole), Qt::transparent, 0);
  }
  if (hasFocus()) {
    DrawPanel(painter, inside, Qt::transparent, colors.color(kAccentRole), kFocusRing);
  }
  QFont font = FontFor(TextRole::kKey);
  if (textSize_ > 0) {
    font.setPixelSize(textSize_);
  }
  painter.setFont(font);
  painter.setPen(colors.color(kAccentRole));
  const int words =
      std::min(painter.fontMetrics().horizontalAdvance(text()), inside.width() - IconRoom());
  const int left = inside.left() + (inside.width() - IconRoom() - words) / 2;
  if (!icon_.isNull()) {
    const int icon = Scaled(kIcon);
    painter.drawPixmap(left, inside.top() + (inside.height() - icon) / 2, icon_);
  }
  painter.drawText(QRect(left + IconRoom(), inside.top(), words + 4, inside.height()),
                   static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine), text());
}

int SoftKeyButton::IconRoom() const {
  return icon_.isNull() ? 0 : Scaled(kIcon) + kIconGap;
}

int SoftKeyButton::FittingTextSize() const {
  const QSize room(Inside().width() - IconRoom() - 2 * kTextMargin, Inside().height());
  return FittingOrSmallestFont(FontFor(TextRole::kKey), text(), room, Qt::TextSingleLine)
      .pixelSize();
}

int SoftKeyButton::WidthOfText() const {
  return QFontMetrics(FontFor(TextRole::kKey)).horizontalAdvance(text());
}

void SoftKeyButton::SetTextSize(int pixels) {
  if (pixels != textSize_) {
    textSize_ = pixels;
    update();
  }
}

void SoftKeyButton::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
    event->accept();
    click();
    return;
  }
  if (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down) {
    event->ignore();  // the window may have a page to scroll
    return;
  }
  QAbstractButton::keyPressEvent(event);
}

// Upward from the key, within the screen.
void SoftKeyButton::OpenMenu() {
  if (menu_ == nullptr || menu_->isEmpty() || !isEnabled()) {
    return;
  }
  const QSize size = menu_->sizeHint();
  const QRect frame = window()->frameGeometry();
  QPoint at = mapToGlobal(QPoint(width() - size.width() - 6, -size.height()));
  at.setX(std::clamp(at.x(), frame.left(), std::max(frame.left(), frame.right() - size.width())));
  if (const QScreen* screen = this->screen()) {
    at.setY(std::max(at.y(), screen->availableGeometry().top()));
  }
  menu_->popup(at);
  update();
}

SoftKeyBar::SoftKeyBar(ui::Dialog& dialog, QWidget* parent) : QWidget(parent), dialog_(dialog) {
  setObjectName(QStringLiteral("softKeys"));
}

bool SoftKeyBar::Sync() {
  const std::shared_ptr<ui::MenuBar> bar = dialog_.Bar();
  const std::size_t count = bar ? bar->KeyCount() : 0;
  for (std::size_t i = 0; i < count; ++i) {
    const ui::SoftKey key = bar->KeyAt(i);
    wasOn_ = wasOn_ || key.enabled || key.dropDown;
  }
  done_ = (count == 0 || !wasOn_) && dialog_.HasDoneButton();
  SetKeyCount(count + (done_ ? 1 : 0));
  if (done_) {
    ui::SoftKey key;
    key.command = ui::kCommandOk;
    key.text = CurrentButtonWords().done;
    keys_.back()->setObjectName(count == 0 ? QStringLiteral("key0") : QStringLiteral("done"));
    keys_.back()->Apply(key);
  }
  for (std::size_t i = 0; i < count; ++i) {
    const ui::SoftKey key = bar->KeyAt(i);
    SoftKeyButton* button = keys_[i];
    ui::Menu* menu = key.dropDown ? bar->SubMenu(key.command) : nullptr;
    if (menu != nullptr) {
      if (button->Menu() == nullptr) {
        button->SetMenu(new PopupMenu([this](int command) { Give(command); }, button));
        connect(button->Menu(), &QMenu::aboutToHide, button, [button] { button->update(); });
      }
      button->Menu()->SetItems(menu->Items());
      button->Menu()->setAccessibleName(ToQt(key.text));
    }
    button->Apply(key);
  }
  LayOut();
  return !keys_.empty();
}

void SoftKeyBar::SetKeyCount(std::size_t count) {
  if (keys_.size() == count) {
    return;
  }
  for (SoftKeyButton* key : keys_) {
    key->hide();
    key->deleteLater();
  }
  keys_.clear();
  for (std::size_t i = 0; i < count; ++i) {
    auto* key = new SoftKeyButton(this);
    key->setObjectName(QStringLiteral("key%1").arg(i));
    connect(key, &QAbstractButton::clicked, this, [this, i] { Press(i); });
    key->show();
    keys_.push_back(key);
  }
  LayOut();
}

void SoftKeyBar::Give(int command) {
  if (!IsBlocked(*this)) {
    dialog_.Command(command);
  }
}

void SoftKeyBar::Press(std::size_t index) {
  if (IsBlocked(*this)) {
    return;
  }
  if (done_ && index + 1 == keys_.size()) {
    dialog_.Command(ui::kCommandOk);
  } else if (index < keys_.size() && keys_[index]->Menu() != nullptr) {
    keys_[index]->OpenMenu();
  } else {
    dialog_.PressSoftKey(index);
  }
}

bool SoftKeyBar::PressLetter(char16_t letter) {
  for (SoftKeyButton* key : keys_) {
    if (!key->text().isEmpty() && key->text().front().toUpper() == QChar(letter)) {
      key->click();
      return true;
    }
  }
  return false;
}

bool SoftKeyBar::OpenMenu() {
  const auto found = std::find_if(keys_.begin(), keys_.end(), [](const SoftKeyButton* key) {
    return key->Menu() != nullptr && key->isEnabled();
  });
  if (found == keys_.end()) {
    return false;
  }
  (*found)->OpenMenu();
  return true;
}

void SoftKeyBar::resizeEvent(QResizeEvent* /*event*/) {
  LayOut();
}

void SoftKeyBar::LayOut() {
  if (keys_.empty()) {
    return;
  }
  const int pair = std::min(width(), std::max(kWidestPair, Scaled(kWidestPair)));
  const int count = static_cast<int>(keys_.size());
  const int each = pair / std::max(2, count);
  int x = (width() - each * count) / 2;
  std::vector<SoftKeyButton*> shown = keys_;
  if (done_ && shown.size() > 2) {
    std::swap(shown[1], shown.back());  // Done stands in the middle
  }
  // Of three words a long one is written larger when its key is wider than the others.
  int words = 0;
  int longest = 0;
  for (const SoftKeyButton* key : shown) {
    words += key->WidthOfText();
    longest = std::max(longest, key->WidthOfText());
  }
  const bool alike = count < 3 || words == 0 || longest + kLeastKey <= each;
  const int spare = std::max(0, each - kLeastKey) * count;
  for (SoftKeyButton* key : shown) {
    const int wide = alike ? each : kLeastKey + spare * key->WidthOfText() / words;
    key->setGeometry(x, 1, wide, height() - 1);
    x += wide;
  }
  FitTexts();
}

void SoftKeyBar::FitTexts() {
  int size = FontFor(TextRole::kKey).pixelSize();
  for (const SoftKeyButton* key : keys_) {
    size = std::min(size, key->FittingTextSize());
  }
  for (SoftKeyButton* key : keys_) {
    key->SetTextSize(size);
  }
}

void SoftKeyBar::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().color(QPalette::Window));
  painter.fillRect(0, 0, width(), 1, palette().color(kHairlineRole));
}

}  // namespace kelpin::qt
