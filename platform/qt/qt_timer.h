// The periodic timer on the window thread. A firing that comes due while its own call still runs is
// dropped, as Qt never delivers a timer inside itself.
#pragma once

#include <QTimer>

#include "platform/timer.h"

namespace ostrel {

class QtTimer : public Timer {
 public:
  QtTimer();

  void OnTick(std::function<void()> call) override;
  void Start(milliseconds interval) override;
  void Stop() override;
  bool IsRunning() const override;

 private:
  QTimer timer_;
};

}  // namespace ostrel
