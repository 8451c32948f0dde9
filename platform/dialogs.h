// What the core asks of the windows: message boxes, showing, hiding and focus. The fields that they
// show are in state/.
#pragma once

#include <functional>
#include <string>
#include <utility>

namespace ostrel {

enum class WindowState { kNormal = 0, kMinimized = 1, kMaximized = 2 };

/// Where the main window stands, in twips (1/1440 inch; 15 to a pixel at 96 dpi).
struct WindowPlacement {
  float left = 0;
  float top = 0;
  float width = 0;
  float height = 0;
  WindowState state = WindowState::kNormal;
  friend bool operator==(const WindowPlacement&, const WindowPlacement&) = default;
};

enum class MessageIcon { kStop, kQuestion, kExclamation, kInformation };
enum class MessageButtons { kOk, kYesNo };
enum class MessageAnswer { kOk, kYes, kNo };

struct Message {
  std::string title;
  std::string text;
  MessageIcon icon;
  MessageButtons buttons = MessageButtons::kOk;
  friend bool operator==(const Message&, const Message&) = default;
};

/// What a message gets that nobody answers: what changes nothing.
inline MessageAnswer SafeAnswer(const Message& message) {
  return message.buttons == MessageButtons::kYesNo ? MessageAnswer::kNo : MessageAnswer::kOk;
}

class Dialogs {
 public:
  virtual ~Dialogs() = default;

  /// Shows a message box and returns at once. `answered` is called when the operator has closed the
  /// box, as one of the window's events; never when the program ends before. A message that is on
  /// the screen already comes forward again, and keeps the call that it has. Where nobody can see a
  /// box, `answered` gets the answer that changes nothing before this returns. The setup dialog is
  /// not left by a message box.
  virtual void ShowMessage(const Message& message,
                           std::function<void(MessageAnswer)> answered = {}) = 0;
  /// Opens the error window, or brings it forward, and sets its message. The activation goes to it,
  /// but for a message that it has had since it was opened.
  virtual void ShowErrorWindow(const std::string& text) = 0;
  virtual void CloseErrorWindow() = 0;
  virtual void ShowMainWindow() = 0;
  virtual void ShowSetup() = 0;
  virtual void HideSetup() = 0;
  /// Ends the setup dialog for good, without saving.
  virtual void UnloadSetup() = 0;
  /// The main window is painted at once, although no event is processed.
  virtual void RepaintMainWindow() = 0;

  /// The screen, in twips.
  virtual std::pair<float, float> ScreenSize() = 0;
  /// Where the main window stands now, and where it is to stand.
  virtual WindowPlacement Placement() = 0;
  virtual void Place(const WindowPlacement& placement) = 0;

  /// Ends the program: every window that is left goes without further steps.
  virtual void EndProgram() = 0;
};

}  // namespace ostrel
