// The files of the holding folders by product, for the intake, which takes the oldest of each. A
// folder may hold tens of thousands: it is listed when a file turns up that its last listing did
// not have, and not at each call.
#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/files.h"

namespace ostrel {

class HeldProducts {
 public:
  explicit HeldProducts(Files& files) : files_(files) {}

  /// The files of the product of `file`, which is one of them. Others may be gone by now; what has
  /// come since is newer. Throws Failure.
  const std::vector<std::string>& FilesLike(const std::string& folder, const std::string& file);
  /// `file` is taken: one of its name is another one from now on.
  void Forget(const std::string& folder, const std::string& file);

 private:
  using Listing = std::unordered_map<std::string, std::vector<std::string>>;  // by product

  Files& files_;
  std::map<std::string, Listing> listings_;  // by folder
};

}  // namespace ostrel
