#include "platform/linux/temporary_folder.h"

#include <cstdlib>

#include "base/failure.h"

namespace ostrel {

namespace fs = std::filesystem;

fs::path FastestFolder() {
  const fs::path shared = "/dev/shm";
  return fs::exists(shared) ? shared : fs::temp_directory_path();
}

TemporaryFolder::TemporaryFolder(const fs::path& parent) : path_(parent / "ostrel-XXXXXX") {
  if (!mkdtemp(path_.data()))
    throw Failure(failure_number::kPathAccess, "No temporary folder can be made.");
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

}  // namespace ostrel
