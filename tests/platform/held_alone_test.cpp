// Files that somebody may still be writing, where the system can tell and where it cannot.
#include "platform/linux/held_alone.h"

#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/vfs.h>

#include "platform/linux/linux_files.h"
#include "platform/linux/temporary_folder.h"
#include "platform/virtual/virtual_clock.h"
#include "tests/support/failure_of.h"

namespace {

/// What the system's calls answer in place of the real ones; 0 lets them.
int leaseError = 0;
decltype(statfs::f_type) fileSystem = 0;

}  // namespace

extern "C" int fcntl(int descriptor, int command, ...) {
  va_list arguments;
  va_start(arguments, command);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  static const auto real = reinterpret_cast<decltype(&fcntl)>(dlsym(RTLD_NEXT, "fcntl"));
  if (command != F_SETLEASE || leaseError == 0) return real(descriptor, command, argument);
  errno = leaseError;
  return -1;
}

extern "C" int fstatfs(int descriptor, struct statfs* status) noexcept {
  static const auto real = reinterpret_cast<decltype(&fstatfs)>(dlsym(RTLD_NEXT, "fstatfs"));
  const int result = real(descriptor, status);
  if (fileSystem != 0) status->f_type = fileSystem;
  return result;
}

namespace ostrel {
namespace {

using namespace std::chrono_literals;

class HeldAlone : public testing::Test {
 protected:
  HeldAlone() { files_.WriteAll(path_, "first"); }
  ~HeldAlone() override { leaseError = 0, fileSystem = 0; }

  Descriptor Open(int flags) const { return Descriptor(open(path_.c_str(), flags)); }
  int Test() {
    return FailureOf([&] { files_.HoldAlone(path_, WhenUnknown::kWait); });
  }

  /// As file systems in user space do, whenever the kernel has forgotten a file.
  void GiveAnotherInode(const std::string& path) {
    const auto time = std::filesystem::last_write_time(path);
    std::filesystem::copy(path, path + ".other");
    std::filesystem::last_write_time(path + ".other", time);
    std::filesystem::rename(path + ".other", path);
  }

  TemporaryFolder folder_;
  VirtualClock clock_{std::chrono::sys_days(std::chrono::year(2031) / 5 / 6)};
  LinuxFiles files_{clock_};
  std::string path_ = folder_ / "product";
};

TEST_F(HeldAlone, EndsWhenSomebodyWantsToWriteAndNotByReading) {
  Descriptor holder = Open(O_RDONLY);
  EXPECT_EQ(Test(), 70);
  EXPECT_NO_THROW(files_.HoldAlone(path_, WhenUnknown::kTake)) << "a reader";
  holder = Open(O_WRONLY);
  EXPECT_EQ(FailureOf([&] { files_.HoldAlone(path_, WhenUnknown::kTake); }), 70);
  holder.Reset();
  auto hold = files_.HoldAlone(path_, WhenUnknown::kWait);
  EXPECT_TRUE(Open(O_RDONLY));
  EXPECT_EQ(files_.Copy(path_, folder_ / "copy", Links::kRefused, Flush::kFirst), copy_code::kDone);
  EXPECT_TRUE(hold->Delete());
  files_.WriteAll(path_, "second");
  hold = files_.HoldAlone(path_, WhenUnknown::kWait);
  EXPECT_FALSE(Open(O_WRONLY | O_NONBLOCK));  // would wait
  EXPECT_FALSE(hold->Delete());
  hold.reset();
  hold = files_.HoldAlone(path_, WhenUnknown::kWait);
  files_.WriteAll(path_, "third");
  EXPECT_FALSE(hold->Delete());
  EXPECT_EQ(files_.ReadAll(path_), "third");
  std::filesystem::rename(path_, folder_ / "real");
  std::filesystem::create_symlink("real", path_);
  EXPECT_EQ(Test(), ELOOP);
}

TEST_F(HeldAlone, IsAFileThatStandsUnchangedForTenSecondsWhereLeasesSayNothing) {
  const std::pair<int, decltype(fileSystem)> systems[] = {
      {EACCES, 0},          {EINVAL, 0},           {EAGAIN, NFS_SUPER_MAGIC},
      {EAGAIN, 0xFE534D42}, {0, FUSE_SUPER_MAGIC},  // where the kernel grants a lease
      {0, NFS_SUPER_MAGIC}, {0, 0x12345678}};
  for (const auto& [error, system] : systems) {
    leaseError = error, fileSystem = system;
    // A server's clock runs ahead, and the file grows.
    files_.WriteAll(path_, "growing");
    for (int i = 0; i < 5; ++i) {
      EXPECT_EQ(Test(), 70);
      files_.Append(path_, "more");
      files_.SetLastWriteTime(path_, clock_.UtcNow() + 1h);
      clock_.Advance(9900ms);
    }
    files_.WriteAll(folder_ / "neighbour", "x");
    EXPECT_EQ(Test(), 70);
    clock_.Advance(9999ms);
    EXPECT_EQ(Test(), 70);
    clock_.Advance(1ms);
    GiveAnotherInode(folder_ / "neighbour");
    EXPECT_NO_THROW(files_.HoldAlone(folder_ / "neighbour", WhenUnknown::kWait))
        << "it waited at the same time";
    EXPECT_EQ(files_.Copy(path_, folder_ / "copy", Links::kRefused, Flush::kFirst),
              copy_code::kDone);
    if (system != 0) {
      EXPECT_NO_THROW(files_.HoldAlone(folder_ / "copy", WhenUnknown::kWait)) << "its own";
    }
    auto hold = files_.HoldAlone(path_, WhenUnknown::kWait);
    EXPECT_EQ(Test(), 70) << "locked";
    files_.Append(path_, "late");
    EXPECT_FALSE(hold->Delete());
    EXPECT_TRUE(files_.HoldAlone(folder_ / "neighbour", WhenUnknown::kWait)->Delete());
  }
  for (const long local : {0xEF53L, 0x9123683EL, 0x01021994L, 0x58465342L, 0x794C7630L}) {
    leaseError = 0, fileSystem = local;
    files_.WriteAll(path_, "new");
    EXPECT_EQ(Test(), 0) << "a lease is enough, " << local;
  }
  leaseError = EAGAIN, fileSystem = EXT4_SUPER_MAGIC;
  Test();
  clock_.Advance(1h);
  EXPECT_EQ(Test(), 70) << "open elsewhere, and quiet";
}

}  // namespace
}  // namespace ostrel
