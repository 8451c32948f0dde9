// A machine without a window system: other programs are known by their processes, and nothing is
// shown.
#pragma once

#include "platform/desktop.h"

namespace ostrel {

class PlainDesktop : public Desktop {
 public:
  bool WindowExists(const std::string& title) override;
  void RestoreWindowAbove(const std::string& /*title*/) override {}
  void StartMinimized(const std::vector<std::string>& command) override;
  void Start(const std::vector<std::string>& command) override;
  /// Throws Failure 53: there is nothing that opens it.
  void OpenAddress(const std::string& address) override;
  void OpenText(const std::string& /*path*/, std::function<void()> failed) override { failed(); }
};

}  // namespace ostrel
