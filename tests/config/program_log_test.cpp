#include "config/program_log.h"

#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

class HeldFiles : public ForwardingFiles {
 public:
  using ForwardingFiles::ForwardingFiles;
  void Append(const std::string& p, std::string_view c) override {
    fault("append");
    real_.Append(p, c);
  }
  FileStatus Status(const std::string& p) override {
    fault("size");
    return real_.Status(p);
  }
  std::function<void(std::string_view step)> fault = [](std::string_view) {};
};

class ProgramLogTest : public testing::Test {
 protected:
  ProgramLogTest() { values.programFolder = folder.path(); }
  std::string Read(const std::string& name) {
    return real.Exists(folder / name) ? real.ReadAll(folder / name) : "";
  }

  TempFolder folder;
  VirtualClock clock{kNoon};
  LinuxFiles real{clock};
  HeldFiles files{real};
  VirtualDialogs dialogs;
  ostrel::Setup setup;
  ProgramValues values;
  ProgramLog log{{files, clock, dialogs, setup, values}};
};

TEST_F(ProgramLogTest, MovesAsideWhatIsOneByteTooLarge) {
  constexpr int kLine = 31 + 4 + 2;
  values.logSize = 2 * kLine;
  const auto write = [this](std::string_view message) { log.WriteLog("Test", message); };
  write("aaaa");
  write("bbbb");
  EXPECT_EQ(Read("RtLog.old"), "");
  write("c");
  EXPECT_EQ(Read("RtLog.txt"), "");
  EXPECT_TRUE(Read("RtLog.old")
                  .ends_with("aaaa\r\n11/18/26 12:00:00 Test         bbbb\r\n"
                             "11/18/26 12:00:00 Test         c\r\n"));
  setup.chkLogDaily.Set(Check::kChecked);
  for (int i = 0; i < 5; ++i) write("ffff");
  EXPECT_EQ(Read("RtLog.txt").size(), 5U * kLine);
}

TEST_F(ProgramLogTest, WaitsForAHeldFileAndGivesUpAloud) {
  const struct {
    const char* step;
    std::int32_t number;
    milliseconds heldFor, waited;
    const char* error;  // none: the line is there
  } rows[] = {
      {"append", 70, 1990ms, 1990ms, nullptr},  // the last of the 199 retries
      {"append", 70, 1991ms, 1990ms, "Log File Error: 70 held\r\n"},
      {"append", 61, 1h, 0ms, "Log File Error: 61 held\r\n"},
      {"size", 70, 1h, 1990ms, "Log File Error: 70 held\r\n"},
      {"both", 70, 1990ms + 1990ms, 3980ms, nullptr},  // each stretch has its own retries
  };
  for (const auto& row : rows) {
    dialogs.errors.clear();
    const auto began = clock.Monotonic();
    const bool isBoth = *row.step == 'b';
    files.fault = [&](std::string_view step) {
      const auto held = step == "append" && isBoth ? row.heldFor / 2 : row.heldFor;
      if ((isBoth || step == row.step) && clock.Monotonic() - began < held)
        throw Failure(row.number, "held");
    };
    const auto expected =
        Read("RtLog.txt") +
        (row.error && *row.step == 'a' ? "" : LogLine(clock.Now(), "Test", row.step));
    log.WriteLog("Test", row.step);
    EXPECT_EQ(clock.Monotonic() - began, row.waited) << row.step << row.heldFor.count();
    EXPECT_EQ(dialogs.errors, row.error ? Lines{row.error} : Lines{});
    EXPECT_EQ(Read("RtLog.txt"), expected);
  }
  clock.stopRequested = true;
  files.fault = [](std::string_view) { throw Failure(70, "held"); };
  EXPECT_NO_THROW(log.WriteLog("Test", "the program ends while the log is held"));
}

TEST_F(ProgramLogTest, AFailureHasOneLineAndOnlyWhenWantedAWindow) {
  const Failure failure(53, "File not found");
  log.ReportError(failure, "CheckForNewPriFiles", "");
  EXPECT_TRUE(dialogs.errors.empty());
  values.showErrors = true;
  log.ReportError(failure, "MakePacket", " File Name: /x/A.TXT");
  EXPECT_EQ(Read("RtLog.txt"),
            "11/18/26 12:00:00 CheckForNewPriFiles Error # 53, File not found, occurred at "
            "reference (unspecified), in Ostrel.frmMain.CheckForNewPriFiles \r\n"
            "11/18/26 12:00:00 MakePacket   Error # 53, File not found, occurred at reference "
            "(unspecified), in Ostrel.frmMain.MakePacket  File Name: /x/A.TXT\r\n");
  EXPECT_EQ(dialogs.errors,
            Lines{"Ostrel.frmMain.MakePacket - 3.0.0\r\n"
                  "At 11/18/2026 12:00:00 PM\r\n"
                  "Error # 53\r\n"
                  "File not found\r\n"
                  "occurred at reference (unspecified)\r\n\r\n\r\n"
                  "Please email this error to support@corvain.example for assistance.\r\n"
                  "Additional Information: \r\n"
                  " File Name: /x/A.TXT"});
}

}  // namespace
}  // namespace ostrel
