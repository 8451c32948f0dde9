#include "intake/obstacles.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/names.h"
#include "base/reporting.h"

namespace ostrel {

namespace {

constexpr std::size_t kMostRefused = 1'000;
/// One that was not refused for so long, and is now, is another one of its name.
constexpr milliseconds kLongestRest{900'000};

std::string_view BareOf(const std::string& place) {
  return place.ends_with('/') ? FolderOf(place) : place;
}

}  // namespace

std::string WithoutPlace(const std::string& text, std::string_view place) {
  for (const auto& named : {fmt::format(": {}", place), fmt::format(": {}/", place)}) {
    if (text.ends_with(named)) return text.substr(0, text.size() - named.size());
  }
  return text;
}

void Obstacles::Block(const std::string& place, const std::string& reason) {
  const auto now = clock_.Monotonic();
  if (!blocking_ || blocking_->first != place) blocking_.emplace(place, Obstacle{.since = now});
  blocking_->second.reason = WithoutPlace(reason, BareOf(place));
  blocking_->second.last = now;
}

void Obstacles::Pass() {
  blocking_.reset();
}

void Obstacles::Refuse(const std::string& place, const std::string& reason,
                       std::optional<milliseconds> nextTry) {
  if (refused_.size() >= kMostRefused && !refused_.contains(place)) return;
  const auto now = clock_.Monotonic();
  auto& obstacle = refused_.try_emplace(place, Obstacle{.since = now, .last = now}).first->second;
  if (now - obstacle.last > kLongestRest) obstacle.since = now;
  obstacle.reason = WithoutPlace(reason, BareOf(place));
  obstacle.last = now;
  obstacle.nextTry = nextTry;
}

std::optional<Obstacles::Placed> Obstacles::blocking() const {
  return blocking_ && IsGone(blocking_->first) ? std::nullopt : blocking_;
}

std::vector<Obstacles::Placed> Obstacles::refused() {
  std::erase_if(refused_, [this](const auto& place) { return IsGone(place.first); });
  std::vector<Placed> places(refused_.begin(), refused_.end());
  std::ranges::stable_sort(places, {}, [](const Placed& place) { return place.second.since; });
  return places;
}

std::string Obstacles::ReasonOf(const std::string& place) const {
  if (const auto blocker = blocking(); blocker && blocker->first == place)
    return blocker->second.reason;
  const auto found = refused_.find(place);
  return found == refused_.end() ? "" : found->second.reason;
}

bool Obstacles::IsGone(const std::string& place) const {
  bool isThere = true;
  TryStep([&] { isThere = files_.Exists(place); });
  return !isThere;
}

}  // namespace ostrel
