#include "ui/list_view.h"

#include <QKeyEvent>
#include <algorithm>

#include "ui/list_model.h"

namespace ostrel::ui {

ListView::ListView(ListField& list, const QString& name, const QString& description,
                   QWidget* parent)
    : QListView(parent) {
  setObjectName(name);
  setAccessibleName(description);
  setModel(new ListModel(list, this));
  setSelectionMode(ExtendedSelection);
  setEditTriggers(NoEditTriggers);
  setUniformItemSizes(true);
}

std::vector<std::size_t> ListView::Selected() const {
  std::vector<std::size_t> positions;
  for (const auto& index : selectionModel()->selectedIndexes()) {
    positions.push_back(static_cast<std::size_t>(index.row()));
  }
  std::sort(positions.begin(), positions.end());
  return positions;
}

void ListView::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Delete) {
    emit DeletePressed();
  } else {
    QListView::keyPressEvent(event);
  }
}

}  // namespace ostrel::ui
