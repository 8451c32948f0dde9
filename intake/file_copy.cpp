#include "intake/file_copy.h"

#include <fmt/format.h>

#include "base/failure.h"

namespace ostrel {

namespace {

constexpr int kAttempts = 20;
constexpr milliseconds kWait{100};
constexpr std::int32_t kApplicationErrorBase = -2147221504;  // 0x80040000
constexpr std::int32_t kCopyErrors = 1000;

/// The code in decimal, a blank, and the system's text for it, if it has one.
std::string SystemErrorText(int code) {
  return fmt::format("{} {}", code, CopyCodeText(code));
}

}  // namespace

void FileCopy::CopyFile(const std::string& source, const std::string& destination) {
  int code = copy_code::kInUse;
  for (int attempt = 0; attempt < kAttempts && code == copy_code::kInUse; ++attempt) {
    code = files_.Copy(source, destination);
    if (code == copy_code::kInUse) clock_.Sleep(kWait);
  }
  if (code == copy_code::kDone) return;
  throw Failure(kApplicationErrorBase + kCopyErrors + code,
                "Copy File Failed: dll error - " + SystemErrorText(code), "CopyFile");
}

}  // namespace ostrel
