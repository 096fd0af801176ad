#pragma once

#include <QStyledItemDelegate>

#include "device/qt/list_model.h"

namespace kelpin::qt {

inline constexpr int kCellPadding = 12;
inline constexpr int kListMargin = 16;  // left of the first column, right of the last
// From the row's left edge to the text of a list with check boxes.
int CheckBoxRoom();

// Draws a cell from the list's own state.
class ListDelegate : public QStyledItemDelegate {
  Q_OBJECT

 public:
  ListDelegate(ui::ListView& list, ListModel& model, QObject* parent);

  void SetHoveredRow(int row) { hovered_ = row; }
  void SetPressedRow(int row) { pressed_ = row; }

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                 const QModelIndex& index) override;
  // What a cell needs to show `text` whole.
  int WidthFor(const QString& text, int column) const;

 private:
  QFont FontOf(int column) const;
  // The part of a cell that its text has.
  QRect WordsOf(const QRect& cell, int column) const;
  bool Fits(const QString& text, int column, int width) const;
  void PaintText(QPainter& painter, QRect rect, const QString& text, int column) const;

  ui::ListView& list_;
  ListModel& model_;
  int hovered_ = -1;
  int pressed_ = -1;
};

}  // namespace kelpin::qt
