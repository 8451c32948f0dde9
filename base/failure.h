// What a step of the station throws when it cannot do its work. A failure carries what the log line
// needs: a number, a text and the name of the component it arose in. The machine's adapters map the
// system's errors to these numbers; nothing else of errno is seen above them.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

#include "base/about.h"

namespace ostrel {

/// The numbers that the station's own logic tests or that its adapters map the system's errors to.
/// Any other error keeps the system's own number.
namespace failure_number {
inline constexpr std::int32_t kInvalidArgument = 5;
inline constexpr std::int32_t kOverflow = 6;
inline constexpr std::int32_t kTypeMismatch = 13;
inline constexpr std::int32_t kFileNotFound = 53;
inline constexpr std::int32_t kDeviceError = 57;
inline constexpr std::int32_t kDiskFull = 61;
inline constexpr std::int32_t kDeviceUnavailable = 68;
inline constexpr std::int32_t kPermissionDenied = 70;
inline constexpr std::int32_t kPathAccess = 75;
inline constexpr std::int32_t kPathNotFound = 76;
inline constexpr std::int32_t kInvalidProperty = 380;
}  // namespace failure_number

class Failure : public std::exception {
 public:
  /// `source` is the component that fails.
  Failure(std::int32_t number, std::string text, std::string source = kProgramName)
      : number_(number), text_(std::move(text)), source_(std::move(source)) {}

  std::int32_t number() const { return number_; }
  const std::string& text() const { return text_; }
  /// The component the failure arose in: the program's name, or "CopyFile" for a failed copy.
  const std::string& source() const { return source_; }
  const char* what() const noexcept override { return text_.c_str(); }

  /// True when there is no such file, be it that its folder is gone.
  bool IsMissing() const {
    return number_ == failure_number::kFileNotFound || number_ == failure_number::kPathNotFound;
  }

  /// True for the two numbers that mean "another process holds the file": worth another try.
  bool IsInUse() const {
    return number_ == failure_number::kPermissionDenied || number_ == failure_number::kPathAccess;
  }

 private:
  std::int32_t number_;
  std::string text_;
  std::string source_;
};

/// Thrown out of a wait when the program is asked to end. It is no failure: nothing reports it, and
/// nothing but the shutdown touches the port after it. Deliberately not a std::exception, so that
/// no handler of failures takes it for one.
struct StopRequested {};

}  // namespace ostrel
