#include "platform/linux/linux_files.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <mutex>
#include <poll.h>
#include <set>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/system_error.h"
#include "platform/linux/temporary_file.h"
#include "platform/linux/temporary_folder.h"
#include "platform/virtual/virtual_clock.h"
#include "tests/support/call_shim/call_shim.h"
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

TEST_F(LinuxFilesTest, ListsAndSendsRegularFilesAloneThroughNoLink) {
  EXPECT_EQ(files_.FirstFile(Path("none"), {}), std::nullopt);
  files_.CreateFolder(Path("folder"));
  fs::create_symlink("folder", Path("to-folder"));
  fs::create_symlink("nowhere", Path("dangling"));
  mkfifo(Path("pipe").c_str(), 0600);
  files_.WriteAll(Path(".hidden"), "x");
  fs::create_symlink(".hidden", Path("to-file"));
  EXPECT_EQ(files_.FirstFile(folder_.path(), {}), std::nullopt);
  EXPECT_EQ(files_.ListFiles(folder_.path()), std::vector<std::string>{});
  const auto copy = [&](const char* name, Links links) {
    return files_.Copy(Path(name), Path("copy"), links, Flush::kFirst);
  };
  EXPECT_EQ(copy("pipe", Links::kRefused), copy_code::kAccessDenied);
  EXPECT_EQ(copy("to-file", Links::kRefused), ELOOP);
  std::array<char, 1> block;
  EXPECT_EQ(FailureOf([&] { files_.ReadBlock(Path("to-file"), 0, block); }), ELOOP);
  EXPECT_EQ(copy("to-file", Links::kFollowed), copy_code::kDone);
  EXPECT_EQ(files_.FirstFile(folder_.path(), {}), "copy");
  const auto isCopy = [](const std::string& name) { return name == "copy"; };
  EXPECT_EQ(files_.FirstFile(folder_.path(), isCopy), std::nullopt);
}

TEST_F(LinuxFilesTest, CopiesWholeUnderTheStationsTime) {
  const std::string content(200'001, '\0'), copy = Path("copy");
  files_.WriteAll(Path("source"), content);
  files_.WriteAll(copy, "old");
  const Descriptor reader(open(copy.c_str(), O_RDONLY));
  EXPECT_EQ(files_.Copy(Path("source"), copy, Links::kRefused, Flush::kFirst), copy_code::kDone);
  EXPECT_EQ(files_.ReadAll(copy), content);
  EXPECT_EQ(files_.Status(copy).written, clock_.UtcNow());
  char old[4] = {};
  EXPECT_EQ(read(reader.Get(), old, 4), 3);  // who was reading sees no half of the new one
  EXPECT_EQ(Entries().size(), 2u);
}

TEST_F(LinuxFilesTest, NeverPlacesACopyOfAFileThatChangedMeanwhile) {
  struct BusyClock : VirtualClock {
    using VirtualClock::VirtualClock;
    void Sleep(milliseconds) override { std::ofstream(path, std::ios::app) << "more"; }
    std::string path;
  } clock{clock_.UtcNow()};
  clock.path = Path("source");
  files_.WriteAll(clock.path, "half");
  EXPECT_EQ(LinuxFiles(clock).Copy(clock.path, Path("copy"), Links::kRefused, Flush::kFirst),
            copy_code::kInUse);
  EXPECT_EQ(Entries(), Names{"source"});
}

TEST_F(LinuxFilesTest, EndsLongWorkWhenTheProgramIsToEnd) {
  files_.WriteAll(Path("source"), std::string(200'001, 'x'));
  clock_.stopRequested = true;
  EXPECT_THROW(files_.Copy(Path("source"), Path("copy"), Links::kRefused, Flush::kFirst),
               StopRequested);
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
  EXPECT_EQ(files_.Copy(Path("big"), Path("kept"), Links::kRefused, Flush::kFirst), EFBIG);
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
  EXPECT_EQ(files_.Copy(Path("none"), Path("folder/x"), Links::kRefused, Flush::kFirst),
            copy_code::kFileNotFound);
  EXPECT_EQ(files_.Copy(Path("file"), Path("none/x"), Links::kRefused, Flush::kFirst),
            copy_code::kPathNotFound);
  EXPECT_EQ(files_.Copy(Path("file"), Path("folder"), Links::kRefused, Flush::kFirst),
            copy_code::kAccessDenied);
  EXPECT_EQ(Entries(), (Names{"file", "folder"}));
}

TEST_F(LinuxFilesTest, ReadsATextOfBoundedSizeAndOpensNothingElse) {
  const std::string largest(kLargestText, 'x');
  files_.WriteAll(Path("largest"), largest);
  files_.WriteAll(Path("larger"), largest + "x");
  EXPECT_EQ(files_.ReadAll(Path("largest")), largest);
  EXPECT_EQ(FailureOf([&] { files_.ReadAll(Path("larger")); }), 6);
  const int pseudoTerminal = posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_EQ(unlockpt(pseudoTerminal), 0);
  mkfifo(Path("pipe").c_str(), 0600);
  fs::create_symlink("/dev/zero", Path("zeros"));
  fs::create_symlink(Path("pipe"), Path("to-pipe"));
  fs::create_symlink(ptsname(pseudoTerminal), Path("line"));
  for (const auto* name : {"pipe", "zeros", "to-pipe", "line"})
    EXPECT_EQ(FailureOf([&] { files_.ReadAll(Path(name)); }), 75) << name;
  pollfd line{pseudoTerminal, POLLIN, 0};
  poll(&line, 1, 0);
  EXPECT_FALSE(line.revents & POLLHUP) << "the device was opened, and closed again";
  close(pseudoTerminal);
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

TEST_F(LinuxFilesTest, PlacesAFileByASecondName) {
  files_.WriteAll(Path("source"), "content");
  files_.WriteAll(Path("placed"), "older");
  clock_.Advance(1h);
  ASSERT_EQ(files_.Place(Path("source"), Path("placed")), copy_code::kDone);
  EXPECT_EQ(files_.NameCount(Path("placed")), 2);
  EXPECT_EQ(files_.Status(Path("placed")).written, clock_.UtcNow());
  EXPECT_EQ(files_.Place(Path("source"), Path("placed")), copy_code::kDone) << "once more";
  EXPECT_EQ(files_.Place(Path("source"), Path("none/placed")), copy_code::kPathNotFound);
  EXPECT_EQ(Entries(), (Names{"source", "placed"}));
}

TEST_F(LinuxFilesTest, AFailedLookIsNoAbsence) {
  fs::create_symlink("loop", Path("loop"));
  files_.WriteAll(Path("file"), "");
  EXPECT_EQ(FailureOf([&] { files_.Exists(Path("loop/file")); }), ELOOP);
  for (const auto* absent : {"none", "none/file", "file/below"})
    EXPECT_FALSE(files_.Exists(Path(absent))) << absent;
  EXPECT_FALSE(files_.Exists(Path(std::string(300, 'L'))));
}

TEST_F(LinuxFilesTest, PreparesALargeCopyBesideTheStation) {
  std::string content(3 * 1024 * 1024, 'x');
  files_.WriteAll(Path("large"), content);
  const auto isReady = [&](Means means) {
    return files_.IsReady(Path("large"), folder_.path(), means);
  };
  const auto waitUntilReady = [&](Means means) {
    for (int i = 0; i < 1000 && !isReady(means); ++i) usleep(10'000);
    return isReady(means);
  };
  EXPECT_FALSE(isReady(Means::kCopy)) << "it has just been begun";
  ASSERT_TRUE(waitUntilReady(Means::kCopy));
  content.front() = 'y';
  files_.WriteAll(Path("large"), content);
  EXPECT_FALSE(isReady(Means::kCopy)) << "another version";
  ASSERT_TRUE(waitUntilReady(Means::kCopy));
  EXPECT_EQ(files_.Copy(Path("large"), Path("copy"), Links::kRefused, Flush::kFirst),
            copy_code::kDone);
  std::string copied(content.size(), ' ');
  files_.ReadBlock(Path("copy"), 0, copied);
  EXPECT_TRUE(copied == content);
  EXPECT_TRUE(isReady(Means::kPlace)) << "no byte is written";
  EXPECT_EQ(files_.Place(Path("large"), Path("placed")), copy_code::kDone);
  EXPECT_EQ(files_.NameCount(Path("placed")), 2);
}

TEST_F(LinuxFilesTest, FlushesACopyBeforeItsNameAndWhatMovesBehindIt) {
  files_.WriteAll(Path("product"), "x");
  std::mutex mutex;
  std::string calls;
  const auto callsOf = [&](const std::function<void()>& step) {
    calls.clear();
    call_shim::Watch([&](std::string_view call, std::string_view) {
      const std::lock_guard lock(mutex);
      if (call == "fdatasync" || call == "rename" || call == "syncfs")
        calls.append(call).append(" ");
      return 0;
    });
    step();
    call_shim::Watch({});
    return calls;
  };
  const auto copy = [&](Flush flush) {
    files_.Copy(Path("product"), Path("copy"), Links::kRefused, flush);
  };
  EXPECT_EQ(callsOf([&] { copy(Flush::kFirst); }), "fdatasync rename ");
  EXPECT_EQ(callsOf([&] { copy(Flush::kNever); }), "rename ");
  EXPECT_EQ(callsOf([&] {
              while (!files_.IsReady(Path("product"), folder_.path(), Means::kCopy)) usleep(1000);
              copy(Flush::kFirst);
            }),
            "fdatasync rename ")
      << "prepared";
  EXPECT_EQ(callsOf([&] {
              files_.Place(Path("product"), Path("placed"));
              for (int i = 0; i < 5000; ++i, usleep(1000)) {
                const std::lock_guard lock(mutex);
                if (calls.ends_with("syncfs ")) break;
              }
            }),
            "rename syncfs ");
}

TEST_F(LinuxFilesTest, EndsThoughADiskGivesNoAnswer) {
  std::promise<void> answer;
  std::atomic<bool> isAsked = false, isAnswered = false;
  call_shim::Watch([&, answered = answer.get_future().share()](std::string_view call, auto) {
    if (call != "syncfs") return 0;
    isAsked = true;
    answered.wait();
    isAnswered = true;
    return 0;
  });
  {
    LinuxFiles files(clock_);
    files.WriteAll(Path("product"), "x");
    files.Place(Path("product"), Path("placed"));
    while (!isAsked) usleep(1000);
  }
  EXPECT_FALSE(isAnswered);
  answer.set_value();
  while (!isAnswered) usleep(1000);
  usleep(50'000);  // until the call has left this test
  call_shim::Watch({});
}

}  // namespace
}  // namespace ostrel
