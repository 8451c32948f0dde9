// One station per folder, by a lock on a hidden file in it, and on the folder itself where its file
// system locks folders: somebody may remove the file. The locks go with the process, however it
// ends; the file stays.
#pragma once

#include <string>

#include "platform/instance_lock.h"
#include "platform/linux/descriptor.h"

namespace ostrel {

class LinuxInstanceLock : public InstanceLock {
 public:
  explicit LinuxInstanceLock(std::string programFolder)
      : programFolder_(std::move(programFolder)) {}

  /// Throws Failure when the lock file cannot be made.
  bool TryLock() override;

 private:
  std::string programFolder_;
  Descriptor lock_, folderLock_;
};

}  // namespace ostrel
