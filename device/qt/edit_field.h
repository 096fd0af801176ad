#pragma once

#include <QBasicTimer>
#include <QLineEdit>
#include <QMouseEvent>
#include <memory>

#include "device/qt/dialog_events.h"
#include "ui/dialog.h"

namespace kelpin::qt {

// One line of text. What is typed goes to the dialog, which may answer with another text; Qt's own
// undo keeps working across that.
class EditField : public QLineEdit {
  Q_OBJECT

 public:
  EditField(ui::Dialog& dialog, DialogEvents& events, int control, QWidget* parent);

  void Apply(const ui::ControlState& state);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  void Edited(const QString& text);
  void TellSelection();
  void ReplaceText(const QString& text);
  void PutSelection(int start, int end);
  void OpenMenu(QPoint global);
  bool IsOnSelection(QPoint at);
  // The press that was kept back reaches the field.
  void DeliverPress();

  ui::Dialog& dialog_;
  DialogEvents& events_;
  const int control_;
  bool applying_ = false;
  QBasicTimer hold_;
  QPoint pressedAt_;
  std::unique_ptr<QMouseEvent> press_;  // on what is selected, until it is known not to be a hold
};

}  // namespace kelpin::qt
