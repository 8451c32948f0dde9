// The program log: RtLog.txt in the program folder, one time-stamped line an event, moved aside to
// RtLog.old when it outgrows its size; and the reporter of failures, which writes its line there
// and opens the error window when the operator wants to see errors.
#pragma once

#include <string>
#include <string_view>

#include "base/reporting.h"
#include "base/station_files.h"
#include "platform/clock.h"
#include "platform/dialogs.h"
#include "platform/files.h"
#include "state/program_values.h"
#include "state/setup_fields.h"
#include "state/transmit_status.h"

namespace ostrel {

/// One line of the log, its end included; control characters of the message are written out.
std::string LogLine(LocalTime time, std::string_view category, std::string_view message);

class ProgramLog : public Reporting {
 public:
  struct Parts {
    Files& files;
    Clock& clock;
    Dialogs& dialogs;
    const SetupFields& setup;
    const ProgramValues& values;
    TransmitStatus& status;
  };
  explicit ProgramLog(const Parts& parts) : parts_(parts) {}

  /// On disk when it returns. A log held by another process is tried again every 10 ms, 199 times a
  /// stretch; then, or at any other failure, the error window says so and the line may be lost.
  void WriteLog(std::string_view category, std::string_view message) override;
  void ReportError(const Failure& failure, std::string_view procedure,
                   const AdditionalText& additional) override;

 private:
  std::string Path() const { return LogPath(parts_.values.programFolder); }
  void Write(std::string_view category, const std::string& text);
  void RotateWhenTooLarge();
  void MoveAside();
  std::string ReportText(const Failure& failure, std::string_view procedure,
                         const std::string& additional) const;
  template <typename Step>
  void RunRetried(Step&& step);

  Parts parts_;
  int retries_ = 0;
};

}  // namespace ostrel
