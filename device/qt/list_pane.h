#pragma once

#include <QWidget>

#include "device/qt/dialog_events.h"
#include "ui/list_view.h"

namespace kelpin::qt {

class ListTable;

// A list's place: the list, or in words why there is none to see.
class ListPane : public QWidget {
  Q_OBJECT

 public:
  ListPane(ui::ListView& list, DialogEvents& events, QWidget* parent);

  void Sync();
  ListTable* Table() { return table_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  class Message;
  void LayOut();

  ui::ListView& list_;
  ListTable* table_;
  Message* message_;
};

}  // namespace kelpin::qt
