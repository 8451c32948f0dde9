// The one file copy of the station: between the ingest, holding, transmit and sent folders, and
// into them by the schedule.
#pragma once

#include <string>

#include "platform/clock.h"
#include "platform/files.h"

namespace ostrel {

class FileCopy {
 public:
  FileCopy(Files& files, Clock& clock) : files_(files), clock_(clock) {}

  /// Copies whole, replacing the destination. Waits out a source that is in use: 20 attempts, each
  /// followed by 100 ms. Throws a Failure from "CopyFile" with the number base + 1000 + code;
  /// nothing is deleted or changed then.
  void CopyFile(const std::string& source, const std::string& destination);

 private:
  Files& files_;
  Clock& clock_;
};

}  // namespace ostrel
