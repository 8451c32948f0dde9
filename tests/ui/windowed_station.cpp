#include "tests/ui/windowed_station.h"

#include <QMessageBox>
#include <QTimer>
#include <filesystem>

#include "tests/support/virtual_station.h"

namespace ostrel {

WindowedStation::WindowedStation()
    : machine(kNoon),
      files_(machine.clock),
      archives_(files_),
      stores_(folder / "KvRegistry.db"),
      dialogs_(machine.clock) {
  Start();
}

void WindowedStation::Start() {
  station = std::make_unique<Station>(Platform{folder.path(), machine.clock, machine.loop,
                                               machine.cycleTimer, machine.purgeTimer, machine.line,
                                               machine.datagrams, files_, archives_, stores_,
                                               dialogs_, machine.desktop, machine.instance});
  mainWindow = std::make_unique<ui::MainWindow>(station->mainWindow(), station->engine(),
                                                station->operators());
  setup = new ui::SetupDialog(station->setup(), station->operators(), mainWindow.get());
  dialogs_.Attach(*mainWindow, *setup);
  if (!station->Start()) throw std::runtime_error("the station did not start");
}

void WindowedStation::Restart() {
  station->Stop();
  mainWindow.reset();
  station.reset();
  machine.clock.stopRequested = machine.clock.shutdownBegun = false;
  Start();
}

void WindowedStation::ShowSetup(int tab) {
  Find<QAction>("mnuSetup")->trigger();
  if (!QTest::qWaitForWindowActive(setup)) throw std::runtime_error("the dialog did not show");
  Find<QTabWidget>("SSTab1")->setCurrentIndex(tab);
}

void WindowedStation::Activate(QWidget* window) {
  window->activateWindow();
  if (!QTest::qWaitFor([&] { return QApplication::activeWindow() == window; })) {
    throw std::runtime_error("the window stays behind");
  }
}

void WindowedStation::Type(const QString& field, const QString& text) {
  auto* const edit = Find<QLineEdit>(field);
  edit->setFocus();
  edit->selectAll();
  QTest::keyClicks(edit, text);
}

void WindowedStation::Click(const QString& label, Qt::MouseButton button) {
  QTest::mouseClick(Find<QWidget>(label), button);
}

void WindowedStation::ClickTwice(const QString& label) {
  auto* const element = Find<QWidget>(label);
  QTest::mouseClick(element, Qt::LeftButton);
  QTest::mouseDClick(element, Qt::LeftButton);  // what the second press of a fast pair arrives as
  QTest::mouseRelease(element, Qt::LeftButton);
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

std::vector<SeenMessage> WindowedStation::MessagesOf(const std::function<void()>& action) {
  std::vector<SeenMessage> seen;
  QTimer operatorAtScreen;
  QObject::connect(&operatorAtScreen, &QTimer::timeout, &operatorAtScreen, [&] {
    auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr) return;
    seen.push_back({box->windowTitle(), box->text()});
    QTest::keyClick(box, Qt::Key_Return);
  });
  operatorAtScreen.start(0);
  action();
  return seen;
}

}  // namespace ostrel
