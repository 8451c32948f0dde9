#include "programs/monitor/product_store.h"

#include <fmt/format.h>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace ostrel {

ProductStore::ProductStore(std::filesystem::path folder) : folder_(std::move(folder)) {
  std::filesystem::create_directories(folder_);
}

std::string ProductStore::Store(const std::string& name, std::string_view data) {
  int& number = lastNumbers_[name];
  std::string free = number == 0 ? name : fmt::format("{}.{}", name, number);
  while (std::filesystem::exists(folder_ / free)) free = fmt::format("{}.{}", name, ++number);
  const std::filesystem::path unfinished = folder_ / ("." + free);
  std::ofstream file(unfinished, std::ios::binary | std::ios::trunc);
  file.write(data.data(), static_cast<std::streamsize>(data.size()));
  file.close();
  if (!file) throw std::runtime_error(fmt::format("cannot write {}", unfinished.string()));
  std::filesystem::rename(unfinished, folder_ / free);
  return free;
}

}  // namespace ostrel
