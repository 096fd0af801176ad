#pragma once

#include <QHeaderView>

#include "device/qt/list_model.h"

namespace kelpin::qt {

// The columns' titles, the sort arrow beside the one that sorts.
class ListHeader : public QHeaderView {
  Q_OBJECT

 public:
  ListHeader(ui::ListView& list, ListModel& model, QWidget* parent);

  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void paintSection(QPainter* painter, const QRect& rect, int section) const override;

 private:
  ui::ListView& list_;
  ListModel& model_;
};

}  // namespace kelpin::qt
