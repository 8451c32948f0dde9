#include "station/program_log.h"

#include <gtest/gtest.h>

#include "station/unseen_messages.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

class ProgramLogTest : public testing::Test {
 protected:
  ProgramLogTest() { values.programFolder = folder.path(); }
  std::string Read(const std::string& name) {
    return real.Exists(folder / name) ? real.ReadAll(folder / name) : "";
  }

  TemporaryFolder folder;
  VirtualClock clock{kNoon};
  LinuxFiles real{clock};
  FaultyFiles files{real};
  VirtualDialogs dialogs;
  ostrel::SetupFields setup;
  ProgramValues values;
  TransmitStatus status;
  ProgramLog log{{files, clock, dialogs, setup, values, status}};
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
    FaultyFiles::Fault& step;
    std::int32_t number;
    milliseconds heldFor, waited;
    bool isWritten, isComplete;
  } rows[] = {{files.appendFault, 70, 1990ms, 1990ms, true, true},  // the last of the 199 retries
              {files.appendFault, 70, 1991ms, 1990ms, false, false},
              {files.appendFault, 61, 1h, 0ms, false, false},
              {files.statusFault, 70, 1990ms, 1990ms, true, true},
              {files.statusFault, 70, 1h, 1990ms, true, false}};
  for (const auto& [step, number, heldFor, waited, isWritten, isComplete] : rows) {
    SCOPED_TRACE(fmt::format("{} for {} ms", number, heldFor.count()));
    const auto before = Read("RtLog.txt"), early = LogLine(clock.Now(), "Test", "text");
    const auto waitedUntil = clock.Monotonic() + waited;
    step = [&, end = clock.Monotonic() + heldFor, failure = number](const std::string&) {
      if (clock.Monotonic() < end) throw Failure(failure, "held");
    };
    dialogs.errors.clear();
    log.WriteLog("Test", "text");
    step = nullptr;
    EXPECT_EQ(clock.Monotonic(), waitedUntil);
    // Its stamp is the moment of its writing.
    const auto late = LogLine(clock.Now(), "Test", "text");
    const auto& line = &step == &files.appendFault ? late : early;
    EXPECT_EQ(Read("RtLog.txt"), before + (isWritten ? line : ""));
    EXPECT_EQ(dialogs.errors,
              isComplete ? Lines{} : Lines{fmt::format("Log File Error: {} held\r\n", number)});
  }
  clock.stopRequested = true;
  files.appendFault = [](const std::string&) { throw Failure(70, "held"); };
  EXPECT_NO_THROW(log.WriteLog("Test", "the program ends while the log is held"));
}

TEST_F(ProgramLogTest, NobodysNameMakesALineOfItsOwn) {
  log.WriteLog("Test", "X\r\n\x1B[2J\x7F\xC3\xA4");
  log.ReportError(
      Failure(70, "held: /x\ny"), "Timer",
      AdditionalText(std::vector<std::string>{"First. ", " File Name: /x\r\ny", "Last"}));
  EXPECT_EQ(
      Read("RtLog.txt"),
      "11/18/26 12:00:00 Test         X\\x0D\\x0A\\x1B[2J\\x7F\\xC3\\xA4\r\n"
      "11/18/26 12:00:00 Timer        Error # 70, held: /x\\x0Ay, occurred at reference "
      "(unspecified), in Ostrel.frmMain.Timer First. \r\n File Name: /x\\x0D\\x0Ay\r\nLast\r\n");
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

TEST_F(ProgramLogTest, SaysWhatLastsOnceAndThenHowOftenOnceAMinute) {
  UnseenMessages unseen(clock);
  testing::internal::CaptureStderr();
  for (int i = 0; i < 1000; ++i) {
    unseen.ShowReport(fmt::format("lasts\r\nAt {}\r\nof A.TXT", i));
    if (i % 500 == 0) unseen.ShowReport("another one");
    clock.Advance(milliseconds(125));
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "ostrel: lasts At 0 of A.TXT\n"
            "ostrel: another one\n"
            "ostrel: lasts At 480 of A.TXT (and 479 times since the last line)\n"
            "ostrel: another one\n"
            "ostrel: lasts At 960 of A.TXT (and 479 times since the last line)\n");
}

}  // namespace
}  // namespace ostrel
