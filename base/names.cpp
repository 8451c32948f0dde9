#include "base/names.h"

#include <algorithm>
#include <fmt/format.h>

namespace ostrel {

namespace {
constexpr char kSeparator = '/';
}

std::string_view StripDupSuffix(std::string_view name) {
  if (std::count(name.begin(), name.end(), '.') < 2) return name;
  return name.substr(0, name.rfind('.'));
}

std::string_view StripExtension(std::string_view name) {
  return name.substr(0, name.find('.'));
}

bool IsNumberedCopy(std::string_view name) {
  const auto period = name.rfind('.');
  if (period == std::string_view::npos) return false;
  const auto number = name.substr(period + 1);
  return !number.empty() && number.front() != '0' &&
         number.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string NumberedName(std::string_view name, int number) {
  const auto suffix = fmt::format(".{}", number);
  return std::string(StripDupSuffix(name).substr(0, kLongestName - suffix.size())) + suffix;
}

std::string_view FileNameOf(std::string_view path) {
  return path.substr(path.rfind(kSeparator) + 1);
}

std::string_view FolderOf(std::string_view path) {
  const auto separator = path.rfind(kSeparator);
  return separator == std::string_view::npos ? std::string_view{} : path.substr(0, separator);
}

std::string JoinPath(std::string_view folder, std::string_view name) {
  std::string path(folder);
  if (!path.empty() && path.back() != kSeparator) path += kSeparator;
  return path.append(name);
}

}  // namespace ostrel
