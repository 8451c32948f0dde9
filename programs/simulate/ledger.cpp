#include "programs/simulate/ledger.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/names.h"
#include "base/text.h"

namespace ostrel {

namespace {

/// What a file keeps through numbering and compression.
std::string ProductOf(std::string_view name) {
  return ToUpper(StripExtension(name));
}

}  // namespace

void Ledger::Overwritten(const std::string& name) {
  for (const Priority p : AllPriorities()) {
    auto& unlisted = unlisted_[p];
    const auto last = std::find_if(unlisted.rbegin(), unlisted.rend(),
                                   [&](const Carried& arrival) { return arrival.name == name; });
    if (last == unlisted.rend()) continue;
    end_(p, *last, Outcome::kReplaced, {});
    unlisted.erase(std::next(last).base());
  }
}

void Ledger::Listed(Priority p, const std::string& name) {
  queues_[p].push_back({Take(p, name), {}});
}

void Ledger::Replaced(Priority p, std::size_t position, const std::string& name) {
  const auto before = std::exchange(queues_[p][position], Entry{Take(p, name), {}});
  Finish(p, before, Outcome::kReplaced);
}

void Ledger::Removed(Priority p, std::size_t position) {
  auto& queue = queues_[p];
  const auto entry = std::move(queue[position]);
  queue.erase(queue.begin() + static_cast<std::ptrdiff_t>(position));
  Finish(p, entry, Outcome::kPurged);
}

/// A queue takes its files in the order of their names' arrival. What nobody waits for is a fill
/// file, a copy, or the archive of a block.
std::vector<Carried> Ledger::Take(Priority p, std::string_view name) {
  auto& unlisted = unlisted_[p];
  const auto found = std::find_if(unlisted.begin(), unlisted.end(), [&](const Carried& arrival) {
    return ProductOf(arrival.name) == ProductOf(name);
  });
  if (found != unlisted.end()) {
    std::vector<Carried> taken = {std::move(*found)};
    unlisted.erase(found);
    return taken;
  }
  return ProductOf(name).starts_with("COMP") ? std::exchange(forBlock_, {})
                                             : std::vector<Carried>();
}

void Ledger::Finish(Priority p, const Entry& entry, Outcome unlessSent) {
  const auto fate = entry.outAt ? Outcome::kSent : unlessSent;
  for (const auto& arrival : entry.arrivals)
    end_(p, arrival, fate, entry.outAt.value_or(milliseconds(0)));
}

std::size_t Ledger::Waiting() const {
  std::size_t waiting = forBlock_.size();
  for (const Priority p : AllPriorities()) {
    waiting += unlisted_[p].size();
    for (const auto& entry : queues_[p]) waiting += entry.arrivals.size();
  }
  return waiting;
}

}  // namespace ostrel
