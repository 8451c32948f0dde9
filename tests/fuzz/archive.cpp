// Received archives: nothing leaves the folder, nothing hidden appears in it, no bound is passed.
#include <filesystem>

#include "platform/linux/linux_files.h"
#include "platform/linux/temporary_folder.h"
#include "platform/linux/zip_archives.h"
#include "platform/virtual/virtual_clock.h"
#include "tests/fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ostrel;
  namespace fs = std::filesystem;
  static const TemporaryFolder folder;
  static VirtualClock clock{UtcTime{}};
  static LinuxFiles files{clock};
  static ZipArchives archives{files, clock};
  const auto archive = folder / "in.zip", out = folder / "out";
  fs::remove_all(out);
  fs::create_directory(out);
  files.WriteAll(archive, AsText(data, size));

  const ExtractLimits limits = {.bytes = 100'000, .members = 50, .ratio = 100};
  const auto result = archives.Extract(archive, out, limits);
  int members = 0;
  std::int64_t bytes = 0;
  for (const auto& entry : fs::recursive_directory_iterator(out)) {
    Demand(entry.is_regular_file() && !entry.is_symlink(), "only plain files");
    Demand(!entry.path().filename().string().starts_with('.'), "nothing hidden");
    bytes += static_cast<std::int64_t>(entry.file_size());
    ++members;
  }
  Demand(members == std::ssize(result.files) && members <= limits.members,
         "no more members than allowed");
  Demand(bytes <= limits.bytes, "no more bytes than allowed");
  Demand(std::distance(fs::directory_iterator(folder.path()), {}) == 2, "nothing left the folder");
  return 0;
}
