#include "tests/ui/windowed_station.h"

namespace ostrel {

WindowedStation::WindowedStation() {
  WindowedStation::MakeStation();
  Start();
}

void WindowedStation::MakeStation() {
  mainWindow.reset();
  station.reset();
  station =
      std::make_unique<Station>(machine.For(folder.path(), files, archives, stores, &dialogs));
  mainWindow = std::make_unique<ui::MainWindow>(
      window(), station->status(), [this] { return station->figures(); }, station->actions());
  setupDialog = new ui::SetupDialog(setup(), station->actions(), mainWindow.get());
  dialogs.Attach(*mainWindow, *setupDialog, setup(), station->actions());
}

void WindowedStation::ShowSetup(int tab) {
  Find<QAction>("mnuSetup")->trigger();
  if (!QTest::qWaitForWindowActive(setupDialog))
    throw std::runtime_error("the dialog did not show");
  Find<QTabWidget>("SSTab1")->setCurrentIndex(tab);
}

void WindowedStation::Type(const QString& field, const QString& text) {
  auto* const edit = Find<QLineEdit>(field);
  edit->setFocus();
  edit->selectAll();
  QTest::keyClicks(edit, text);
}

QStringList WindowedStation::Enter(const QString& field, const QString& text) {
  Type(field, text);
  QTest::keyClick(Find<QWidget>(field), Qt::Key_Return);
  QStringList seen;
  for (auto* const box : Boxes()) {
    seen << box->text();
    QTest::keyClick(box, Qt::Key_Return);
  }
  return seen;
}

void WindowedStation::Click(const QString& element) {
  QTest::mouseClick(Find<QWidget>(element), Qt::LeftButton);
}

void WindowedStation::Select(const QString& list, std::initializer_list<int> rows) {
  auto* const view = Find<ui::ListView>(list);
  Qt::KeyboardModifiers modifiers;
  for (const int row : rows) {
    view->scrollTo(view->model()->index(row, 0));
    const QPoint place = view->visualRect(view->model()->index(row, 0)).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, modifiers, place);
    modifiers = Qt::ControlModifier;
  }
}

QList<QMessageBox*> WindowedStation::Boxes() {
  QCoreApplication::processEvents();
  QList<QMessageBox*> boxes;
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    auto* const box = qobject_cast<QMessageBox*>(window);
    if (box != nullptr && box->isVisible()) boxes << box;
  }
  return boxes;
}

}  // namespace ostrel
