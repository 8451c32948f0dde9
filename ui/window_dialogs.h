// What the core asks of the windows, done by the windows: message boxes, showing and hiding, and
// the main window's place on the screen.
#pragma once

#include <QPointer>
#include <functional>

#include "base/reporting.h"
#include "platform/clock.h"
#include "platform/dialogs.h"
#include "state/setup_fields.h"
#include "station/actions.h"
#include "ui/error_window.h"

namespace ostrel::ui {

class MainWindow;
class SetupDialog;

class WindowDialogs : public Dialogs {
 public:
  explicit WindowDialogs(const Clock& clock) : clock_(clock) {}

  /// The windows are made after the core, which holds what they show; this comes before anything
  /// is asked of them.
  void Attach(MainWindow& mainWindow, SetupDialog& setup, SetupFields& fields, Actions& actions);
  /// Nobody can see a box: messages go to standard error, where the service manager keeps what
  /// programs say.
  void GoWithoutDisplay() { hasDisplay_ = false; }
  /// ... and from now on to the log as well.
  void LogMessagesTo(Reporting& log) { log_ = &log; }

  void ShowMessage(const Message& message, std::function<void(MessageAnswer)> answered) override;
  void ShowErrorWindow(const std::string& text) override;
  void CloseErrorWindow() override;
  void ShowMainWindow() override;
  void ShowSetup() override;
  void HideSetup() override;
  void UnloadSetup() override;
  void RepaintMainWindow() override;
  std::pair<float, float> ScreenSize() override;
  /// Left and top are those of the frame, width and height those of what is inside it.
  WindowPlacement Placement() override;
  void Place(const WindowPlacement& placement) override;
  void EndProgram() override;

 private:
  void OpenBox(const Message& message, const std::function<void(MessageAnswer)>& answered);

  const Clock& clock_;
  MainWindow* mainWindow_ = nullptr;
  SetupDialog* setup_ = nullptr;
  std::function<ErrorWindow*()> makeErrorWindow_;
  QPointer<ErrorWindow> errors_;
  Reporting* log_ = nullptr;
  bool hasDisplay_ = true;
};

}  // namespace ostrel::ui
