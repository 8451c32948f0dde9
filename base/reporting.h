// What every part of the station needs of the log: one line, or one reported failure. The log file
// itself and the error window are behind it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/failure.h"

namespace ostrel {

/// What a report adds to its failure: nothing, one line, or several. Names in a line may be
/// anybody's: only the ends between the lines are line ends, whatever a name holds.
class AdditionalText {
 public:
  AdditionalText() = default;
  AdditionalText(std::string line) : lines_{std::move(line)} {}
  AdditionalText(const char* line) : lines_{line} {}
  explicit AdditionalText(std::vector<std::string> lines) : lines_(std::move(lines)) {}

  /// The lines as they are shown, CR LF between them.
  std::string Shown() const;

 private:
  std::vector<std::string> lines_;
};

class Reporting {
 public:
  virtual ~Reporting() = default;

  /// Appends one time-stamped line to the program log, control characters written out. Never throws
  /// a Failure: trouble with the log file is retried and then shown in the error window.
  virtual void WriteLog(std::string_view category, std::string_view message) = 0;

  /// Writes `failure` to the log under the name of `procedure` and, when the operator wants to see
  /// errors, opens the error window.
  virtual void ReportError(const Failure& failure, std::string_view procedure,
                           const AdditionalText& additional = {}) = 0;
};

/// The failure that `error` is, whatever was thrown: a foreign exception becomes one with number 5.
Failure AsFailure(const std::exception& error);

/// What reports say in the place of a statement number: failures carry none.
inline constexpr const char* kNoReference = "occurred at reference (unspecified)";

/// "Error # 53, File not found, occurred at reference (unspecified), in Ostrel".
std::string DescribeFailure(const Failure& failure);

/// Runs one step of `procedure`; a failure of it is reported and the procedure goes on.
/// Returns true when the step did its work.
template <typename Step>
bool RunStep(Reporting& reporting, std::string_view procedure, Step&& step,
             const AdditionalText& additional = {}) {
  try {
    std::forward<Step>(step)();
    return true;
  } catch (const std::exception& error) {
    reporting.ReportError(AsFailure(error), procedure, additional);
    return false;
  }
}

/// Runs a step whose failure means nothing to the caller. Returns true when it did its work.
template <typename Step>
bool TryStep(Step&& step) {
  try {
    std::forward<Step>(step)();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

/// Runs a step whose failure the caller looks at: nothing when it did its work.
template <typename Step>
std::optional<Failure> FailureIn(Step&& step) {
  try {
    std::forward<Step>(step)();
    return std::nullopt;
  } catch (const std::exception& error) {
    return AsFailure(error);
  }
}

/// Runs the step of one part of a work that goes on without it. A failure adds "NAME (reason)" to
/// `failed`. Returns true when the step did its work.
template <typename Step>
bool TryPart(std::vector<std::string>& failed, std::string_view name, Step&& step) {
  try {
    std::forward<Step>(step)();
    return true;
  } catch (const std::exception& error) {
    failed.push_back(std::string(name) + " (" + AsFailure(error).text() + ")");
    return false;
  }
}

}  // namespace ostrel
