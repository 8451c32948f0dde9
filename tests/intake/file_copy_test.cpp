#include "intake/file_copy.h"

#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

TEST(FileCopy, WaitsOutAFileInUseAndNothingElse) {
  constexpr int kForGood = 1000;
  const struct {
    int failures, code, attempts;
    milliseconds takes;
    const char* text;  // null when the copy succeeds
  } cases[] = {
      {0, 0, 1, 0ms, nullptr},
      {19, 32, 20, 1900ms, nullptr},
      {20, 32, 20, 2000ms,
       "32 The process cannot access the file because it is being used by another process."},
      {kForGood, 2, 1, 0ms, "2 The system cannot find the file specified."},
      {kForGood, 112, 1, 0ms, "112 There is not enough space on the disk."},
      {kForGood, 4711, 1, 0ms, "4711 "},
  };
  for (const auto& [failures, code, attempts, takes, text] : cases) {
    VirtualStation station;
    int made = 0;
    station.files.copyFault = [&](const std::string&, const std::string&) {
      return ++made <= failures ? code : copy_code::kDone;
    };
    auto& clock = station.machine.clock;
    std::string description;
    try {
      FileCopy(station.files, clock).CopyFile(station.Path("FillFile.txt"), station.Path("to"));
    } catch (const Failure& failure) {
      description = failure.text();
      EXPECT_EQ(failure.number(), -2147220504 + code);
      EXPECT_EQ(failure.source(), "CopyFile");
    }
    EXPECT_EQ(description, text ? "Copy File Failed: dll error - " + std::string(text) : "");
    EXPECT_EQ(made, attempts) << code;
    EXPECT_EQ(clock.Monotonic(), takes) << code;
  }
}

}  // namespace
}  // namespace ostrel
