// A list of the state as the rows of a list view. It follows the list change by change, each by its
// position, so that a queue of ten thousand entries costs no more than the change itself.
#pragma once

#include <QAbstractListModel>

#include "state/list_field.h"

namespace ostrel::ui {

class ListModel : public QAbstractListModel {
  Q_OBJECT

 public:
  ListModel(ListField& list, QObject* parent);

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  void Follow(const ListChange& change);

  ListField& list_;
  int rows_;  // as the views know it; the list is ahead of it while a change is passed on
  Subscription subscription_;
};

}  // namespace ostrel::ui
