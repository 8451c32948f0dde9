#include "platform/linux/linux_files.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/names.h"
#include "platform/linux/exclusive_test.h"
#include "platform/linux/temporary_file.h"
#include "platform/virtual/virtual_clock.h"
#include "tests/support/failure_of.h"
#include "tests/support/temp_folder.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class LinuxFilesTest : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return folder_ / name; }
  /// Everything in the folder, hidden files included.
  std::vector<std::string> Entries(const std::string& folder) const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
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
  EXPECT_TRUE(files_.ListFiles(Path("none")).empty());
  files_.CreateFolder(Path("in"));
  files_.CreateFolder(Path("in/folder"));
  fs::create_symlink("folder", Path("in/to-folder"));
  fs::create_symlink("nowhere", Path("in/dangling"));
  mkfifo(Path("in/pipe").c_str(), 0600);
  for (int i = 0; i < 40; ++i) files_.WriteAll(Path("in/.hidden" + std::to_string(i)), "");
  EXPECT_EQ(files_.FirstFile(Path("in")), std::nullopt);

  const std::string longest(255, 'n');
  files_.WriteAll(Path("in/" + longest), "x");
  EXPECT_EQ(files_.FirstFile(Path("in")), longest);
  fs::create_symlink(longest, Path("in/to-file"));
  auto names = files_.ListFiles(Path("in"));
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{longest, "to-file"}));
  EXPECT_EQ(FailureOf([&] { files_.FirstFile(Path("in/to-file")); }), 75);
}

TEST_F(LinuxFilesTest, TellsAFileThatAnotherProcessHoldsOpen) {
  files_.WriteAll(Path("product"), "x");
  for (const int mode : {O_RDONLY, O_WRONLY}) {
    int ready[2], done[2];
    ASSERT_EQ(pipe(ready) | pipe(done), 0);
    const pid_t holder = fork();
    char byte = 0;
    if (holder == 0) {
      open(Path("product").c_str(), mode);
      const bool told = write(ready[1], &byte, 1) == 1 && read(done[0], &byte, 1) == 1;
      _exit(told ? 0 : 1);
    }
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    EXPECT_EQ(FailureOf([&] { files_.TestExclusive(Path("product")); }), 70);
    EXPECT_EQ(write(done[1], &byte, 1), 1);
    waitpid(holder, nullptr, 0);
    EXPECT_EQ(FailureOf([&] { files_.TestExclusive(Path("product")); }), 0);
    for (const int end : {ready[0], ready[1], done[0], done[1]}) close(end);
  }
  EXPECT_EQ(FailureOf([&] { files_.TestExclusive(Path("gone")); }), 53);
}

TEST_F(LinuxFilesTest, GoesByLocksAndTheLastWriteWhereThereAreNoLeases) {
  // The system gives no lease on a folder, as it gives none on another owner's file.
  const Descriptor file(open(folder_.path().c_str(), O_RDONLY));
  const UtcTime written = files_.LastWriteTime(folder_.path());
  EXPECT_FALSE(IsHeldAlone(file.Get(), written + 1999ms));
  EXPECT_TRUE(IsHeldAlone(file.Get(), written + 2000ms));
  EXPECT_TRUE(IsHeldAlone(file.Get(), written - 1h));  // a stamp of a clock gone wrong
  const Descriptor other(open(folder_.path().c_str(), O_RDONLY));
  flock(other.Get(), LOCK_SH);
  EXPECT_FALSE(IsHeldAlone(file.Get(), written + 1h));
}

TEST_F(LinuxFilesTest, CopiesWholeUnderTheStationsTime) {
  std::string content(200'000, 'c');
  content += '\0';
  files_.WriteAll(Path("source"), content);
  files_.SetLastWriteTime(Path("source"), clock_.UtcNow() - 100h);
  const std::string longest = Path(std::string(255, 'D'));
  files_.WriteAll(longest, "old");
  const Descriptor reader(open(longest.c_str(), O_RDONLY));
  EXPECT_EQ(files_.Copy(Path("source"), longest), copy_code::kDone);
  EXPECT_EQ(files_.ReadAll(longest), content);
  EXPECT_EQ(files_.LastWriteTime(longest), clock_.UtcNow());
  char old[4] = {};
  EXPECT_EQ(read(reader.Get(), old, 4), 3);  // who was reading sees no half of the new one
  EXPECT_EQ(Entries(folder_.path()).size(), 2u);
}

TEST_F(LinuxFilesTest, AFailedCopyHasItsCodeAndLeavesNothing) {
  files_.WriteAll(Path("source"), "new");
  files_.CreateFolder(Path("sub"));
  files_.WriteAll(Path("sub/kept"), "old");
  files_.CreateFolder(Path("sub/folder"));
  const struct {
    std::string source, destination;
    int code;
  } rows[] = {{"none", "sub/x", copy_code::kFileNotFound},
              {"source", "none/x", copy_code::kPathNotFound},
              {"source", "source/x", copy_code::kPathNotFound},
              {"sub", "sub/x", copy_code::kAccessDenied},
              {"source", "sub/folder", copy_code::kAccessDenied},
              {"source", "sub/" + std::string(256, 'n'), copy_code::kNameTooLong}};
  for (const auto& row : rows) {
    EXPECT_EQ(files_.Copy(Path(row.source), Path(row.destination)), row.code) << row.destination;
    EXPECT_FALSE(CopyCodeText(row.code).empty());
  }
  EXPECT_EQ(Entries(Path("sub")), (std::vector<std::string>{"folder", "kept"}));
  EXPECT_EQ(CopyCodeText(5), "Access is denied.");
  EXPECT_EQ(CopyCodeText(4711), "");
}

/// Gives this process mounts of its own, as the ordinary user that it may be.
bool TakeOwnMounts() {
  const auto user = getuid(), group = getgid();
  if (unshare(CLONE_NEWNS) != 0) {
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
    std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
  }
  return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

/// Runs `step` with a disk of 64 KiB at `mountPoint`, in a process of its own. Returns its result,
/// nothing where the system does not let us mount.
std::optional<int> OnSmallDisk(const std::string& mountPoint, const std::function<int()>& step) {
  constexpr int kNoMount = 100, kThrown = 101;
  const pid_t child = fork();
  if (child == 0) {
    if (!TakeOwnMounts() || mount("none", mountPoint.c_str(), "tmpfs", 0, "size=64k") != 0) {
      _exit(kNoMount);
    }
    try {
      _exit(step());
    } catch (...) {
      _exit(kThrown);
    }
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (WEXITSTATUS(status) == kNoMount) return std::nullopt;
  return WEXITSTATUS(status);
}

TEST_F(LinuxFilesTest, AFullDiskLeavesWhatWasThere) {
  files_.WriteAll(Path("big"), std::string(200'000, 'b'));
  files_.CreateFolder(Path("disk"));
  const auto result = OnSmallDisk(Path("disk"), [&] {
    files_.WriteAll(Path("disk/kept"), "old");
    files_.Append(Path("disk/log"), "line\n");
    if (files_.Copy(Path("big"), Path("disk/kept")) != copy_code::kDiskFull) return 1;
    const std::string big = files_.ReadAll(Path("big"));
    if (FailureOf([&] { files_.WriteAll(Path("disk/kept"), big); }) != 61) return 2;
    if (FailureOf([&] { files_.Append(Path("disk/log"), big); }) != 61) return 3;
    if (files_.ReadAll(Path("disk/log")) != "line\n") return 4;
    if (files_.ReadAll(Path("disk/kept")) != "old") return 5;
    return Entries(Path("disk")).size() == 2 ? 0 : 6;
  });
  if (!result) GTEST_SKIP() << "no right to mount a small disk";
  EXPECT_EQ(result, 0);
}

TEST_F(LinuxFilesTest, FailsWithTheNumbersThatTheStationKnows) {
  files_.WriteAll(Path("file"), "x");
  files_.CreateFolder(Path("folder"));
  files_.WriteAll(Path("folder/inside"), "x");
  std::array<char, 8> block;
  const struct {
    const char* what;
    int number;
    std::function<void()> step;
  } rows[] = {
      {"missing file", 53, [&] { files_.Size(Path("none")); }},
      {"missing file", 53, [&] { files_.LastWriteTime(Path("none")); }},
      {"missing file", 53, [&] { files_.SetLastWriteTime(Path("none"), clock_.UtcNow()); }},
      {"missing file", 53, [&] { files_.Delete(Path("none")); }},
      {"missing file", 53, [&] { files_.Rename(Path("none"), Path("folder/x")); }},
      {"missing file", 53, [&] { files_.Link(Path("none"), Path("folder/x")); }},
      {"missing file", 53, [&] { files_.ReadBlock(Path("none"), 0, block); }},
      {"missing folder", 76, [&] { files_.ReadAll(Path("none/x")); }},
      {"missing folder", 76, [&] { files_.WriteAll(Path("none/x"), ""); }},
      {"missing folder", 76, [&] { files_.Append(Path("none/x"), ""); }},
      {"missing folder", 76, [&] { files_.Rename(Path("file"), Path("none/x")); }},
      {"missing folder", 76, [&] { files_.Link(Path("file"), Path("none/x")); }},
      {"missing folder", 76, [&] { files_.CreateFolder(Path("none/x")); }},
      {"a folder is no file", 75, [&] { files_.Delete(Path("folder")); }},
      {"a folder is no file", 75, [&] { files_.ReadAll(Path("folder")); }},
      {"a folder is no file", 75, [&] { files_.WriteAll(Path("folder"), ""); }},
      {"a folder is no file", 75, [&] { files_.Append(Path("folder"), ""); }},
      {"a file is no folder", 75, [&] { files_.CreateFolder(Path("file/x")); }},
      {"exists", 75, [&] { files_.CreateFolder(Path("folder")); }},
      {"disk full", 61, [&] { files_.Append("/dev/full", "x"); }},
      {"the system's own", ENAMETOOLONG, [&] { files_.Delete(Path(std::string(256, 'n'))); }},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(FailureOf(row.step), row.number) << row.what << ", row " << &row - rows;
  }
  EXPECT_EQ(Entries(folder_.path()), (std::vector<std::string>{"file", "folder"}));
  EXPECT_EQ(Entries(Path("folder")), std::vector<std::string>{"inside"});
}

TEST_F(LinuxFilesTest, LinksOneFileUnderTwoNames) {
  files_.WriteAll(Path("a"), "new");
  files_.WriteAll(Path("b"), "old");
  for (int again = 0; again < 2; ++again) {
    files_.Link(Path("a"), Path("b"));
    EXPECT_TRUE(fs::equivalent(Path("a"), Path("b")));
  }
  EXPECT_EQ(Entries(folder_.path()), (std::vector<std::string>{"a", "b"}));
  fs::create_symlink("nowhere", Path("dangling"));
  EXPECT_TRUE(files_.Exists(Path("dangling")));
}

TEST_F(LinuxFilesTest, RemovesOnlyTheTemporaryFilesThatNobodyWorksOn) {
  files_.RemoveTemporaries(Path("none"));
  TemporaryFile atWork(folder_.path());
  files_.WriteAll(Path(".ostrel-1-1.part"), "of a crash");
  for (const char* name : {".ostrel.lock", ".keep", "x.part", ".ostrel-x"}) {
    files_.WriteAll(Path(name), "");
  }
  files_.RemoveTemporaries(folder_.path());
  EXPECT_EQ(Entries(folder_.path()).size(), 5u);
  EXPECT_FALSE(files_.Exists(Path(".ostrel-1-1.part")));
  EXPECT_EQ(atWork.Commit(Path("done"), clock_.UtcNow()), 0);
}

TEST_F(LinuxFilesTest, FindsAPathInWhateverCaseItStands) {
  files_.CreateFolder(Path("KvData"));
  files_.WriteAll(Path("KvData/File.TXT"), "");
  EXPECT_EQ(files_.ActualPath(Path("kvdata/file.txt")), Path("KvData/File.TXT"));
  EXPECT_EQ(files_.ActualPath(Path("kvdata//none/File.txt")), Path("KvData//none/File.txt"));
  files_.WriteAll(Path("KvData/file.txt"), "");
  EXPECT_EQ(files_.ActualPath(Path("KVDATA/file.txt")), Path("KvData/file.txt"));
}

TEST_F(LinuxFilesTest, ReadsBlocksAndAppends) {
  files_.Append(Path("f"), "0123");
  files_.Append(Path("f"), "456789");
  std::array<char, 4> block;
  EXPECT_EQ(files_.ReadBlock(Path("f"), 8, block), 2u);
  EXPECT_EQ(std::string(block.data(), 2), "89");
  EXPECT_EQ(files_.ReadBlock(Path("f"), 11, block), 0u);
  EXPECT_EQ(files_.ReadAll(Path("f")), "0123456789");
  chmod(Path("f").c_str(), 0640);
  files_.WriteAll(Path("f"), "");
  struct stat status;
  stat(Path("f").c_str(), &status);
  EXPECT_EQ(status.st_mode & 0777u, 0640u);
}

}  // namespace
}  // namespace ostrel
