// The folder in which received products are laid down, each whole or not at all.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace ostrel {

class ProductStore {
 public:
  /// Makes the folder when it is missing; throws std::filesystem::filesystem_error.
  explicit ProductStore(std::filesystem::path folder);

  /// Stores a product under `name`, or `name`.1, .2 ... where that is taken, and returns the name
  /// it got. Throws std::runtime_error when the disk refuses.
  std::string Store(const std::string& name, std::string_view data);

 private:
  std::filesystem::path folder_;
};

}  // namespace ostrel
