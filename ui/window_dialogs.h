// What the core asks of the windows, done by the windows: message boxes, showing and hiding, and
// the main window's place on the screen.
#pragma once

#include <QPointer>
#include <functional>

#include "platform/clock.h"
#include "platform/dialogs.h"
#include "state/setup_fields.h"
#include "station/actions.h"
#include "station/unseen_messages.h"
#include "ui/error_window.h"

namespace ostrel::ui {

class MainWindow;
class SetupDialog;

class WindowDialogs : public Dialogs {
 public:
  explicit WindowDialogs(const Clock& clock) : clock_(clock), unseen_(clock) {}

  /// The windows are made after the core, which holds what they show; this comes before anything
  /// is asked of them.
  void Attach(MainWindow& mainWindow, SetupDialog& setup, SetupFields& fields, Actions& actions);
  /// Nobody can see a box: messages go where those of a station without windows go.
  void GoWithoutDisplay() { hasDisplay_ = false; }
  void LogMessagesTo(Reporting& log) { unseen_.LogTo(log); }

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
  UnseenMessages unseen_;
  bool hasDisplay_ = true;
};

}  // namespace ostrel::ui
