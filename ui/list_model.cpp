#include "ui/list_model.h"

#include "ui/bindings.h"

namespace ostrel::ui {

ListModel::ListModel(ListField& list, QObject* parent)
    : QAbstractListModel(parent), list_(list), rows_(static_cast<int>(list.size())) {
  subscription_ = list.OnChange([this](const ListChange& change) { Follow(change); });
}

int ListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

QVariant ListModel::data(const QModelIndex& index, int role) const {
  const auto position = static_cast<std::size_t>(index.row());
  if (role != Qt::DisplayRole || !index.isValid() || position >= list_.size()) return {};
  return Shown(list_[position]);
}

void ListModel::Follow(const ListChange& change) {
  const int row = static_cast<int>(change.position);
  switch (change.kind) {
    case ListChange::Kind::kInserted:
      beginInsertRows({}, row, row);
      ++rows_;
      endInsertRows();
      break;
    case ListChange::Kind::kRemoved:
      beginRemoveRows({}, row, row);
      --rows_;
      endRemoveRows();
      break;
    case ListChange::Kind::kReplaced:
      emit dataChanged(index(row), index(row));
      break;
    case ListChange::Kind::kReset:
      beginResetModel();
      rows_ = static_cast<int>(list_.size());
      endResetModel();
      break;
  }
}

}  // namespace ostrel::ui
