#include "intake/held_products.h"

#include <algorithm>

#include "base/names.h"
#include "base/text.h"

namespace ostrel {

namespace {

std::string ProductOf(const std::string& file) {
  return ToUpper(StripExtension(file));
}

}  // namespace

const std::vector<std::string>& HeldProducts::FilesLike(const std::string& folder,
                                                        const std::string& file) {
  auto& listing = listings_[folder];
  const auto& known = listing[ProductOf(file)];
  if (std::find(known.begin(), known.end(), file) != known.end()) return known;
  listing.clear();
  for (const auto& name : files_.ListFiles(folder)) listing[ProductOf(name)].push_back(name);
  return listing[ProductOf(file)];
}

void HeldProducts::Forget(const std::string& folder, const std::string& file) {
  std::erase(listings_[folder][ProductOf(file)], file);
}

}  // namespace ostrel
