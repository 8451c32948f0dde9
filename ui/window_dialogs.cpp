#include "ui/window_dialogs.h"

#include <QApplication>
#include <QScreen>
#include <QStyle>

#include "ui/bindings.h"
#include "ui/main_window.h"
#include "ui/menus.h"
#include "ui/message_box.h"
#include "ui/screen_place.h"
#include "ui/setup_dialog.h"
#include "ui/twips.h"

namespace ostrel::ui {
namespace {

float ToTwips(int pixels) {
  return static_cast<float>(pixels * kTwipsPerPixel);
}
int ToPixels(float twips) {
  return qRound(twips / kTwipsPerPixel);
}

Qt::WindowStates StateOf(WindowState state) {
  switch (state) {
    case WindowState::kMinimized:
      return Qt::WindowMinimized;
    case WindowState::kMaximized:
      return Qt::WindowMaximized;
    case WindowState::kNormal:
      break;
  }
  return Qt::WindowNoState;
}

}  // namespace

void WindowDialogs::Attach(MainWindow& mainWindow, SetupDialog& setup, SetupFields& fields,
                           Actions& actions) {
  mainWindow_ = &mainWindow;
  setup_ = &setup;
  makeErrorWindow_ = [&, this] { return new ErrorWindow(clock_, fields, actions, &mainWindow); };
}

void WindowDialogs::ShowMessage(const Message& message,
                                std::function<void(MessageAnswer)> answered) {
  if (!hasDisplay_) return unseen_.Show(message, answered);
  // Comes up last, in front of the windows that its asker has yet to show, hide and activate.
  QMetaObject::invokeMethod(
      mainWindow_, [this, message, answered] { OpenBox(message, answered); }, Qt::QueuedConnection);
}

void WindowDialogs::OpenBox(const Message& message,
                            const std::function<void(MessageAnswer)>& answered) {
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    auto* const open = qobject_cast<MessageBox*>(window);
    if (open != nullptr && open->Shows(message)) return BringForward(open);
  }
  QWidget* const owner = setup_->isVisible()        ? static_cast<QWidget*>(setup_)
                         : mainWindow_->isVisible() ? mainWindow_
                                                    : nullptr;
  BringForward(new MessageBox(message, answered, owner));
}

void WindowDialogs::ShowErrorWindow(const std::string& text) {
  if (!errors_) errors_ = makeErrorWindow_();
  if (errors_->SetMessage(ToQt(text)) == ErrorNews::kNew) return BringForward(errors_);
  errors_->raise();
}

void WindowDialogs::CloseErrorWindow() {
  if (errors_) errors_->close();
}

// It may have been left on a screen that is gone.
void WindowDialogs::ShowMainWindow() {
  QList<QRect> rooms;
  for (const QScreen* const screen : QGuiApplication::screens())
    rooms << screen->availableGeometry();
  // It has no frame before it is shown.
  const int title = mainWindow_->style()->pixelMetric(QStyle::PM_TitleBarHeight);
  const QRect stored(mainWindow_->pos(), mainWindow_->size() + QSize(0, title));
  const QRect place = InReach(stored, rooms);
  if (place != stored) mainWindow_->move(place.topLeft());
  mainWindow_->show();
  if (!mainWindow_->isMinimized()) BringForward(mainWindow_);
}

void WindowDialogs::ShowSetup() {
  BringForward(setup_);
}

void WindowDialogs::HideSetup() {
  setup_->hide();
}

void WindowDialogs::UnloadSetup() {
  setup_->Unload();
}

void WindowDialogs::RepaintMainWindow() {
  mainWindow_->repaint();
}

std::pair<float, float> WindowDialogs::ScreenSize() {
  const QSize size = mainWindow_->screen()->size();
  return {ToTwips(size.width()), ToTwips(size.height())};
}

WindowPlacement WindowDialogs::Placement() {
  const WindowState state = mainWindow_->isMinimized()   ? WindowState::kMinimized
                            : mainWindow_->isMaximized() ? WindowState::kMaximized
                                                         : WindowState::kNormal;
  return {ToTwips(mainWindow_->x()), ToTwips(mainWindow_->y()), ToTwips(mainWindow_->width()),
          ToTwips(mainWindow_->height()), state};
}

void WindowDialogs::Place(const WindowPlacement& placement) {
  mainWindow_->move(ToPixels(placement.left), ToPixels(placement.top));
  mainWindow_->resize(ToPixels(placement.width), ToPixels(placement.height));
  mainWindow_->setWindowState(StateOf(placement.state));
}

// Queued, so that it also ends a program whose event loop has yet to begin; and not a request to
// quit, which would ask the windows to close first.
void WindowDialogs::EndProgram() {
  QMetaObject::invokeMethod(
      qApp, [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
}

}  // namespace ostrel::ui
