#pragma once

#include <QAbstractTableModel>
#include <cstdint>
#include <vector>

#include "ui/list_view.h"

namespace kelpin::qt {

// Shows a ui::ListView to Qt's views. Keeps no texts: what is drawn is read when it is drawn.
class ListModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  ListModel(ui::ListView& list, QObject* parent);

  // Tells the views what has changed in the list since the last call. True when rows or columns
  // did.
  bool Sync();

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

  // A column of numbers in sequence, "#".
  bool IsIndexColumn(int column) const;
  // The column that names the row: the first that does not number it.
  int NameColumn() const;
  bool HasCheckBoxes() const { return checkBoxes_; }
  const std::vector<ui::Column>& Columns() const { return columns_; }

 private:
  void SyncRows(int count);

  ui::ListView& list_;
  std::vector<ui::Column> columns_;
  bool checkBoxes_ = false;
  int rows_ = 0;
  std::uint64_t version_ = 0;
};

}  // namespace kelpin::qt
