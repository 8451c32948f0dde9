// A station whose holding folders a test fills by hand and whose queues it reads.
#pragma once

#include <fmt/format.h>
#include <string>
#include <vector>

#include "tests/support/virtual_station.h"

namespace ostrel {

struct IntakeStation : VirtualStation {
  using VirtualStation::VirtualStation;

  std::string Holding(int number, const std::string& name) const {
    return Path(fmt::format("KvData/RtPri{}/{}", number, name));
  }
  /// Lays a file into a holding folder; it is taken before this returns.
  void Hold(int number, const std::string& name, const std::string& content) {
    WriteFile(Holding(number, name), content);
    Run(kCyclePeriod);
  }
  /// Starts and puts the first priority on the air for minutes, so that all else waits.
  void StartBusy() {
    Start();
    Hold(1, "BUSY.TXT", SampleText(60'000));
  }
  std::vector<std::string> Queue(int priority) {
    const auto& queue = window().PriorityList[Priority(priority)];
    return {queue.begin(), queue.end()};
  }
  std::string InTransmitFolder(const std::string& name) const {
    return Path("KvData/RtXmit/" + name);
  }
};

}  // namespace ostrel
