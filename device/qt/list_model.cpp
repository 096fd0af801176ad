#include "device/qt/list_model.h"

#include <algorithm>
#include <utility>

#include "device/qt/text.h"

namespace kelpin::qt {

ListModel::ListModel(ui::ListView& list, QObject* parent)
    : QAbstractTableModel(parent), list_(list) {}

bool ListModel::Sync() {
  bool changed = false;
  std::vector<ui::Column> columns = list_.Columns();
  const bool checkBoxes = (list_.ExtendedStyle() & ui::kListCheckBoxes) != 0;
  if (columns.size() != columns_.size()) {
    beginResetModel();
    columns_ = std::move(columns);
    rows_ = list_.ItemCount();
    endResetModel();
    changed = true;
  } else if (columns != columns_) {
    columns_ = std::move(columns);
    if (!columns_.empty()) {
      Q_EMIT headerDataChanged(Qt::Horizontal, 0, static_cast<int>(columns_.size()) - 1);
    }
    changed = true;
  }
  if (checkBoxes != checkBoxes_) {
    checkBoxes_ = checkBoxes;
    changed = true;
  }
  // The version is read first: a row that comes meanwhile is told of again next time.
  const std::uint64_t version = list_.RowsVersion();
  const int count = list_.ItemCount();
  if (version != version_ || count != rows_) {
    version_ = version;
    SyncRows(count);
    changed = true;
  }
  return changed;
}

// No view keeps anything by row, so where rows came or went does not matter: the tail grows or
// shrinks and what is in sight is drawn again.
void ListModel::SyncRows(int count) {
  if (count > rows_) {
    beginInsertRows({}, rows_, count - 1);
    rows_ = count;
    endInsertRows();
  } else if (count < rows_) {
    beginRemoveRows({}, count, rows_ - 1);
    rows_ = count;
    endRemoveRows();
  }
  if (rows_ > 0 && !columns_.empty()) {
    Q_EMIT dataChanged(index(0, 0), index(rows_ - 1, columnCount() - 1));
  }
}

int ListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

int ListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant ListModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) {
    return {};
  }
  switch (role) {
    case Qt::DisplayRole:
      return ToQt(list_.ItemText(index.row(), index.column()));
    case Qt::CheckStateRole:
      if (checkBoxes_ && index.column() == 0) {
        return list_.Checked(index.row()) ? Qt::Checked : Qt::Unchecked;
      }
      return {};
    case Qt::TextAlignmentRole:
      return static_cast<int>(Qt::AlignVCenter |
                              (IsIndexColumn(index.column()) ? Qt::AlignRight : Qt::AlignLeft));
    default:
      return {};
  }
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 &&
      section < columnCount()) {
    return ToQt(columns_[static_cast<std::size_t>(section)].text);
  }
  return {};
}

Qt::ItemFlags ListModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) {
    return Qt::NoItemFlags;
  }
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
  if (checkBoxes_ && index.column() == 0) {
    flags |= Qt::ItemIsUserCheckable;
  }
  return flags;
}

// Reached by screen readers alone: a press goes to the list itself.
bool ListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::CheckStateRole || !checkBoxes_ || index.column() != 0) {
    return false;
  }
  const bool checked = value.toInt() == Qt::Checked;
  if (list_.Checked(index.row()) != checked) {
    list_.ClickCheckBox(index.row());
  }
  return true;
}

bool ListModel::IsIndexColumn(int column) const {
  return column >= 0 && column < columnCount() &&
         columns_[static_cast<std::size_t>(column)].text == u"#";
}

int ListModel::NameColumn() const {
  for (int column = 0; column < columnCount(); ++column) {
    if (!IsIndexColumn(column)) {
      return column;
    }
  }
  return -1;
}

}  // namespace kelpin::qt
