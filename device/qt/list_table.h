#pragma once

#include <QAccessible>
#include <QBasicTimer>
#include <QTableView>

#include "device/qt/dialog_events.h"
#include "device/qt/list_delegate.h"
#include "device/qt/list_header.h"
#include "device/qt/list_model.h"

namespace kelpin::qt {

// Draws a ui::ListView and hands presses and keys on to it; what they do is decided there.
class ListTable : public QTableView, private QAccessible::ActivationObserver {
  Q_OBJECT

 public:
  ListTable(ui::ListView& list, DialogEvents& events, QWidget* parent);
  ~ListTable() override;

  void Sync();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void focusInEvent(QFocusEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  bool viewportEvent(QEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void accessibilityActiveChanged(bool active) override;
  void LayOutColumns();
  // What the rows in sight need in `column`.
  int WidestInSight(int column) const;
  int ColumnWidth(int column) const;
  void Press(int row);
  void Hover(int row);
  void HoldPress();
  void UpdateRow(int row);
  void MirrorSelection();
  void TakeSelection();

  ui::ListView& list_;
  DialogEvents& events_;
  ListModel* model_;
  ListDelegate* delegate_;
  ListHeader* header_;
  QBasicTimer hold_;
  QPoint pressedAt_;
  int pressedRow_ = -2;  // -2: no press; -1: below the rows
  int hoveredRow_ = -1;
  int widest_ = 0;  // of the last column's texts seen so far
  bool layingOut_ = false;
  bool mirroring_ = false;
  bool heard_ = false;     // by a screen reader
  bool keyboard_ = false;  // the last thing the user did was a key: the focused row is ringed
};

}  // namespace kelpin::qt
