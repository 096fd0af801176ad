#include "device/qt/dialog_window.h"

#include <QAccessible>
#include <QCheckBox>
#include <QCloseEvent>
#include <QCursor>
#include <QFontMetrics>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QScroller>
#include <algorithm>

#include "device/qt/dialog_layout.h"
#include "device/qt/edit_field.h"
#include "device/qt/fitting_font.h"
#include "device/qt/key_map.h"
#include "device/qt/label_views.h"
#include "device/qt/list_pane.h"
#include "device/qt/list_table.h"
#include "device/qt/modality.h"
#include "device/qt/popup_menu.h"
#include "device/qt/soft_key_bar.h"
#include "device/qt/text.h"
#include "device/qt/theme.h"

namespace kelpin::qt {
namespace {

// "Name:" as a screen reader is to say it.
QString SpokenLabel(const std::u16string& text) {
  QString label = ToQt(text).trimmed();
  while (label.endsWith(QLatin1Char(':'))) {
    label.chop(1);
  }
  return label;
}

}  // namespace

DialogWindow::DialogWindow(std::shared_ptr<ui::Dialog> dialog, QWidget* parent)
    : QDialog(parent),
      dialog_(std::move(dialog)),
      scroll_(new QScrollArea(this)),
      content_(new QWidget),
      bar_(new SoftKeyBar(*dialog_, this)) {
  setObjectName(QStringLiteral("dialog%1").arg(dialog_->Resource()));
  setSizeGripEnabled(false);
  content_->setObjectName(QStringLiteral("content"));
  scroll_->setFrameShape(QFrame::NoFrame);
  scroll_->setWidget(content_);
  scroll_->setFocusPolicy(Qt::NoFocus);
  scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  QScroller::grabGesture(scroll_->viewport(), QScroller::TouchGesture);
  MakeControls(dialog_->Controls());
}

DialogWindow::~DialogWindow() {
  QScroller::ungrabGesture(scroll_->viewport());
}

void DialogWindow::MakeControls(const std::vector<ui::ControlState>& states) {
  for (const ui::ControlState& state : states) {
    if (state.labelledBy != 0) {
      labels_[state.labelledBy] = true;
    }
  }
  QWidget* previous = nullptr;
  for (const ui::ControlState& state : states) {
    Control control = Make(state);
    control.widget->setParent(content_);
    control.active->setObjectName(QStringLiteral("c%1").arg(state.id));
    control.active->installEventFilter(this);
    if (control.active->focusPolicy() != Qt::NoFocus) {
      if (previous != nullptr) {
        setTabOrder(previous, control.active);
      }
      previous = control.active;
    }
    order_.push_back(state.id);
    controls_[state.id] = control;
  }
  RelateLabels(states);
}

// A screen reader is told which label is whose; a label of several is the field's.
void DialogWindow::RelateLabels(const std::vector<ui::ControlState>& states) {
  for (const ui::ControlState& state : states) {
    const auto found = controls_.find(state.labelledBy);
    if (state.kind == ui::ControlKind::kButton || found == controls_.end()) {
      continue;
    }
    auto* label = qobject_cast<QLabel*>(found->second.active);
    if (label != nullptr && label->buddy() == nullptr) {
      label->setBuddy(controls_[state.id].active);
    }
  }
}

DialogWindow::Control DialogWindow::Make(const ui::ControlState& state) {
  const int id = state.id;
  const auto same = [](QWidget* widget) { return Control{widget, widget, {}, false}; };
  switch (state.kind) {
    case ui::ControlKind::kEdit:
      return same(new EditField(*dialog_, *this, id, content_));
    case ui::ControlKind::kButton: {
      auto* button = new QPushButton(content_);
      button->setAutoDefault(false);
      connect(button, &QPushButton::clicked, this, [this, id] {
        if (!IsBlocked(*this)) {
          dialog_->PressButton(id);
        }
      });
      return same(button);
    }
    case ui::ControlKind::kCheckBox: {
      auto* box = new QCheckBox(content_);
      connect(box, &QCheckBox::clicked, this, [this, id, box] {
        if (IsBlocked(*this)) {
          box->setChecked(dialog_->Checked(id));
        } else {
          dialog_->PressCheckBox(id);
        }
      });
      return same(box);
    }
    case ui::ControlKind::kList: {
      auto* pane = new ListPane(*dialog_->List(id), *this, content_);
      pane->setObjectName(QStringLiteral("place%1").arg(id));
      return {pane, pane->Table(), {}, false};
    }
    case ui::ControlKind::kProgress: {
      auto* bar = new QProgressBar(content_);
      bar->setTextVisible(false);
      return same(bar);
    }
    case ui::ControlKind::kPicture:
    case ui::ControlKind::kIcon:
      return same(new PictureView(content_));
    case ui::ControlKind::kLabel:
      break;
  }
  if ((state.style & ui::kStyleHeader) != 0) {
    return same(new HeaderView(content_));
  }
  auto* label = new QLabel(content_);
  label->setTextFormat(Qt::PlainText);
  return same(label);
}

void DialogWindow::Apply(Control& control, const ui::ControlState& state) {
  QWidget& widget = *control.active;
  switch (state.kind) {
    case ui::ControlKind::kEdit:
      static_cast<EditField&>(widget).Apply(state);
      break;
    case ui::ControlKind::kButton:
      static_cast<QPushButton&>(widget).setText(
          ToQt(state.text).replace(QLatin1Char('&'), QStringLiteral("&&")));
      widget.setEnabled(state.enabled);
      break;
    case ui::ControlKind::kCheckBox: {
      auto& box = static_cast<QCheckBox&>(widget);
      box.setText(ToQt(state.text).replace(QLatin1Char('&'), QStringLiteral("&&")));
      box.setChecked(state.checked);
      box.setEnabled(state.enabled);
      break;
    }
    case ui::ControlKind::kList:
      widget.setEnabled(state.enabled);
      break;
    case ui::ControlKind::kProgress: {
      auto& bar = static_cast<QProgressBar&>(widget);
      bar.setRange(state.progressMinimum, state.progressMaximum);
      bar.setValue(state.progressPosition);
      break;
    }
    case ui::ControlKind::kPicture:
    case ui::ControlKind::kIcon:
      static_cast<PictureView&>(widget).Apply(state);
      break;
    case ui::ControlKind::kLabel:
      ApplyLabel(widget, state);
      break;
  }
  control.widget->setVisible(state.visible);
  control.applied = state;
  control.once = true;
}

void DialogWindow::ApplyLabel(QWidget& widget, const ui::ControlState& state) {
  if ((state.style & ui::kStyleHeader) != 0) {
    static_cast<HeaderView&>(widget).Apply(state);
    return;
  }
  auto& label = static_cast<QLabel&>(widget);
  const bool caption = labels_.count(state.id) != 0 && !state.bold;
  const bool value = (state.style & ui::kStyleValue) != 0;
  QFont font = FontFor(caption ? TextRole::kCaption : value ? TextRole::kValue : TextRole::kBase);
  if (state.bold) {
    font = FontFor(TextRole::kTitle);
  }
  const QString text = ToQt(state.text);
  const bool tall = state.bounds.height >= 2 * QFontMetrics(font).height();
  if (state.bounds.width > 0) {
    font = FittingOrSmallestFont(font, text, {state.bounds.width, state.bounds.height},
                                 tall ? Qt::TextWordWrap : Qt::TextSingleLine);
  }
  label.setFont(font);
  QPalette colors;
  const QPalette::ColorRole role = state.color == ui::TextColor::kError ? kErrorRole
                                   : caption                            ? kMutedRole
                                                                        : QPalette::WindowText;
  colors.setColor(QPalette::WindowText, palette().color(QPalette::Active, role));
  label.setPalette(colors);
  label.setWordWrap(tall);
  const bool centered = (state.style & ui::kStyleCentered) != 0;
  label.setAlignment((centered ? Qt::AlignHCenter : Qt::AlignLeft | Qt::AlignAbsolute) |
                     (tall && !centered && !caption ? Qt::AlignTop : Qt::AlignVCenter));
  label.setTextInteractionFlags(value ? Qt::TextSelectableByMouse : Qt::NoTextInteraction);
  // One that is a field's would take the letter behind a "&" for a shortcut.
  label.setText(label.buddy() == nullptr
                    ? text
                    : QString(text).replace(QLatin1Char('&'), QStringLiteral("&&")));
}

void DialogWindow::NameControls(const std::vector<ui::ControlState>& states) {
  std::map<int, QString> spoken;
  for (const ui::ControlState& state : states) {
    spoken[state.id] = SpokenLabel(state.text);
  }
  for (const ui::ControlState& state : states) {
    if (state.labelledBy == 0) {
      continue;
    }
    QString name = spoken[state.labelledBy];
    // A field's text is spoken as its value; what only stands there is part of the name.
    const bool stands =
        state.kind == ui::ControlKind::kButton || state.kind == ui::ControlKind::kLabel;
    if (stands && !state.text.empty()) {
      name += QLatin1Char(' ') + ToQt(state.text);
    }
    QWidget* widget = controls_[state.id].active;
    if (widget->accessibleName() != name) {
      widget->setAccessibleName(name);
    }
  }
}

void DialogWindow::Sync() {
  if (finished_) {
    return;
  }
  setWindowTitle(ToQt(dialog_->Title()));
  GiveUpFocus(dialog_->Controls());
  bar_->Sync();
  LayOutFrame();
  const std::vector<ui::ControlState> states = dialog_->Controls();
  for (const ui::ControlState& state : states) {
    Control& control = controls_[state.id];
    if (!control.once || !(control.applied == state)) {
      Apply(control, state);
    }
  }
  NameControls(states);
  PlaceAll(states);
  for (const int id : dialog_->ListControls()) {
    static_cast<ListPane*>(controls_[id].widget)->Sync();
  }
  SyncFocus();
  if (const int wanted = dialog_->TakeScrollIntoView(); wanted != 0) {
    BringIntoView(*controls_[wanted].widget);
  }
}

void DialogWindow::SyncAll() {
  for (auto& [id, control] : controls_) {
    control.once = false;
  }
  Sync();
}

// The frame, then the dialog: it may lay its controls out anew.
void DialogWindow::LayOutFrame() {
  const int keys = bar_->Keys().empty() ? 0 : SoftKeyBarHeight();
  bar_->setVisible(keys > 0);
  bar_->setGeometry(0, height() - keys, width(), keys);
  scroll_->setGeometry(0, 0, width(), std::max(0, height() - keys));
}

ui::Size DialogWindow::ClientSize() const {
  return {width(), std::max(0, height() - (bar_->Keys().empty() ? 0 : SoftKeyBarHeight()))};
}

void DialogWindow::PlaceAll(const std::vector<ui::ControlState>& states) {
  const ui::Size client = ClientSize();
  std::vector<ui::Rect> bounds;
  bounds.reserve(states.size());
  for (const ui::ControlState& state : states) {
    bounds.push_back(state.bounds);
  }
  if (bounds != bounds_) {
    bounds_ = bounds;
    laidOutFor_ = client;
  }
  const ui::Metrics metrics = MakeMetrics(client);
  const std::vector<ui::Rect> places = PlaceControls(states, laidOutFor_, client, metrics);
  int bottom = 0;
  for (std::size_t i = 0; i < states.size(); ++i) {
    const ui::Rect& place = places[i];
    QWidget* widget = controls_[states[i].id].widget;
    widget->setGeometry(place.x, place.y, place.width, place.height);
    if (states[i].visible && place.height > 0) {
      const int margin = states[i].kind == ui::ControlKind::kList ? 0 : metrics.margin;
      bottom = std::max(bottom, place.y + place.height + margin);
    }
  }
  // A little more than there is room for is no reason to scroll: it is the margin below.
  const int room = bottom - client.height <= metrics.margin ? client.height : bottom;
  content_->resize(client.width, std::max(client.height, room));
}

// The whole control with the label over it: QScrollArea's own way is content with a field's caret.
void DialogWindow::BringIntoView(const QWidget& widget) {
  constexpr int kAround = 24;
  const QPoint middle = widget.geometry().center();
  const int room = scroll_->viewport()->height() / 2;
  scroll_->ensureVisible(middle.x(), middle.y(), 0,
                         std::min(widget.height() / 2 + Scaled(kAround), room));
}

// Qt would hand the focus on to the next field, which is perhaps the next to be disabled and would
// be left with its text selected.
void DialogWindow::GiveUpFocus(const std::vector<ui::ControlState>& states) {
  QWidget* const has = focusWidget();
  if (has == nullptr) {
    return;
  }
  for (const ui::ControlState& state : states) {
    const bool takesInput = state.kind == ui::ControlKind::kEdit ||
                            state.kind == ui::ControlKind::kButton ||
                            state.kind == ui::ControlKind::kCheckBox;
    if (takesInput && controls_[state.id].active == has && !(state.enabled && state.visible)) {
      has->clearFocus();
      return;
    }
  }
  const std::shared_ptr<ui::MenuBar> bar = dialog_->Bar();
  const std::vector<SoftKeyButton*>& keys = bar_->Keys();
  const std::size_t count = bar == nullptr ? 0 : std::min(bar->KeyCount(), keys.size());
  for (std::size_t key = 0; key < count; ++key) {
    if (keys[key] == has && !bar->KeyAt(key).enabled) {
      has->clearFocus();
      return;
    }
  }
}

void DialogWindow::SyncFocus() {
  const int wanted = dialog_->Focus();
  const auto found = controls_.find(wanted);
  if (found == controls_.end()) {
    focus_ = wanted;
    return;
  }
  QWidget* widget = found->second.active;
  if (!widget->isVisibleTo(this) || !widget->isEnabled()) {
    focus_ = 0;  // a list whose place tells why it is not there; it has the focus again after
    return;
  }
  const QWidget* has = focusWidget();
  const bool lost = has == nullptr || !has->isVisibleTo(this) || !has->isEnabled();
  if (wanted == focus_ && !lost) {
    return;
  }
  focus_ = wanted;
  if (has != widget) {
    widget->setFocus(Qt::OtherFocusReason);
    BringIntoView(*found->second.widget);
  }
}

bool DialogWindow::OfferKey(const QKeyEvent& event) {
  if (finished_) {
    return true;
  }
  const ui::KeyPress press = KeyFromQt(event);
  if (press.key == ui::Key::kNone) {
    return event.key() == Qt::Key_F10 && press.modifiers == ui::kNoModifier && bar_->OpenMenu();
  }
  if (press.key == ui::Key::kCharacter && press.modifiers == ui::kAlt &&
      bar_->PressLetter(press.character)) {
    return true;
  }
  const std::shared_ptr<ui::Dialog> alive = dialog_;
  if (dialog_->KeyDown(press) || (press.modifiers == ui::kNoModifier && ScrollPage(press.key))) {
    return true;
  }
  return press.key == ui::Key::kMenu && dialog_->List(dialog_->Focus()) == nullptr &&
         bar_->OpenMenu();
}

void DialogWindow::setVisible(bool visible) {
  if (visible == isVisible()) {
    return;
  }
  QWidget::setVisible(visible);
  QAccessibleEvent event(this, visible ? QAccessible::DialogStart : QAccessible::DialogEnd);
  QAccessible::updateAccessibility(&event);
}

// A page that nothing on it takes the focus from is read on by the keys.
bool DialogWindow::ScrollPage(ui::Key key) {
  QScrollBar& bar = *scroll_->verticalScrollBar();
  if (dialog_->Focus() != 0 || bar.maximum() == 0) {
    return false;
  }
  const int line = fontMetrics().lineSpacing();
  switch (key) {
    case ui::Key::kUp:
      bar.setValue(bar.value() - line);
      return true;
    case ui::Key::kDown:
      bar.setValue(bar.value() + line);
      return true;
    case ui::Key::kPageUp:
      bar.setValue(bar.value() - bar.pageStep());
      return true;
    case ui::Key::kPageDown:
      bar.setValue(bar.value() + bar.pageStep());
      return true;
    case ui::Key::kHome:
      bar.setValue(0);
      return true;
    case ui::Key::kEnd:
      bar.setValue(bar.maximum());
      return true;
    default:
      return false;
  }
}

void DialogWindow::keyPressEvent(QKeyEvent* event) {
  if (OfferKey(*event)) {
    event->accept();
    return;
  }
  event->ignore();
  const bool down = event->key() == Qt::Key_Down;
  // From one soft key to the next.
  if ((down || event->key() == Qt::Key_Up) && bar_->isAncestorOf(focusWidget())) {
    event->setAccepted(focusNextPrevChild(down));
  }
}

ui::Point DialogWindow::ToDialog(QPoint global) const {
  const QPoint at = content_->mapFromGlobal(global);
  return {at.x(), at.y()};
}

QPoint DialogWindow::PopupPlace(ui::Point point) const {
  if (point.x >= 0 || point.y >= 0) {
    return content_->mapToGlobal(QPoint(point.x, point.y));
  }
  const auto focused = controls_.find(dialog_->Focus());
  QWidget* at = focused != controls_.end() ? focused->second.active : focusWidget();
  if (auto* table = qobject_cast<ListTable*>(at)) {
    ui::ListView* list = dialog_->List(dialog_->Focus());
    const int row = list == nullptr ? -1 : list->FocusedItem();
    const int middle = row < 0 ? 0 : table->rowViewportPosition(row) + table->rowHeight(row) / 2;
    const int y = std::clamp(middle, 0, std::max(0, table->viewport()->height() - 1));
    return table->viewport()->mapToGlobal(QPoint(Scaled(48), y));
  }
  return at == nullptr ? mapToGlobal(rect().center()) : at->mapToGlobal(QPoint(8, at->height()));
}

void DialogWindow::ShowPopup(const std::shared_ptr<ui::Menu>& menu, ui::Point point) {
  if (finished_) {
    return;
  }
  auto* popup = new PopupMenu(
      [this, dialog = std::weak_ptr<ui::Dialog>(dialog_)](int command) {
        const std::shared_ptr<ui::Dialog> alive = dialog.lock();
        if (alive != nullptr && !IsBlocked(*this)) {
          alive->Command(command);
        }
      },
      this);
  popup->setObjectName(QStringLiteral("popup"));
  popup->SetItems(menu->Items());
  connect(popup, &QMenu::aboutToHide, popup, &QObject::deleteLater, Qt::QueuedConnection);
  popup->popup(PopupPlace(point));
}

void DialogWindow::Finish() {
  finished_ = true;
  for (QMenu* menu : findChildren<QMenu*>()) {
    menu->hide();
  }
  hide();
}

// A program may place its list anew only when both sides changed, and an edge that is dragged
// changes one: it is told of a size between first, which differs from both in both.
void DialogWindow::TellSize() {
  const ui::Size before = dialog_->ClientSize();
  const ui::Size now = ClientSize();
  if ((before.width == now.width) != (before.height == now.height)) {
    const auto between = [](int from, int to) { return to + 1 == from ? to + 2 : to + 1; };
    dialog_->Resize({between(before.width, now.width), between(before.height, now.height)});
  }
  dialog_->Resize(now);
}

void DialogWindow::resizeEvent(QResizeEvent* event) {
  QDialog::resizeEvent(event);
  LayOutFrame();
  if (finished_) {
    return;
  }
  TellSize();
  Sync();
  // An input panel that comes up takes the room; a list sees to its own rows.
  if (QWidget* focused = focusWidget();
      content_->isAncestorOf(focused) && qobject_cast<ListTable*>(focused) == nullptr) {
    BringIntoView(*focused);
  }
  Q_EMIT Resized(size());
}

void DialogWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  if (!finished_) {
    const std::shared_ptr<ui::Dialog> alive = dialog_;
    alive->Close();
  }
}

void DialogWindow::changeEvent(QEvent* event) {
  QDialog::changeEvent(event);
  if (finished_) {
    return;
  }
  switch (event->type()) {
    case QEvent::ActivationChange:
      dialog_->Activate(isActiveWindow());
      break;
    case QEvent::PaletteChange:
    case QEvent::FontChange:
      SyncAll();
      break;
    default:
      break;
  }
}

bool DialogWindow::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::FocusIn && !finished_ &&
      static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason) {
    const auto found =
        std::find_if(controls_.begin(), controls_.end(),
                     [watched](const auto& entry) { return entry.second.active == watched; });
    if (found != controls_.end()) {
      focus_ = found->first;
      BringIntoView(*found->second.widget);
      dialog_->FocusByUser(found->first);
    }
  }
  return QDialog::eventFilter(watched, event);
}

}  // namespace kelpin::qt
