// Notices a transmitter that is keyed and carries nothing. Where there should be something (a fill
// text that cannot be sent, folders that cannot be used) the log tells when that begins and when it
// ends.
#pragma once

#include "base/reporting.h"
#include "intake/obstacles.h"
#include "platform/clock.h"
#include "radio/transmitter.h"
#include "state/transmit_status.h"

namespace ostrel {

class SilenceWatch {
 public:
  struct Parts {
    const Clock& clock;
    Transmitter& transmitter;
    Obstacles& obstacles;
    Reporting& reporting;
    TransmitStatus& status;
  };
  explicit SilenceWatch(const Parts& parts) : parts_(parts) {}

  /// At the end of a tick. Pauses and identifications neither begin a silence nor end it.
  void Look();

 private:
  void End();
  void Tell();
  std::string Reason();

  Parts parts_;
  std::optional<milliseconds> lastPacket_;  // as the last look found it
};

}  // namespace ostrel
