#include "config/program_log.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

#include "platform/linux/linux_files.h"
#include "platform/virtual/virtual_clock.h"
#include "platform/virtual/virtual_desk.h"
#include "tests/support/forwarding_files.h"
#include "tests/support/temp_folder.h"

namespace ostrel {
namespace {

namespace chr = std::chrono;
using namespace std::chrono_literals;

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
    std::ifstream file(folder.path() + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  TempFolder folder;
  VirtualClock clock{chr::sys_days(chr::year(2026) / 11 / 18) + 16h + 29min + 18s};
  LinuxFiles real{clock};
  HeldFiles files{real};
  VirtualDialogs dialogs;
  ostrel::Setup setup;
  ProgramValues values;
  ProgramLog log{{files, clock, dialogs, setup, values}};
};

TEST_F(ProgramLogTest, LinesStandInColumnsUnlessTheCategoryIsLonger) {
  log.WriteLog("Stats", "five");
  log.WriteLog("CheckForNewPriFiles", "nineteen");
  EXPECT_EQ(Read("RtLog.txt"),
            "11/18/26 16:29:18 Stats        five\r\n"
            "11/18/26 16:29:18 CheckForNewPriFiles nineteen\r\n");
}

TEST_F(ProgramLogTest, MovesAsideWhatIsOneByteTooLarge) {
  constexpr int kLine = 31 + 4 + 2;
  values.logSize = 2 * kLine;
  const auto write = [this](std::string_view message) { log.WriteLog("Test", message); };
  write("aaaa");
  write("bbbb");
  EXPECT_FALSE(real.Exists(folder.path() + "/RtLog.old"));
  write("c");
  EXPECT_FALSE(real.Exists(folder.path() + "/RtLog.txt"));
  EXPECT_TRUE(Read("RtLog.old")
                  .ends_with("aaaa\r\n11/18/26 16:29:18 Test         bbbb\r\n"
                             "11/18/26 16:29:18 Test         c\r\n"));
  setup.chkLogDaily.Set(Check::kChecked);
  for (int i = 0; i < 5; ++i) write("ffff");
  EXPECT_EQ(Read("RtLog.txt").size(), 5U * kLine);
  EXPECT_TRUE(Read("RtLog.old").ends_with("c\r\n"));
}

TEST_F(ProgramLogTest, WaitsForAHeldFileAndGivesUpAloud) {
  struct {
    const char* step;
    std::int32_t number;
    milliseconds heldFor;
    milliseconds waited;
    const char* error;  // none: the line is there
  } const rows[] = {
      {"append", 70, 1990ms, 1990ms, nullptr},  // the last of the 199 retries
      {"append", 70, 1991ms, 1990ms, "Log File Error: 70 held\r\n"},
      {"append", 61, 1h, 0ms, "Log File Error: 61 held\r\n"},
      {"size", 70, 1h, 1990ms, "Log File Error: 70 held\r\n"},
      {"both", 70, 1990ms + 1990ms, 3980ms, nullptr},  // each stretch has its own retries
  };
  for (const auto& row : rows) {
    dialogs.errors.clear();
    const auto began = clock.Monotonic();
    files.fault = [&](std::string_view step) {
      const auto held = step == "append" && *row.step == 'b' ? row.heldFor / 2 : row.heldFor;
      if ((*row.step == 'b' || step == row.step) && clock.Monotonic() - began < held)
        throw Failure(row.number, "held");
    };
    const auto line = LogLine(clock.Now(), "Test", row.step);
    const auto before = Read("RtLog.txt");
    log.WriteLog("Test", row.step);
    EXPECT_EQ(clock.Monotonic() - began, row.waited) << row.step << row.heldFor.count();
    EXPECT_EQ(dialogs.errors,
              row.error ? std::vector<std::string>{row.error} : std::vector<std::string>{});
    const bool isLost = row.error && *row.step == 'a';
    EXPECT_EQ(Read("RtLog.txt"), before + (isLost ? "" : line));
  }
  clock.stopRequested = true;
  files.fault = [](std::string_view) { throw Failure(70, "held"); };
  EXPECT_NO_THROW(log.WriteLog("Test", "the program ends while the log is held"));
}

TEST_F(ProgramLogTest, AFailureHasOneLineAndOnlyWhenWantedAWindow) {
  const Failure failure(53, "File not found");
  log.ReportError(failure, "Timer", "");
  EXPECT_TRUE(dialogs.errors.empty());
  values.showErrors = true;
  log.ReportError(failure, "MakePacket", " File Name: /x/A.TXT");
  EXPECT_EQ(Read("RtLog.txt"),
            "11/18/26 16:29:18 Timer        Error # 53, File not found, occurred at reference "
            "(unspecified), in Ostrel.frmMain.Timer \r\n"
            "11/18/26 16:29:18 MakePacket   Error # 53, File not found, occurred at reference "
            "(unspecified), in Ostrel.frmMain.MakePacket  File Name: /x/A.TXT\r\n");
  ASSERT_EQ(dialogs.errors.size(), 1U);
  EXPECT_EQ(dialogs.errors[0],
            "Ostrel.frmMain.MakePacket - 3.0.0\r\n"
            "At 11/18/2026 4:29:18 PM\r\n"
            "Error # 53\r\n"
            "File not found\r\n"
            "occurred at reference (unspecified)\r\n\r\n\r\n"
            "Please email this error to support@corvain.example for assistance.\r\n"
            "Additional Information: \r\n"
            " File Name: /x/A.TXT");
}

}  // namespace
}  // namespace ostrel
