#include "device/qt/popup_menu.h"

#include <QAction>
#include <QEvent>
#include <QFontInfo>
#include <QKeyEvent>
#include <QScreen>

#include "device/qt/icons.h"
#include "device/qt/text.h"
#include "device/qt/theme.h"

namespace kelpin::qt {
namespace {

constexpr int kLeastFont = 12;  // pixels

QString WordsOf(const ui::MenuItem& item) {
  return ToQt(item.text).replace(QLatin1Char('&'), QStringLiteral("&&"));
}

// Shown and read out; a menu in no menu bar never acts on them, the dialog's accelerators do. Keys
// in a language whose words Qt does not know stand behind the item's own text.
void SetKeys(QAction& action, const QString& text, const QString& keys) {
  action.setText(text);
  action.setShortcut({});
  if (keys.isEmpty()) {
    return;
  }
  const auto shortcut = QKeySequence::fromString(keys, QKeySequence::PortableText);
  if (shortcut.toString(QKeySequence::PortableText) != keys) {
    action.setText(text + QLatin1Char('\t') + keys);
    return;
  }
  action.setShortcut(shortcut);
  action.setShortcutContext(Qt::WidgetShortcut);
}

}  // namespace

PopupMenu::PopupMenu(std::function<void(int)> choose, QWidget* parent)
    : QMenu(parent), choose_(std::move(choose)) {
  setToolTipsVisible(false);
  connect(this, &QMenu::aboutToShow, this,
          [this] { FitInto(screen()->availableGeometry().width()); });
}

void PopupMenu::SetItems(const std::vector<ui::MenuItem>& items) {
  if (items == items_) {
    return;
  }
  items_ = items;
  Fill();
}

void PopupMenu::Fill() {
  filling_ = true;
  const auto subMenus = findChildren<QMenu*>(Qt::FindDirectChildrenOnly);
  clear();
  for (QMenu* subMenu : subMenus) {
    subMenu->deleteLater();
  }
  for (const ui::MenuItem& item : items_) {
    if (item.IsSeparator()) {
      addSeparator();
      continue;
    }
    const QString text = WordsOf(item);
    const QIcon icon = AccentIcon(QString::fromStdString(item.icon), palette(), Scaled(20));
    if (!item.items.empty()) {
      AddSubMenu(item, icon, text);
      continue;
    }
    QAction* action = addAction(icon, text);
    SetKeys(*action, text, ToQt(item.keys));
    action->setObjectName(QStringLiteral("command%1").arg(item.command));
    action->setEnabled(item.enabled);
    connect(
        action, &QAction::triggered, this, [this, command = item.command] { choose_(command); },
        Qt::QueuedConnection);
  }
  filling_ = false;
}

void PopupMenu::AddSubMenu(const ui::MenuItem& item, const QIcon& icon, const QString& text) {
  auto* subMenu = new PopupMenu([this](int command) { choose_(command); }, this);
  subMenu->setFont(font());
  subMenu->setTitle(text);
  subMenu->setIcon(icon);
  subMenu->SetItems(item.items);
  subMenu->setEnabled(item.enabled);
  addMenu(subMenu);
}

void PopupMenu::ShowKeys(bool shown) {
  const QList<QAction*> all = actions();
  for (std::size_t i = 0; i < items_.size(); ++i) {
    const ui::MenuItem& item = items_[i];
    if (!item.IsSeparator() && item.items.empty()) {
      SetKeys(*all.at(static_cast<qsizetype>(i)), WordsOf(item),
              shown ? ToQt(item.keys) : QString());
    }
  }
}

void PopupMenu::FitInto(int width) {
  if (own_.has_value()) {
    setFont(*own_);
    own_.reset();
  }
  ShowKeys(true);
  if (sizeHint().width() <= width) {
    return;
  }
  ShowKeys(false);
  QFont smaller = font();
  for (int size = QFontInfo(smaller).pixelSize() - 1;
       size >= kLeastFont && sizeHint().width() > width; --size) {
    if (!own_.has_value()) {
      own_ = font();
    }
    smaller.setPixelSize(size);
    setFont(smaller);
  }
}

// Greyed items count, so that a letter always means the same.
bool PopupMenu::GoToLetter(QChar letter) {
  QList<QAction*> found;
  for (QAction* action : actions()) {
    if (!action->isSeparator() && action->text().startsWith(letter, Qt::CaseInsensitive)) {
      found.push_back(action);
    }
  }
  const bool single = found.size() == 1;
  const auto active = found.indexOf(activeAction());
  for (qsizetype step = 1; step <= found.size(); ++step) {
    QAction* const next = found.at((active + step) % found.size());
    if (next->isEnabled()) {
      setActiveAction(next);
      return single;
    }
  }
  return false;
}

void PopupMenu::keyPressEvent(QKeyEvent* event) {
  const QString text = event->text();
  const Qt::KeyboardModifiers others = event->modifiers() & ~(Qt::ShiftModifier | Qt::AltModifier);
  if (others != Qt::NoModifier || text.size() != 1 || !text.front().isLetterOrNumber()) {
    QMenu::keyPressEvent(event);
    return;
  }
  event->accept();
  if (GoToLetter(text.front())) {
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QMenu::keyPressEvent(&enter);
  }
}

// Icons are drawn in the palette's colours.
void PopupMenu::changeEvent(QEvent* event) {
  QMenu::changeEvent(event);
  if (event->type() == QEvent::PaletteChange && !filling_ && !items_.empty()) {
    Fill();
  }
}

}  // namespace kelpin::qt
