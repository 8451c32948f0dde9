// Runs a whole station in virtual time over a list of arrivals and measures how it keeps up.
#pragma once

#include <vector>

#include "base/priority.h"
#include "programs/simulate/arrivals.h"
#include "programs/simulate/station_copy.h"

namespace ostrel {

/// What became of the products of one priority.
struct PriorityMeasure {
  int files = 0;
  long long bytes = 0;
  /// From each arrival to the end of its last block on the line, sorted.
  std::vector<milliseconds> waits;
  std::size_t deepestQueue = 0;
};

/// The queues at one moment.
struct DepthSample {
  milliseconds at{0};
  PerPriority<std::size_t> depth;
};

struct Measures {
  milliseconds length{0};
  int arrivals = 0;
  // What became of the arrivals
  int sent = 0;             // the last block went out
  int ruledOut = 0;         // thrown away, or unpacked
  int replaced = 0;         // by a newer one, before they went out
  int purged = 0;           // waited too long
  std::size_t waiting = 0;  // at the end
  long long bytesOnLine = 0;
  double lineUse = 0;    // of the time, 0 to 1
  double fillShare = 0;  // of the packets, 0 to 1
  PerPriority<PriorityMeasure> priorities;
  std::vector<DepthSample> depths;  // every five minutes
};

/// `length` is the time simulated. Throws Failure when the station does not start
/// or opens no port.
Measures Simulate(const StationCopy& station, const std::vector<Arrival>& arrivals,
                  milliseconds length);

}  // namespace ostrel
