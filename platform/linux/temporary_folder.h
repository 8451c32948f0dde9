// A folder for a while: made empty, gone with its object and whatever lies in it then.
#pragma once

#include <filesystem>
#include <string>

namespace ostrel {

/// In memory where the system has such a folder, else where it keeps temporary files: a simulated
/// day writes tens of thousands of files.
std::filesystem::path FastestFolder();

class TemporaryFolder {
 public:
  /// Makes it below `parent`. Throws Failure 75 when it cannot be made.
  explicit TemporaryFolder(const std::filesystem::path& parent = FastestFolder());
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

}  // namespace ostrel
