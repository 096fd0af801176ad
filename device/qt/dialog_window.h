#pragma once

#include <QDialog>
#include <map>
#include <memory>
#include <vector>

#include "device/qt/dialog_events.h"
#include "ui/dialog.h"

QT_BEGIN_NAMESPACE
class QScrollArea;
QT_END_NAMESPACE

namespace kelpin::qt {

class SoftKeyBar;

// Draws any dialog from its state and tells it what the user does. Control 1004 is the object
// "c1004"; soft keys are "key0" and "key1", their items "command<id>".
class DialogWindow : public QDialog, public DialogEvents {
  Q_OBJECT

 public:
  DialogWindow(std::shared_ptr<ui::Dialog> dialog, QWidget* parent);
  ~DialogWindow() override;

  ui::Dialog& Dialog() { return *dialog_; }
  // Draws what has changed.
  void Sync();
  // The room above the soft keys, now.
  ui::Size ClientSize() const;
  void ShowPopup(const std::shared_ptr<ui::Menu>& menu, ui::Point point);
  // Takes the window away; the dialog is told nothing more.
  void Finish();

  bool OfferKey(const QKeyEvent& event) override;
  ui::Point ToDialog(QPoint global) const override;
  bool Live() const override { return !finished_; }

  void reject() override {}  // Escape is the dialog's
  // Without what QDialog adds: it would select the text of the field that has the focus.
  void setVisible(bool visible) override;

 Q_SIGNALS:
  void Resized(QSize size);

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void changeEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Control {
    QWidget* widget = nullptr;  // has the control's place
    QWidget* active = nullptr;  // takes the focus and bears the name "c<id>"
    ui::ControlState applied;
    bool once = false;
  };

  void MakeControls(const std::vector<ui::ControlState>& states);
  void RelateLabels(const std::vector<ui::ControlState>& states);
  Control Make(const ui::ControlState& state);
  void Apply(Control& control, const ui::ControlState& state);
  void ApplyLabel(QWidget& widget, const ui::ControlState& state);
  void NameControls(const std::vector<ui::ControlState>& states);
  void LayOutFrame();
  void TellSize();
  void PlaceAll(const std::vector<ui::ControlState>& states);
  void BringIntoView(const QWidget& widget);
  // Before what has the focus is disabled or hidden.
  void GiveUpFocus(const std::vector<ui::ControlState>& states);
  void SyncFocus();
  void SyncAll();  // after a change of colours or text size
  bool ScrollPage(ui::Key key);
  QPoint PopupPlace(ui::Point point) const;

  const std::shared_ptr<ui::Dialog> dialog_;
  QScrollArea* scroll_;
  QWidget* content_;
  SoftKeyBar* bar_;
  std::vector<int> order_;  // control ids in template order
  std::map<int, Control> controls_;
  std::map<int, bool> labels_;  // labels that name a field
  std::vector<ui::Rect> bounds_;
  ui::Size laidOutFor_;
  int focus_ = 0;  // the dialog's focus when it was last put on a widget
  bool finished_ = false;
};

}  // namespace kelpin::qt
