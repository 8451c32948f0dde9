#include "platform/linux/linux_files.h"

#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "platform/linux/held_alone.h"
#include "platform/linux/system_error.h"
#include "platform/linux/temporary_file.h"
#include "platform/linux/temporary_folder.h"
#include "platform/virtual/virtual_clock.h"
#include "tests/support/failure_of.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Names = std::set<std::string>;

class LinuxFilesTest : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return folder_ / name; }
  /// Everything in the folder, hidden files included.
  Names Entries() const {
    Names names;
    for (const auto& entry : fs::directory_iterator(folder_.path()))
      names.insert(entry.path().filename());
    return names;
  }

  TemporaryFolder folder_;
  VirtualClock clock_{std::chrono::sys_days(std::chrono::year(2031) / 5 / 6) + 7h + 8ms};
  LinuxFiles files_{clock_};
};

TEST_F(LinuxFilesTest, ListsRegularFilesAndLinksToThemAlone) {
  EXPECT_EQ(files_.FirstFile(Path("none")), std::nullopt);
  files_.CreateFolder(Path("folder"));
  fs::create_symlink("folder", Path("to-folder"));
  fs::create_symlink("nowhere", Path("dangling"));
  mkfifo(Path("pipe").c_str(), 0600);
  files_.WriteAll(Path(".hidden"), "");
  EXPECT_EQ(files_.FirstFile(folder_.path()), std::nullopt);
  fs::create_symlink(".hidden", Path("to-file"));
  EXPECT_EQ(files_.FirstFile(folder_.path()), "to-file");
  EXPECT_EQ(files_.ListFiles(folder_.path()), std::vector<std::string>{"to-file"});
}

TEST_F(LinuxFilesTest, TellsAFileThatSomebodyHoldsOpen) {
  files_.WriteAll(Path("product"), "x");
  const auto test = [&] { return FailureOf([&] { files_.TestExclusive(Path("product")); }); };
  Descriptor holder(open(Path("product").c_str(), O_RDONLY));
  EXPECT_EQ(test(), 70);
  holder.Reset();
  EXPECT_EQ(test(), 0);
}

TEST_F(LinuxFilesTest, GoesByLocksAndTheLastWriteWhereThereAreNoLeases) {
  // The system gives no lease on a folder, as it gives none on another owner's file.
  const Descriptor file(open(folder_.path().c_str(), O_RDONLY));
  const UtcTime written = files_.Status(folder_.path()).written;
  EXPECT_FALSE(IsHeldAlone(file.Get(), written + 1999ms));
  EXPECT_TRUE(IsHeldAlone(file.Get(), written + 2000ms));
  EXPECT_TRUE(IsHeldAlone(file.Get(), written - 1h));  // a stamp of a clock gone wrong
  const Descriptor other(open(folder_.path().c_str(), O_RDONLY));
  flock(other.Get(), LOCK_SH);
  EXPECT_FALSE(IsHeldAlone(file.Get(), written + 1h));
}

TEST_F(LinuxFilesTest, CopiesWholeUnderTheStationsTime) {
  const std::string content(200'001, '\0'), copy = Path("copy");
  files_.WriteAll(Path("source"), content);
  files_.WriteAll(copy, "old");
  const Descriptor reader(open(copy.c_str(), O_RDONLY));
  EXPECT_EQ(files_.Copy(Path("source"), copy), copy_code::kDone);
  EXPECT_EQ(files_.ReadAll(copy), content);
  EXPECT_EQ(files_.Status(copy).written, clock_.UtcNow());
  char old[4] = {};
  EXPECT_EQ(read(reader.Get(), old, 4), 3);  // who was reading sees no half of the new one
  EXPECT_EQ(Entries().size(), 2u);
}

TEST_F(LinuxFilesTest, EndsLongWorkWhenTheProgramIsToEnd) {
  files_.WriteAll(Path("source"), std::string(200'001, 'x'));
  clock_.stopRequested = true;
  EXPECT_THROW(files_.Copy(Path("source"), Path("copy")), StopRequested);
  EXPECT_THROW(files_.WriteAll(Path("member"), "x"), StopRequested);
  EXPECT_EQ(Entries(), Names{"source"});
}

TEST_F(LinuxFilesTest, WhatFindsNoRoomLeavesWhatWasThere) {
  const std::string big(200'000, 'b');
  files_.WriteAll(Path("big"), big);
  files_.WriteAll(Path("kept"), "old");
  signal(SIGXFSZ, SIG_IGN);
  rlimit room;
  getrlimit(RLIMIT_FSIZE, &room);
  const rlimit small = {64 * 1024, room.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);  // ends a write in the middle, as a full disk does
  EXPECT_EQ(files_.Copy(Path("big"), Path("kept")), EFBIG);
  EXPECT_EQ(FailureOf([&] { files_.WriteAll(Path("kept"), big); }), EFBIG);
  EXPECT_EQ(FailureOf([&] { files_.Append(Path("kept"), big); }), EFBIG);
  setrlimit(RLIMIT_FSIZE, &room);
  EXPECT_EQ(FailureOf([&] { files_.Append("/dev/full", "x"); }), 61);
  EXPECT_EQ(DestinationCopyCode(ENOSPC), copy_code::kDiskFull);
  EXPECT_EQ(files_.ReadAll(Path("kept")), "old");
  EXPECT_EQ(Entries(), (Names{"big", "kept"}));
}

TEST_F(LinuxFilesTest, FailsWithTheNumbersThatTheStationKnows) {
  files_.WriteAll(Path("file"), "x");
  files_.CreateFolder(Path("folder"));
  EXPECT_EQ(FailureOf([&] { files_.Rename(Path("none"), Path("folder/x")); }), 53);
  EXPECT_EQ(FailureOf([&] { files_.Rename(Path("file"), Path("none/x")); }), 76);
  EXPECT_EQ(FailureOf([&] { files_.ReadAll(Path("folder")); }), 75);
  EXPECT_EQ(files_.Copy(Path("none"), Path("folder/x")), copy_code::kFileNotFound);
  EXPECT_EQ(files_.Copy(Path("file"), Path("none/x")), copy_code::kPathNotFound);
  EXPECT_EQ(files_.Copy(Path("file"), Path("folder")), copy_code::kAccessDenied);
  EXPECT_EQ(Entries(), (Names{"file", "folder"}));
}

TEST_F(LinuxFilesTest, RemovesOnlyTheTemporaryFilesThatNobodyWorksOn) {
  TemporaryFile atWork(folder_.path());
  for (const char* name : {".ostrel-1-1.part", ".ostrel.lock", "x.part"}) {
    files_.WriteAll(Path(name), "");
  }
  files_.RemoveTemporaries(folder_.path());
  EXPECT_EQ(atWork.Commit(Path("done"), clock_.UtcNow()), 0);
  EXPECT_EQ(Entries(), (Names{".ostrel.lock", "done", "x.part"}));
}

TEST_F(LinuxFilesTest, FinishesWhatWasCutOffWhileItWasWrittenOverAFile) {
  files_.WriteAll(Path("list"), "old, and longer");
  files_.WriteAll(Path(".ostrel-whole-list"), "new");
  fs::create_hard_link(Path("list"), Path(".ostrel-whole-second"));  // no content made for a file
  files_.WriteAll(Path("second"), "kept");
  files_.RemoveTemporaries(folder_.path());
  EXPECT_EQ(files_.ReadAll(Path("list")), "new");
  EXPECT_EQ(files_.ReadAll(Path("second")), "kept");
  EXPECT_EQ(Entries(), (Names{"list", "second"}));
}

TEST_F(LinuxFilesTest, AppendsToNothingThatALinkLeadsTo) {
  files_.WriteAll(Path("elsewhere"), "private");
  fs::create_symlink("elsewhere", Path("log"));
  files_.Append(Path("log"), "line");
  EXPECT_EQ(files_.ReadAll(Path("elsewhere")) + files_.ReadAll(Path("log")), "privateline");
}

TEST_F(LinuxFilesTest, TakesNamesAndModesAsTheyAre) {
  const std::string lower = Path("file.txt"), upper = Path("FILE.TXT");
  files_.WriteAll(lower, "");
  files_.WriteAll(upper, "");
  EXPECT_EQ(files_.ActualPath(lower), lower);
  EXPECT_EQ(files_.ActualPath(upper), upper);
  chmod(lower.c_str(), 0640);
  files_.WriteAll(lower, "");
  EXPECT_EQ(fs::status(lower).permissions(), fs::perms{0640});
}

}  // namespace
}  // namespace ostrel
