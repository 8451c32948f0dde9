#include "profile/port_links.h"

#include <filesystem>
#include <fmt/format.h>

namespace ostrel {

namespace fs = std::filesystem;

std::string PortLink(const std::string& folder, int number) {
  return fmt::format("{}/ports/COM{}", folder, number);
}

std::string LinkedDevice(const std::string& link) {
  std::error_code none;
  return fs::read_symlink(link, none).string();
}

void LinkDevice(const std::string& link, const std::string& device) {
  if (device.empty()) {
    if (!LinkedDevice(link).empty()) fs::remove(link);
    return;
  }
  const auto place = fs::path(link);
  const auto fresh = place.parent_path() / ("." + place.filename().string());
  fs::create_directories(place.parent_path());
  fs::remove(fresh);
  fs::create_symlink(device, fresh);
  fs::rename(fresh, place);
}

}  // namespace ostrel
