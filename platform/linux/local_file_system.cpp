#include "platform/linux/local_file_system.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <linux/magic.h>
#include <sys/vfs.h>

namespace ostrel {
namespace {

// The numbers that a header of Debian 12 does not name; statfs(2) lists them.
constexpr std::uint32_t kXfs = 0x58465342;
constexpr std::uint32_t kJfs = 0x3153464A;
constexpr std::uint32_t kZfs = 0x2FC12FC1;
constexpr std::uint32_t kBcachefs = 0xCA451A4E;
constexpr std::uint32_t kNtfs3 = 0x7366746E;
constexpr std::uint32_t kExfat = 0x2011BAB0;

constexpr std::uint32_t kLocal[] = {
    EXT4_SUPER_MAGIC,  // of ext2 and ext3 too
    BTRFS_SUPER_MAGIC,
    F2FS_SUPER_MAGIC,
    TMPFS_MAGIC,
    RAMFS_MAGIC,
    OVERLAYFS_SUPER_MAGIC,
    REISERFS_SUPER_MAGIC,
    NILFS_SUPER_MAGIC,
    MSDOS_SUPER_MAGIC,
    kXfs,
    kJfs,
    kZfs,
    kBcachefs,
    kNtfs3,
    kExfat,
};

/// 0 for one that cannot be asked.
std::uint32_t KindOf(int descriptor) {
  struct statfs system;
  return fstatfs(descriptor, &system) == 0 ? static_cast<std::uint32_t>(system.f_type) : 0;
}

}  // namespace

bool LiesOnLocalFileSystem(int descriptor) {
  return std::ranges::find(kLocal, KindOf(descriptor)) != std::end(kLocal);
}

bool KnowsSecondNames(int descriptor) {
  const auto kind = KindOf(descriptor);
  return kind != MSDOS_SUPER_MAGIC && kind != kExfat;
}

}  // namespace ostrel
