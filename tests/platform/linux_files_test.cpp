#include "platform/linux/linux_files.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "base/names.h"
#include "platform/linux/held_alone.h"
#include "platform/linux/temporary_file.h"
#include "platform/virtual/virtual_clock.h"
#include "tests/support/failure_of.h"
#include "tests/support/temp_folder.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Names = std::vector<std::string>;

class LinuxFilesTest : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return folder_ / name; }
  /// Everything in the folder, hidden files included.
  Names Entries() const {
    Names names;
    for (const auto& entry : fs::directory_iterator(folder_.path())) {
      names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  TempFolder folder_;
  VirtualClock clock_{std::chrono::sys_days(std::chrono::year(2031) / 5 / 6) + 7h + 8ms};
  LinuxFiles files_{clock_};
};

TEST_F(LinuxFilesTest, ListsRegularFilesAndLinksToThemAlone) {
  EXPECT_EQ(files_.FirstFile(Path("none")), std::nullopt);
  files_.CreateFolder(Path("folder"));
  fs::create_symlink("folder", Path("to-folder"));
  fs::create_symlink("nowhere", Path("dangling"));
  mkfifo(Path("pipe").c_str(), 0600);
  for (int i = 0; i < 40; ++i) files_.WriteAll(Path(".hidden" + std::to_string(i)), "");
  EXPECT_EQ(files_.FirstFile(folder_.path()), std::nullopt);
  const std::string longest(255, 'n');
  files_.WriteAll(Path(longest), "x");
  EXPECT_EQ(files_.FirstFile(folder_.path()), longest);
  fs::create_symlink(longest, Path("to-file"));
  EXPECT_EQ(files_.ListFiles(folder_.path()).size(), 2u);
}

TEST_F(LinuxFilesTest, TellsAFileThatSomebodyHoldsOpen) {
  files_.WriteAll(Path("product"), "x");
  for (const int mode : {O_RDONLY, O_WRONLY}) {
    {
      const Descriptor holder(open(Path("product").c_str(), mode));
      EXPECT_EQ(FailureOf([&] { files_.TestExclusive(Path("product")); }), 70);
    }
    EXPECT_EQ(FailureOf([&] { files_.TestExclusive(Path("product")); }), 0);
  }
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
  const std::string content(200'001, '\0');
  files_.WriteAll(Path("source"), content);
  const std::string longest = Path(std::string(255, 'D'));
  files_.WriteAll(longest, "old");
  const Descriptor reader(open(longest.c_str(), O_RDONLY));
  EXPECT_EQ(files_.Copy(Path("source"), longest), copy_code::kDone);
  EXPECT_EQ(files_.ReadAll(longest), content);
  EXPECT_EQ(files_.Status(longest).written, clock_.UtcNow());
  char old[4] = {};
  EXPECT_EQ(read(reader.Get(), old, 4), 3);  // who was reading sees no half of the new one
  EXPECT_EQ(Entries().size(), 2u);
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
  EXPECT_EQ(files_.ReadAll(Path("kept")), "old");
  EXPECT_EQ(Entries(), (Names{"big", "kept"}));
}

TEST_F(LinuxFilesTest, FailsWithTheNumbersThatTheStationKnows) {
  files_.WriteAll(Path("file"), "x");
  files_.CreateFolder(Path("folder"));
  const std::string tooLong = Path(std::string(256, 'n'));
  const struct {
    int number;
    std::function<void()> step;
  } rows[] = {{53, [&] { files_.Status(Path("none")); }},
              {53, [&] { files_.TestExclusive(Path("none")); }},
              {53, [&] { files_.Rename(Path("none"), Path("folder/x")); }},
              {76, [&] { files_.WriteAll(Path("none/x"), ""); }},
              {76, [&] { files_.Rename(Path("file"), Path("none/x")); }},
              {76, [&] { files_.Link(Path("file"), Path("none/x")); }},
              {75, [&] { files_.ReadAll(Path("folder")); }},
              {75, [&] { files_.CreateFolder(Path("folder")); }},
              {ENAMETOOLONG, [&] { files_.Delete(tooLong); }}};
  for (const auto& row : rows) EXPECT_EQ(FailureOf(row.step), row.number) << &row - rows;
  EXPECT_EQ(files_.Copy(Path("none"), Path("folder/x")), copy_code::kFileNotFound);
  EXPECT_EQ(files_.Copy(Path("file"), Path("none/x")), copy_code::kPathNotFound);
  EXPECT_EQ(files_.Copy(Path("folder"), Path("x")), copy_code::kAccessDenied);
  EXPECT_EQ(files_.Copy(Path("file"), Path("folder")), copy_code::kAccessDenied);
  EXPECT_EQ(files_.Copy(Path("file"), tooLong), copy_code::kNameTooLong);
  EXPECT_EQ(Entries(), (Names{"file", "folder"}));
}

TEST_F(LinuxFilesTest, LinksOneFileUnderTwoNames) {
  files_.WriteAll(Path("a"), "new");
  files_.WriteAll(Path("b"), "old");
  for (int again = 0; again < 2; ++again) {
    files_.Link(Path("a"), Path("b"));
    EXPECT_TRUE(fs::equivalent(Path("a"), Path("b")));
  }
  EXPECT_EQ(Entries(), (Names{"a", "b"}));
}

TEST_F(LinuxFilesTest, RemovesOnlyTheTemporaryFilesThatNobodyWorksOn) {
  TemporaryFile atWork(folder_.path());
  for (const char* name : {".ostrel-1-1.part", ".ostrel.lock", "x.part", ".ostrel-x"}) {
    files_.WriteAll(Path(name), "");
  }
  files_.RemoveTemporaries(folder_.path());
  EXPECT_EQ(atWork.Commit(Path("done"), clock_.UtcNow()), 0);
  EXPECT_EQ(Entries(), (Names{".ostrel-x", ".ostrel.lock", "done", "x.part"}));
}

TEST_F(LinuxFilesTest, FindsAPathInWhateverCaseItStands) {
  files_.CreateFolder(Path("KvData"));
  files_.WriteAll(Path("KvData/File.TXT"), "");
  EXPECT_EQ(files_.ActualPath(Path("kvdata/file.txt")), Path("KvData/File.TXT"));
  EXPECT_EQ(files_.ActualPath(Path("kvdata//none/File.txt")), Path("KvData//none/File.txt"));
  files_.WriteAll(Path("KvData/file.txt"), "");
  EXPECT_EQ(files_.ActualPath(Path("KVDATA/file.txt")), Path("KvData/file.txt"));
}

TEST_F(LinuxFilesTest, ReadsBlocksAppendsAndKeepsTheMode) {
  files_.Append(Path("f"), "0123");
  files_.Append(Path("f"), "456789");
  std::array<char, 4> block;
  EXPECT_EQ(files_.ReadBlock(Path("f"), 8, block), 2u);
  EXPECT_EQ(std::string(block.data(), 2), "89");
  EXPECT_EQ(files_.ReadBlock(Path("f"), 11, block), 0u);
  chmod(Path("f").c_str(), 0640);
  files_.WriteAll(Path("f"), "");
  EXPECT_EQ(fs::status(Path("f")).permissions(), fs::perms{0640});
}

}  // namespace
}  // namespace ostrel
