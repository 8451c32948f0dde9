#include "station/program_log.h"

#include <fmt/format.h>

#include "base/about.h"
#include "base/text.h"

namespace ostrel {

namespace {

constexpr std::size_t kCategoryWidth = 12;
constexpr int kMostRetries = 199;
constexpr milliseconds kRetryWait{10};

/// What a report names beside its procedure: the routines that the windows share are a module.
const char* ModuleOf(std::string_view procedure) {
  return procedure == "SendMorseId" ? "modGlobal" : "frmMain";
}

std::string LineOf(LocalTime time, std::string_view category, std::string_view text) {
  const auto width = std::max(kCategoryWidth, category.size());
  return fmt::format("{} {} {}{}", FormatLogStamp(time), PadOrCut(category, width), text, kLineEnd);
}

}  // namespace

std::string LogLine(LocalTime time, std::string_view category, std::string_view message) {
  return LineOf(time, category, Printable(message));
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
  Write(category, Printable(message));
}

/// The stamp is that of the moment at which the line is written, however long the log was held.
void ProgramLog::Write(std::string_view category, const std::string& text) {
  retries_ = 0;
  try {
    RunRetried([&] { parts_.files.Append(Path(), LineOf(parts_.clock.Now(), category, text)); });
    retries_ = 0;
    if (!IsChecked(parts_.setup.chkLogDaily)) RotateWhenTooLarge();
  } catch (const std::exception& error) {
    const auto failure = AsFailure(error);
    parts_.dialogs.ShowErrorWindow(
        fmt::format("Log File Error: {} {}\r\n", failure.number(), Printable(failure.text())));
  } catch (const StopRequested&) {
    // The program ends while the log is held by another process: the line is lost, and the caller
    // meets the stop at its own next wait.
  }
}

void ProgramLog::RotateWhenTooLarge() {
  std::int64_t size = 0;
  RunRetried([&] { size = parts_.files.Status(Path()).size; });
  if (size <= parts_.values.logSize) return;
  RunRetried([&] { MoveAside(); });
}

/// Where each account's files are kept from the others, the log of another one can neither be
/// renamed nor replaced; its content can.
void ProgramLog::MoveAside() {
  const auto old = OldLogPath(parts_.values.programFolder);
  if (TryStep([&] { parts_.files.Rename(Path(), old); })) return;
  const int code = parts_.files.Copy(Path(), old, Links::kRefused, Flush::kNever);
  if (code != copy_code::kDone) throw Failure(code, fmt::format("{} {}", CopyCodeText(code), old));
  parts_.files.WriteAll(Path(), "");
}

void ProgramLog::ReportError(const Failure& failure, std::string_view procedure,
                             const AdditionalText& additional) {
  parts_.status.CountError(procedure);
  const auto added = additional.Shown();
  Write(procedure, fmt::format("{}.{}.{} {}", DescribeFailure(failure), ModuleOf(procedure),
                               procedure, added));
  if (parts_.values.showErrors)
    parts_.dialogs.ShowErrorWindow(ReportText(failure, procedure, added));
}

std::string ProgramLog::ReportText(const Failure& failure, std::string_view procedure,
                                   const std::string& additional) const {
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
      Printable(failure.source()), ModuleOf(procedure), procedure, kVersionMajor, kVersionMinor,
      kVersionBuild, FormatGeneral(parts_.clock.Now()), failure.number(), Printable(failure.text()),
      kNoReference, kSupportAddress, additional);
}

}  // namespace ostrel
