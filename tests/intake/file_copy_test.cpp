#include "intake/file_copy.h"

#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

TEST(FileCopy, WaitsOutAFileInUseAndNothingElse) {
  const std::string inUse =
      "32 The process cannot access the file because it is being used by another process.";
  const struct {
    int failures, code, attempts;
    milliseconds takes;
    std::string text;  // none when the copy succeeds
  } cases[] = {{0, 0, 1, 0ms, ""},
               {19, 32, 20, 1900ms, ""},
               {20, 32, 20, 2000ms, inUse},
               {1000, 112, 1, 0ms, "112 There is not enough space on the disk."}};
  for (const auto& [failures, code, attempts, takes, text] : cases) {
    VirtualStation station;
    auto& clock = station.machine.clock;
    int made = 0;
    station.files.copyFault = [&](const std::string&, const std::string&) {
      return ++made <= failures ? code : copy_code::kDone;
    };
    try {
      FileCopy(station.files, clock).CopyFile(station.Path("FillFile.txt"), station.Path("to"));
      EXPECT_EQ(text, "");
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.text(), "Copy File Failed: dll error - " + text);
      EXPECT_EQ(failure.number(), -2147220504 + code);
    }
    EXPECT_EQ(made, attempts) << code;
    EXPECT_EQ(clock.Monotonic(), takes) << code;
  }
}

}  // namespace
}  // namespace ostrel
