#include "ui/window_dialogs.h"

#include <QApplication>
#include <QGridLayout>
#include <QMessageBox>
#include <QScreen>
#include <QSpacerItem>
#include <fmt/format.h>

#include "ui/bindings.h"
#include "ui/main_window.h"
#include "ui/menus.h"
#include "ui/setup_dialog.h"
#include "ui/twips.h"

namespace ostrel::ui {
namespace {

constexpr int kFrameButtonsWidth = 120;

QMessageBox::Icon IconOf(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::kStop:
      return QMessageBox::Critical;
    case MessageIcon::kQuestion:
      return QMessageBox::Question;
    case MessageIcon::kExclamation:
      return QMessageBox::Warning;
    case MessageIcon::kInformation:
      break;
  }
  return QMessageBox::Information;
}

float ToTwips(int pixels) {
  return static_cast<float>(pixels * kTwipsPerPixel);
}
int ToPixels(float twips) {
  return qRound(twips / kTwipsPerPixel);
}

/// A station without a display has nobody to read the box: its one line goes where the service
/// manager keeps what programs say.
void SayWithoutDisplay(const QString& text) {
  if (QGuiApplication::platformName() != QLatin1String("offscreen")) return;
  fmt::print(stderr, "ostrel: {}\n", text.simplified().toStdString());
}

/// Widens the box until its title stands in the frame uncut, beside the frame's own buttons.
void MakeRoomForTitle(QMessageBox& box) {
  QFont bold = box.font();
  bold.setBold(true);
  const int width = QFontMetrics(bold).horizontalAdvance(box.windowTitle()) + kFrameButtonsWidth;
  auto* const grid = qobject_cast<QGridLayout*>(box.layout());
  if (grid == nullptr) return;
  grid->addItem(new QSpacerItem(width, 0), grid->rowCount(), 0, 1, grid->columnCount());
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

void WindowDialogs::Attach(MainWindow& mainWindow, SetupDialog& setup) {
  mainWindow_ = &mainWindow;
  setup_ = &setup;
}

void WindowDialogs::EndMessages() {
  ending_ = true;
  while (auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
    box->done(QMessageBox::NoButton);
  }
}

MessageAnswer WindowDialogs::ShowMessage(const Message& message) {
  const bool asks = message.buttons == MessageButtons::kYesNo;
  const MessageAnswer unanswered = asks ? MessageAnswer::kNo : MessageAnswer::kOk;
  SayWithoutDisplay(ToQt(message.text));
  if (ending_) return unanswered;
  QWidget* const owner = setup_->isVisible()        ? static_cast<QWidget*>(setup_)
                         : mainWindow_->isVisible() ? mainWindow_
                                                    : nullptr;
  QMessageBox box(IconOf(message.icon), ToQt(message.title), ToQt(message.text).remove('\r'),
                  asks ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok, owner);
  box.setTextFormat(Qt::PlainText);
  MakeRoomForTitle(box);
  return box.exec() == QMessageBox::Yes ? MessageAnswer::kYes : unanswered;
}

void WindowDialogs::ShowErrorWindow(const std::string& text) {
  if (!errors_) errors_ = new ErrorWindow(clock_, mainWindow_);
  errors_->SetMessage(ToQt(text));
  BringForward(errors_);
}

void WindowDialogs::CloseErrorWindow() {
  if (errors_) errors_->close();
}

void WindowDialogs::ShowMainWindow() {
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
