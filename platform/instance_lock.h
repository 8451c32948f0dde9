// One station per folder: held for the program's life by the first, refused to the second.
#pragma once

namespace ostrel {

class InstanceLock {
 public:
  virtual ~InstanceLock() = default;
  /// False when another instance holds it.
  virtual bool TryLock() = 0;
};

}  // namespace ostrel
