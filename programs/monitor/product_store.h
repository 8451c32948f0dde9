// The folder in which received products are laid down, each whole or not at all.
#pragma once

#include <filesystem>
#include <map>
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
  // The number each name got last: a fill text that comes back all day is stored without a search.
  std::map<std::string, int> lastNumbers_;
};

}  // namespace ostrel
