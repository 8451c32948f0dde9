#include "intake/file_copy.h"

#include <fmt/format.h>

#include "base/reporting.h"

namespace ostrel {

namespace {

constexpr int kAttempts = 20;
constexpr milliseconds kWait{100};
constexpr std::int32_t kApplicationErrorBase = -2147221504;  // 0x80040000
constexpr std::int32_t kCopyErrors = 1000;

std::int32_t CopyFailureNumber(int code) {
  return kApplicationErrorBase + kCopyErrors + code;
}

/// The code in decimal, a blank, and the system's text for it, if it has one.
std::string SystemErrorText(int code) {
  return fmt::format("{} {}", code, CopyCodeText(code));
}

}  // namespace

/// `step` returns a copy code, and so does this: one of success.
template <typename Step>
int FileCopy::Repeat(Step&& step) {
  int code = copy_code::kInUse;
  for (int attempt = 0; attempt < kAttempts && code == copy_code::kInUse; ++attempt) {
    code = step();
    if (code == copy_code::kInUse) clock_.Sleep(kWait);
  }
  if (code == copy_code::kDone || code == copy_code::kMoved) return code;
  throw Failure(CopyFailureNumber(code), "Copy File Failed: dll error - " + SystemErrorText(code),
                "CopyFile");
}

void FileCopy::CopyFile(const std::string& source, const std::string& destination, Links links,
                        Flush flush) {
  Repeat([&] { return files_.Copy(source, destination, links, flush); });
}

bool FileCopy::PlaceFile(const std::string& source, const std::string& destination) {
  return Repeat([&] { return files_.Place(source, destination); }) == copy_code::kMoved;
}

bool IsDiskFull(const Failure& failure) {
  return failure.number() == failure_number::kDiskFull ||
         failure.number() == CopyFailureNumber(copy_code::kDiskFull);
}

void FileCopy::MoveFile(const std::string& source, const std::string& destination) {
  if (TryStep([&] { files_.Rename(source, destination); })) return;
  const auto written = files_.Status(source).written;
  CopyFile(source, destination);
  try {
    files_.SetLastWriteTime(destination, written);
    files_.Secure(destination, source);
    files_.Delete(source);
  } catch (const std::exception&) {
    TryStep([&] { files_.Delete(destination); });
    throw;
  }
}

}  // namespace ostrel
