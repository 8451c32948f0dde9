// Trees of folders under the eyes of the system: which of their files are being written, and which
// have just been closed. A network share tells nothing; whoever uses this looks for himself as
// well.
#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>

#include "platform/linux/descriptor.h"

namespace ostrel {

class TreeWatch {
 public:
  struct Listener {
    std::function<void(const std::string& path)> writing;  // it grows
    std::function<void(const std::string& path)> whole;    // closed by its writer, or moved here
    std::function<void()> newFolder;  // not watched yet, and with files in it perhaps
  };
  explicit TreeWatch(Listener listener);

  /// Watches `folder`, and not what is beneath it. A folder that is watched already, or that cannot
  /// be, is none the worse.
  void Watch(const std::string& folder);

 private:
  void ReadEvents();
  void Handle(int watch, unsigned mask, const std::string& name);

  Listener listener_;
  Descriptor inotify_;
  std::unordered_map<int, std::string> folders_;  // by the system's number
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace ostrel
