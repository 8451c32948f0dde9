// The windows of a station that has none: what they would show goes to standard error and the log,
// and the main window's place is kept for the day when it has one again.
#pragma once

#include "platform/clock.h"
#include "platform/dialogs.h"
#include "station/unseen_messages.h"

namespace ostrel {

class PlainDialogs : public Dialogs {
 public:
  explicit PlainDialogs(const Clock& clock) : unseen_(clock) {}

  void LogMessagesTo(Reporting& log) { unseen_.LogTo(log); }

  void ShowMessage(const Message& message, std::function<void(MessageAnswer)> answered) override {
    unseen_.Show(message, answered);
  }
  void ShowErrorWindow(const std::string& text) override { unseen_.ShowReport(text); }
  void CloseErrorWindow() override {}
  void ShowMainWindow() override {}
  void ShowSetup() override {}
  void HideSetup() override {}
  void UnloadSetup() override {}
  void RepaintMainWindow() override {}
  std::pair<float, float> ScreenSize() override { return {placement_.width, placement_.height}; }
  WindowPlacement Placement() override { return placement_; }
  void Place(const WindowPlacement& placement) override { placement_ = placement; }
  void EndProgram() override;

 private:
  UnseenMessages unseen_;
  WindowPlacement placement_{0, 0, 7875, 6375};
};

}  // namespace ostrel
