#include "listen/kept_products.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>

#include "listen/picture.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

/// When a file of the folder was received.
UtcTime ReceivedAt(fs::file_time_type written) {
  return std::chrono::floor<milliseconds>(std::chrono::file_clock::to_sys(written));
}

bool TellsEvents(const Bulletin& bulletin) {
  return bulletin.message || std::ranges::any_of(bulletin.segments, [](const auto& segment) {
           return !segment.events.empty();
         });
}

}  // namespace

bool IsText(std::string_view data) {
  constexpr std::size_t kLooked = 4096;
  const auto front = data.substr(0, kLooked);
  const auto odd = std::ranges::count_if(front, [](unsigned char c) {
    return c < 0x20 && c != '\n' && c != '\r' && c != '\t' && c != '\x01' && c != '\x03';
  });
  return !data.starts_with("PK") && odd == 0;
}

KeptProducts::KeptProducts(fs::path folder) : folder_(std::move(folder)) {
  std::vector<std::pair<UtcTime, std::string>> files;
  for (const auto& entry : fs::directory_iterator(folder_)) {
    std::error_code error;
    const auto name = entry.path().filename().string();
    const auto written = entry.last_write_time(error);
    if (error || name.starts_with('.') || !entry.is_regular_file(error)) continue;
    files.emplace_back(ReceivedAt(written), name);
  }
  std::ranges::sort(files);
  const auto skipped = files.size() - std::min(files.size(), kMostRead);
  for (auto file = files.begin() + static_cast<std::ptrdiff_t>(skipped); file != files.end();
       ++file) {
    if (const auto data = ContentOf(file->second)) Add(file->second, *data, file->first);
  }
}

void KeptProducts::Add(const std::string& name, std::string_view data, UtcTime received) {
  KeptProduct product;
  product.name = name;
  product.received = received;
  product.bytes = data.size();
  product.hash = std::hash<std::string_view>{}(data);
  product.picture = PictureTypeOf(data);
  product.isText = product.picture.empty() && IsText(data);
  const auto same = TakeSame(product);
  if (same) std::ranges::replace(eventfulNames_, *same, name);
  if (product.isText) {
    auto bulletin = ReadBulletin(data, received);
    product.kind = bulletin.kind;
    product.isDamaged = bulletin.isDamaged;
    if (!same && TellsEvents(bulletin)) Remember(name, {std::move(bulletin), received});
  }
  listed_.push_front(std::move(product));
  if (listed_.size() > kMostListed) listed_.pop_back();
}

void KeptProducts::Remember(const std::string& name, ReceivedBulletin told) {
  for (auto& segment : told.bulletin.segments) segment.tags.clear();
  eventful_.push_back(std::move(told));
  eventfulNames_.push_back(name);
  // Half of them at once, so that few are moved.
  if (eventful_.size() < kMostEventful) return;
  constexpr auto kForgotten = static_cast<std::ptrdiff_t>(kMostEventful / 2);
  eventful_.erase(eventful_.begin(), eventful_.begin() + kForgotten);
  eventfulNames_.erase(eventfulNames_.begin(), eventfulNames_.begin() + kForgotten);
}

std::optional<std::string> KeptProducts::TakeSame(const KeptProduct& product) {
  const auto same = std::ranges::find_if(listed_, [&](const auto& listed) {
    return listed.hash == product.hash && listed.bytes == product.bytes;
  });
  if (same == listed_.end()) return std::nullopt;
  auto name = std::move(same->name);
  listed_.erase(same);
  return name;
}

std::optional<std::string> KeptProducts::ContentOf(const std::string& name) const {
  const bool leadsOut = name.empty() || name.front() == '.' || name.find('/') != name.npos;
  if (leadsOut || name.find('\0') != name.npos) return std::nullopt;
  std::error_code error;
  const auto path = folder_ / name;
  if (!fs::is_regular_file(fs::symlink_status(path, error))) return std::nullopt;
  const auto size = fs::file_size(path, error);
  if (error || size > kLargestRead) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  std::string data(std::istreambuf_iterator<char>(file), {});
  return file.bad() || !file.is_open() ? std::nullopt : std::optional(std::move(data));
}

}  // namespace ostrel
