// The ways in which the station gives a file its place: it places files on their way from the
// ingest folder to the sent folder, copies what stays where it is (schedule, fill text, copies of
// the rules), and moves what changes its folder at once.
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
                Links links = Links::kRefused, Flush flush = Flush::kFirst);

  /// Gives a file its next place before the caller deletes `source`, without writing its bytes
  /// where one file system holds both: see Files::Place. True when the file itself moved, and
  /// `source` is gone. Waits and throws as CopyFile.
  bool PlaceFile(const std::string& source, const std::string& destination);
  /// Makes the placed file independent of a source that stays: from here on a program that writes
  /// into the source does not change it. Throws as CopyFile.
  void Detach(const std::string& placed) { CopyFile(placed, placed); }

  /// Gives a file its place in another folder, replacing what is there: by a rename, or else, as
  /// into another file system, by a copy that is on the disk before the source goes. Its last-write
  /// time stays. Throws Failure.
  void MoveFile(const std::string& source, const std::string& destination);

 private:
  template <typename Step>
  int Repeat(Step&& step);

  Files& files_;
  Clock& clock_;
};

/// True when `failure`, of a copy or of another step, says that the disk has no room.
bool IsDiskFull(const Failure& failure);

}  // namespace ostrel
