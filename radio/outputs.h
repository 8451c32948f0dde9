// All roads on which packets leave the station, in their order.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/reporting.h"
#include "radio/output.h"

namespace ostrel {

class Outputs {
 public:
  using List = std::vector<std::reference_wrapper<Output>>;
  Outputs(Reporting& reporting, List outputs)
      : reporting_(reporting), outputs_(std::move(outputs)) {}

  /// Hands the packet to each of them. A failure is reported and keeps it from no other.
  void Send(const std::string& packet);
  /// Throws Failure at the first that cannot be opened.
  void Begin();
  /// Ends each of them; failures are reported.
  void End();

 private:
  Reporting& reporting_;
  List outputs_;
};

}  // namespace ostrel
