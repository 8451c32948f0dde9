#include "intake/file_copy.h"

#include <gtest/gtest.h>

#include "base/failure.h"
#include "platform/linux/linux_files.h"
#include "platform/virtual/virtual_clock.h"
#include "tests/support/forwarding_files.h"

namespace ostrel {
namespace {

/// Copies end in `code` while they are within the first `failures`.
class BusyFiles : public ForwardingFiles {
 public:
  BusyFiles(Files& real, int failing, int with)
      : ForwardingFiles(real), failures(failing), code(with) {}
  int Copy(const std::string&, const std::string&) override {
    return ++attempts <= failures ? code : copy_code::kDone;
  }
  int failures, code, attempts = 0;
};

TEST(FileCopy, WaitsOutAFileInUseAndNothingElse) {
  constexpr int kForGood = 1000;
  const struct {
    int failures, code, attempts;
    milliseconds takes;
    const char* text;  // null when the copy succeeds
  } cases[] = {
      {0, 0, 1, milliseconds(0), nullptr},
      {19, 32, 20, milliseconds(1900), nullptr},
      {20, 32, 20, milliseconds(2000),
       "32 The process cannot access the file because it is being used by another process."},
      {kForGood, 2, 1, milliseconds(0), "2 The system cannot find the file specified."},
      {kForGood, 112, 1, milliseconds(0), "112 There is not enough space on the disk."},
      {kForGood, 4711, 1, milliseconds(0), "4711 "},
  };
  for (const auto& [failures, code, attempts, takes, text] : cases) {
    VirtualClock clock(UtcTime{});
    LinuxFiles real(clock);
    BusyFiles files(real, failures, code);
    std::string description;
    try {
      FileCopy(files, clock).CopyFile("from", "to");
    } catch (const Failure& failure) {
      description = failure.text();
      EXPECT_EQ(failure.number(), -2147220504 + code);
      EXPECT_EQ(failure.source(), "CopyFile");
    }
    EXPECT_EQ(description, text ? "Copy File Failed: dll error - " + std::string(text) : "");
    EXPECT_EQ(files.attempts, attempts) << code;
    EXPECT_EQ(clock.Monotonic(), takes) << code;
  }
}

}  // namespace
}  // namespace ostrel
