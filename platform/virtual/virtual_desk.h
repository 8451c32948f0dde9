// The rest of a virtual machine: windows that nobody sees, datagrams that go nowhere, other
// programs that are only named. All of it remembers what was asked.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/failure.h"
#include "platform/datagrams.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/instance_lock.h"

namespace ostrel {

class VirtualDialogs : public Dialogs {
 public:
  void ShowMessage(const Message& message, std::function<void(MessageAnswer)> answered) override {
    messages.push_back(message);
    answered_ = std::move(answered);
  }
  /// The operator closes the box of the last message, which wants to hear of it.
  void Answer(MessageAnswer answer) { std::exchange(answered_, {})(answer); }
  void ShowErrorWindow(const std::string& text) override { errors.push_back(text); }
  void CloseErrorWindow() override { asked.emplace_back("closes the error window"); }
  void ShowMainWindow() override { mainIsShown = true; }
  void ShowSetup() override { setupIsShown = true; }
  void HideSetup() override { setupIsShown = false; }
  void UnloadSetup() override {
    setupIsShown = false;
    asked.emplace_back("unloads setup");
  }
  void RepaintMainWindow() override { asked.emplace_back("paints the main window"); }
  std::pair<float, float> ScreenSize() override { return {19200, 12000}; }
  WindowPlacement Placement() override { return placement; }
  void Place(const WindowPlacement& where) override { placement = where; }
  void EndProgram() override { hasEnded = true; }

  std::vector<Message> messages;
  std::vector<std::string> errors;
  std::vector<std::string> asked;  // what leaves no other mark
  WindowPlacement placement{0, 0, 7875, 6375};
  bool mainIsShown = false;
  bool setupIsShown = false;
  bool hasEnded = false;

 private:
  std::function<void(MessageAnswer)> answered_;
};

class VirtualDatagrams : public Datagrams {
 public:
  void SetDestination(const std::string& where, std::int32_t number) override {
    address = where;
    port = number;
  }
  void SetConfiguration(std::string_view text) override { configuration = text; }
  void Activate() override { isActive = true; }
  void Deactivate() override { isActive = false; }
  bool IsActive() const override { return isActive; }
  void Send(std::string_view bytes) override {
    if (sendFails) throw Failure(failure_number::kDeviceError, "Device I/O error");
    sent.emplace_back(bytes);
  }

  std::string address;
  std::int32_t port = 0;
  std::string configuration;
  bool isActive = false;
  bool sendFails = false;
  std::vector<std::string> sent;
};

class VirtualDesktop : public Desktop {
 public:
  bool WindowExists(const std::string& title) override { return windows.contains(title); }
  void RestoreWindowAbove(const std::string& title) override {
    if (windows.contains(title)) restored.push_back(title);
  }
  void StartMinimized(const std::vector<std::string>& command) override { Start(command); }
  void Start(const std::vector<std::string>& command) override { started.push_back(command); }
  void OpenAddress(const std::string& address) override { opened.push_back(address); }
  void OpenText(const std::string& path, std::function<void()> failed) override {
    opened.push_back(path);
    if (!hasEditor) failed();
  }

  std::set<std::string> windows;
  std::vector<std::string> restored;
  std::vector<std::vector<std::string>> started;
  std::vector<std::string> opened;
  bool hasEditor = true;
};

class VirtualInstanceLock : public InstanceLock {
 public:
  bool TryLock() override {
    if (failure) throw *failure;
    return isFirst;
  }
  bool isFirst = true;
  std::optional<Failure> failure;
};

}  // namespace ostrel
