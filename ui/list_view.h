// A list box over a list of the state, several entries selectable, with the Delete key told.
#pragma once

#include <QListView>
#include <vector>

#include "state/list_field.h"

namespace ostrel::ui {

class ListView : public QListView {
  Q_OBJECT

 public:
  /// `description` is what a screen reader calls the list.
  ListView(ListField& list, const QString& description, QWidget* parent);

  /// Gives the rows the height at which `rows` of them fill the view: none is cut in half.
  void ShowWholeRows(int rows);

  /// The selected positions, lowest first.
  std::vector<std::size_t> Selected() const;

 signals:
  void DeletePressed();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  /// An entry that is wider than the view has the whole of it for a tool tip.
  bool viewportEvent(QEvent* event) override;
};

}  // namespace ostrel::ui
