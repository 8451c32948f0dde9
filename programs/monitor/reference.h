// Listens to a receiver and to the station at once, and tells how much of what the one sends the
// other hears.
#pragma once

#include <optional>
#include <string>

#include "alarms/alarm_command.h"
#include "programs/monitor/comparison.h"
#include "receive/datagram_port.h"
#include "receive/stream_decoder.h"

namespace ostrel {

struct ReferenceOptions {
  DatagramAddress station;    // where its datagrams come in
  std::string json, metrics;  // files for the figures, "-" for standard output; none when empty
  double interval = 10;       // seconds between two figures
  double alarmAfter = 0;      // seconds of sending without hearing; 0: no alarm
  std::string alarmCommand;
};

class ReferenceListener {
 public:
  explicit ReferenceListener(const ReferenceOptions& options);

  /// Where the station's datagrams come in.
  const OpenFile& station() const { return station_.Readiness(); }
  /// Takes what came from the receiver, if anything did, and what the station said meanwhile. Comes
  /// often: losses, figures and the alarm go by the clock.
  void Take(const std::vector<StreamEvent>& events);
  /// The last figures, and a summary. Returns whether all was heard.
  bool Finish();

 private:
  void HearStation();
  void TellFigures();
  void Watch();

  ReferenceOptions options_;
  DatagramPort station_;
  Comparison comparison_;
  double nextFigures_ = 0;
  bool isAlarmed_ = false;
};

}  // namespace ostrel
