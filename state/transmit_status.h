// How the sending stands: what no window shows as a field, but more than one part of the station
// reads.
#pragma once

#include <cstdint>
#include <string>

#include "base/priority.h"
#include "base/time.h"

namespace ostrel {

/// The compression's account of the day.
struct CompressionTotals {
  std::int64_t compressed = 0;    // bytes
  std::int64_t uncompressed = 0;  // bytes
  float ratio = 1;
};

struct TransmitStatus {
  bool timingReadout = false;
  LocalTime TxStart{};            // of the present transmit period, or pause
  std::string PendingPacket;      // empty, or one packet
  PerPriority<int> FilesSent;     // since midnight
  PerPriority<int> MaximumCount;  // the longest queue since midnight
  int FillsSent = 0;              // since midnight
  CompressionTotals compression;

  int FilesSentInAll() const {
    int sum = 0;
    for (const int sent : FilesSent) sum += sent;
    return sum;
  }
};

}  // namespace ostrel
