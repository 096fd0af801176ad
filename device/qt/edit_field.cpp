#include "device/qt/edit_field.h"

#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QMouseEvent>
#include <QStyleHints>
#include <algorithm>
#include <memory>

#include "device/qt/text.h"
#include "device/qt/theme.h"

namespace kelpin::qt {
namespace {

// Where the caret goes when the text under it was replaced without saying: it keeps its distance
// from the end, as what was typed stands before it.
int CaretAfter(const QString& before, int caret, const QString& after) {
  const auto behind = before.size() - caret;
  return static_cast<int>(std::clamp<qsizetype>(after.size() - behind, 0, after.size()));
}

}  // namespace

EditField::EditField(ui::Dialog& dialog, DialogEvents& events, int control, QWidget* parent)
    : QLineEdit(parent), dialog_(dialog), events_(events), control_(control) {
  connect(this, &QLineEdit::textEdited, this, &EditField::Edited);
  connect(this, &QLineEdit::selectionChanged, this, &EditField::TellSelection);
  connect(this, &QLineEdit::cursorPositionChanged, this, &EditField::TellSelection);
}

void EditField::Apply(const ui::ControlState& state) {
  applying_ = true;
  const QString text = ToQt(state.text);
  if (text != this->text()) {
    ReplaceText(text);
  }
  setReadOnly(state.readOnly);
  setEnabled(state.enabled);
  QFont font = FontFor(TextRole::kBase);
  font.setItalic(state.unavailable);
  font.setBold(state.bold);
  setFont(font);
  Qt::InputMethodHints hints = Qt::ImhNone;
  if (state.inputMode == ui::InputMode::kNumbers) {
    hints = Qt::ImhDialableCharactersOnly | Qt::ImhNoPredictiveText;
  }
  if ((state.style & ui::kStyleSecret) != 0) {
    // Not to be drawn, copied, learnt by an input method or read out.
    hints = Qt::ImhDigitsOnly | Qt::ImhHiddenText | Qt::ImhSensitiveData | Qt::ImhNoPredictiveText |
            Qt::ImhNoAutoUppercase;
    setEchoMode(QLineEdit::Password);
  }
  if (inputMethodHints() != hints) {
    setInputMethodHints(hints);
  }
  PutSelection(state.selectionStart, state.selectionEnd);
  applying_ = false;
}

// A step that undo knows, unlike setText(). The limit is the dialog's alone: Qt forgets the steps
// when it is told one.
void EditField::ReplaceText(const QString& text) {
  selectAll();
  if (text.isEmpty()) {
    del();
  } else {
    insert(text);
  }
}

void EditField::PutSelection(int start, int end) {
  const int length = static_cast<int>(text().size());
  start = std::clamp(start, 0, length);
  end = std::clamp(end, 0, length);
  const int from = hasSelectedText() ? selectionStart() : cursorPosition();
  const int to = hasSelectedText() ? selectionEnd() : cursorPosition();
  if (from == std::min(start, end) && to == std::max(start, end)) {
    return;
  }
  if (start == end) {
    deselect();
    setCursorPosition(end);
  } else {
    setSelection(start, end - start);
  }
}

void EditField::Edited(const QString& text) {
  if (applying_ || !events_.Live()) {
    return;
  }
  const int caret = cursorPosition();
  const std::shared_ptr<ui::Dialog> alive = dialog_.shared_from_this();
  dialog_.EditByUser(control_, FromQt(text), caret);
  const auto state = dialog_.Control(control_);
  if (!state) {
    return;
  }
  const QString answer = ToQt(state->text);
  applying_ = true;
  if (answer != this->text()) {
    // What the dialog does not want leaves no step behind that undo would stumble over.
    undo();
    if (answer != this->text()) {
      ReplaceText(answer);
    }
    const bool toldWhere = state->selectionStart != 0 || state->selectionEnd != 0;
    PutSelection(toldWhere ? state->selectionStart : CaretAfter(text, caret, answer),
                 toldWhere ? state->selectionEnd : CaretAfter(text, caret, answer));
  }
  applying_ = false;
  TellSelection();
}

void EditField::TellSelection() {
  if (applying_ || !events_.Live()) {
    return;
  }
  // While a key is being handled the text may be ahead of the dialog's; Edited follows and tells.
  if (FromQt(text()) != dialog_.Text(control_)) {
    return;
  }
  const int start = hasSelectedText() ? selectionStart() : cursorPosition();
  const int end = hasSelectedText() ? selectionEnd() : cursorPosition();
  dialog_.SetSelection(control_, start, end);
}

void EditField::keyPressEvent(QKeyEvent* event) {
  if (events_.OfferKey(*event)) {
    event->accept();
    return;
  }
  QLineEdit::keyPressEvent(event);
  event->accept();
}

void EditField::focusInEvent(QFocusEvent* event) {
  QLineEdit::focusInEvent(event);
  if (event->reason() != Qt::PopupFocusReason && events_.Live()) {
    dialog_.FocusByUser(control_);
    TellSelection();
  }
}

void EditField::OpenMenu(QPoint global) {
  if (!events_.Live()) {
    return;
  }
  dialog_.FocusByUser(control_);
  dialog_.LongPressEdit(control_, events_.ToDialog(global));
}

void EditField::contextMenuEvent(QContextMenuEvent* event) {
  event->accept();
  hold_.stop();
  OpenMenu(event->reason() == QContextMenuEvent::Keyboard ? mapToGlobal(cursorRect().bottomLeft())
                                                          : event->globalPos());
}

bool EditField::IsOnSelection(QPoint at) {
  const int position = cursorPositionAt(at);
  return hasSelectedText() && position >= selectionStart() && position <= selectionEnd();
}

void EditField::DeliverPress() {
  if (const std::unique_ptr<QMouseEvent> press = std::move(press_)) {
    QLineEdit::mousePressEvent(press.get());
  }
}

// A press takes the selection away, a hold asks what to do with it.
void EditField::mousePressEvent(QMouseEvent* event) {
  pressedAt_ = event->position().toPoint();
  if (event->button() != Qt::LeftButton) {
    QLineEdit::mousePressEvent(event);
    return;
  }
  hold_.start(QGuiApplication::styleHints()->mousePressAndHoldInterval(), this);
  if (event->modifiers() == Qt::NoModifier && IsOnSelection(pressedAt_)) {
    press_.reset(event->clone());
  } else {
    QLineEdit::mousePressEvent(event);
  }
}

void EditField::mouseMoveEvent(QMouseEvent* event) {
  if ((event->position().toPoint() - pressedAt_).manhattanLength() >=
      QGuiApplication::styleHints()->startDragDistance()) {
    hold_.stop();
    DeliverPress();
  }
  if (press_ == nullptr) {
    QLineEdit::mouseMoveEvent(event);
  }
}

void EditField::mouseReleaseEvent(QMouseEvent* event) {
  hold_.stop();
  DeliverPress();
  QLineEdit::mouseReleaseEvent(event);
}

void EditField::mouseDoubleClickEvent(QMouseEvent* event) {
  hold_.stop();
  DeliverPress();
  QLineEdit::mouseDoubleClickEvent(event);
}

void EditField::timerEvent(QTimerEvent* event) {
  if (event->timerId() != hold_.timerId()) {
    QLineEdit::timerEvent(event);
    return;
  }
  hold_.stop();
  press_.reset();
  OpenMenu(mapToGlobal(pressedAt_));
}

}  // namespace kelpin::qt
