// The companion ingest programs: the separate programs that receive the products and drop them into
// the ingest folder. The station can start one of them and bring its window forward; it never stops
// one.
#pragma once

#include <string>

#include "base/reporting.h"
#include "platform/desktop.h"

namespace ostrel {

class IngestPrograms {
 public:
  IngestPrograms(Desktop& desktop, Reporting& reporting, const std::string& programFolder)
      : desktop_(desktop), reporting_(reporting), programFolder_(programFolder) {}

  /// Starts the ingest program of `engine` (1 serial, 2 internet) unless its window exists. Any
  /// other number does nothing; failures are ignored, but that a program is refused which others
  /// could have put there is logged.
  void StartIngest(int engine);
  /// Brings up the window of an ingest program that runs. Failures are ignored.
  void ShowIngest();

 private:
  void Start(const std::string& title);

  Desktop& desktop_;
  Reporting& reporting_;
  const std::string& programFolder_;
};

}  // namespace ostrel
