// A folder for one test, gone with it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace ostrel {

class TempFolder {
 public:
  /// Below `parent`, by default where the system keeps temporary files.
  explicit TempFolder(
      const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
    auto name = (parent / "ostrel-test-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
    path_ = name;
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

}  // namespace ostrel
