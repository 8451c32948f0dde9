// The one file copy of the station: between the ingest, holding, transmit and sent folders, and
// into them by the schedule and as fill; and the move where a rename cannot be.
#pragma once

#include <string>

#include "base/failure.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace ostrel {

class FileCopy {
 public:
  FileCopy(Files& files, Clock& clock) : files_(files), clock_(clock) {}

  /// Copies whole, replacing the destination. Waits out a source that is in use: 20 attempts, each
  /// followed by 100 ms. Throws a Failure from "CopyFile" with the number base + 1000 + code;
  /// nothing is deleted or changed then. Only a source of the operator's own choice may be a link.
  void CopyFile(const std::string& source, const std::string& destination,
                Links links = Links::kRefused);

  /// Gives a file its place in another folder, replacing what is there: by a rename, or else, as
  /// into another file system, by a copy that is on the disk before the source goes. Its last-write
  /// time stays. Throws Failure.
  void MoveFile(const std::string& source, const std::string& destination);

 private:
  Files& files_;
  Clock& clock_;
};

/// True when `failure`, of a copy or of another step, says that the disk has no room.
bool IsDiskFull(const Failure& failure);

}  // namespace ostrel
