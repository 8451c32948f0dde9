// A periodic timer on the one thread.
#pragma once

#include <functional>

#include "base/time.h"

namespace ostrel {

class Timer {
 public:
  virtual ~Timer() = default;

  /// What is called at each firing. Set once, before the first start.
  virtual void OnTick(std::function<void()> call) = 0;
  /// First firing after one interval. A firing that finds the thread busy comes late, never twice.
  virtual void Start(milliseconds interval) = 0;
  virtual void Stop() = 0;
  virtual bool IsRunning() const = 0;
};

}  // namespace ostrel
