// Other programs on this desktop: found by the title of their window, started without being waited
// for, and the desktop's own "open" action (xdg-open) for addresses and texts.
#pragma once

#include <QTimer>

#include "platform/desktop.h"

namespace ostrel {

class LinuxDesktop : public Desktop {
 public:
  LinuxDesktop();

  bool WindowExists(const std::string& title) override;
  /// The window above counts if it is of the same process (a dialog of the program), else the found
  /// window itself is restored: above it there is mostly one that has nothing to do with it.
  void RestoreWindowAbove(const std::string& title) override;
  /// A program file named with ".exe" is taken without the ending where only that one is there.
  void StartMinimized(const std::vector<std::string>& command) override;
  void Start(const std::vector<std::string>& command) override;
  void OpenAddress(const std::string& address) override;
  /// An opener that ends with a failure within some seconds has found no editor.
  void OpenText(const std::string& path, std::function<void()> failed) override;

 private:
  void MinimizeWhenShown();

  QTimer minimizeTimer_;
  std::string minimizeTitle_;
  int minimizeTries_ = 0;
};

}  // namespace ostrel
