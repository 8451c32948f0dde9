#include "ui/list_view.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QStyledItemDelegate>
#include <QToolTip>
#include <algorithm>

#include "ui/bindings.h"
#include "ui/list_model.h"
#include "ui/looks.h"

namespace ostrel::ui {
namespace {

class RowsOfHeight : public QStyledItemDelegate {
 public:
  RowsOfHeight(int height, QObject* parent) : QStyledItemDelegate(parent), height_(height) {}

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    return {QStyledItemDelegate::sizeHint(option, index).width(), height_};
  }

 private:
  int height_;
};

}  // namespace

ListView::ListView(ListField& list, const QString& description, QWidget* parent)
    : QListView(parent) {
  setObjectName(ToQt(list.name()));
  setAccessibleName(description);
  setModel(new ListModel(list, this));
  setSelectionMode(ExtendedSelection);
  setEditTriggers(NoEditTriggers);
  setUniformItemSizes(true);
}

void ListView::ShowWholeRows(int rows) {
  setItemDelegate(new RowsOfHeight((height() - 2 * frameWidth()) / rows, this));
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
    return;
  }
  const auto before = currentIndex();
  QListView::keyPressEvent(event);
  // An entry that a key leads to is chosen like one that is clicked.
  if (currentIndex().isValid() && currentIndex() != before) emit clicked(currentIndex());
}

bool ListView::viewportEvent(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QListView::viewportEvent(event);
  const auto* const help = static_cast<QHelpEvent*>(event);
  const auto index = indexAt(help->pos());
  const bool isCut = index.isValid() && sizeHintForIndex(index).width() > viewport()->width();
  QToolTip::showText(help->globalPos(), isCut ? PlainToolTip(index.data().toString()) : QString(),
                     viewport(), visualRect(index));
  return true;
}

}  // namespace ostrel::ui
