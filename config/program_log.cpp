#include "config/program_log.h"

#include <fmt/format.h>

#include "base/text.h"
#include "config/about.h"

namespace ostrel {

namespace {

constexpr std::size_t kCategoryWidth = 12;
constexpr int kMostRetries = 199;
constexpr milliseconds kRetryWait{10};
constexpr const char* kMainWindow = "frmMain";

}  // namespace

std::string LogPath(const std::string& programFolder) {
  return programFolder + "/RtLog.txt";
}

std::string LogLine(LocalTime time, std::string_view category, std::string_view message) {
  const auto width = std::max(kCategoryWidth, category.size());
  return fmt::format("{} {} {}{}", FormatLogStamp(time), PadOrCut(category, width), message,
                     kLineEnd);
}

template <typename Step>
void ProgramLog::RunRetried(Step&& step) {
  for (;;) {
    try {
      return step();
    } catch (const Failure& failure) {
      if (!failure.IsInUse() || retries_ >= kMostRetries) throw;
    }
    ++retries_;
    parts_.clock.Sleep(kRetryWait);
  }
}

void ProgramLog::WriteLog(std::string_view category, std::string_view message) {
  retries_ = 0;
  try {
    const auto line = LogLine(parts_.clock.Now(), category, message);
    RunRetried([&] { parts_.files.Append(Path(), line); });
    retries_ = 0;
    if (!IsChecked(parts_.setup.chkLogDaily)) RotateWhenTooLarge();
  } catch (const std::exception& error) {
    const auto failure = AsFailure(error);
    parts_.dialogs.ShowErrorWindow(
        fmt::format("Log File Error: {} {}\r\n", failure.number(), failure.text()));
  } catch (const StopRequested&) {
    // The program ends while the log is held by another process: the line is lost, and the caller
    // meets the stop at its own next wait.
  }
}

void ProgramLog::RotateWhenTooLarge() {
  std::int64_t size = 0;
  RunRetried([&] { size = parts_.files.Status(Path()).size; });
  if (size <= parts_.values.logSize) return;
  RunRetried([&] { parts_.files.Rename(Path(), parts_.values.programFolder + "/RtLog.old"); });
}

void ProgramLog::ReportError(const Failure& failure, std::string_view procedure,
                             std::string_view additional) {
  WriteLog(procedure, fmt::format("{}.{}.{} {}", DescribeFailure(failure), kMainWindow, procedure,
                                  additional));
  if (parts_.values.showErrors)
    parts_.dialogs.ShowErrorWindow(ReportText(failure, procedure, additional));
}

std::string ProgramLog::ReportText(const Failure& failure, std::string_view procedure,
                                   std::string_view additional) const {
  return fmt::format(
      "{}.{}.{} - {}.{}.{}\r\n"
      "At {}\r\n"
      "Error # {}\r\n"
      "{}\r\n"
      "{}\r\n"
      "\r\n"
      "\r\n"
      "Please email this error to {} for assistance.\r\n"
      "Additional Information: \r\n"
      "{}",
      failure.source(), kMainWindow, procedure, kVersionMajor, kVersionMinor, kVersionBuild,
      FormatGeneral(parts_.clock.Now()), failure.number(), failure.text(), kNoReference,
      kSupportAddress, additional);
}

}  // namespace ostrel
