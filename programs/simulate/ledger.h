// What becomes of each arrival: it waits until its queue lists it, is carried by that entry, and
// ends with it.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/priority.h"
#include "base/time.h"

namespace ostrel {

struct Carried {
  std::string name;
  milliseconds since{0};  // its arrival
  long long bytes = 0;
};

enum class Outcome { kSent, kReplaced, kPurged };

class Ledger {
 public:
  /// `end` gets each arrival that ends: where, how, and when its last block was out, if ever.
  using End = std::function<void(Priority, const Carried&, Outcome, milliseconds)>;
  explicit Ledger(End end) : end_(std::move(end)) {}

  /// A file that a rule sends.
  void Arrived(Priority p, Carried arrival) { unlisted_[p].push_back(std::move(arrival)); }
  /// A file that goes into the next block archive.
  void ArrivedForBlock(Carried arrival) { forBlock_.push_back(std::move(arrival)); }
  /// A file of this name was written over the last one of it before that was taken.
  void Overwritten(const std::string& name);

  // The changes of a queue, as its list tells them
  void Listed(Priority p, const std::string& name);
  void Replaced(Priority p, std::size_t position, const std::string& name);
  void Removed(Priority p, std::size_t position);
  /// The last block of the entry in front was out at `at`.
  void LastBlockOut(Priority p, milliseconds at) { queues_[p].front().outAt = at; }

  /// Arrivals that have not ended.
  std::size_t Waiting() const;

 private:
  struct Entry {
    std::vector<Carried> arrivals;
    std::optional<milliseconds> outAt;
  };
  std::vector<Carried> Take(Priority p, std::string_view name);
  void Finish(Priority p, const Entry& entry, Outcome unlessSent);

  End end_;
  PerPriority<std::deque<Carried>> unlisted_;
  std::vector<Carried> forBlock_;
  PerPriority<std::deque<Entry>> queues_;
};

}  // namespace ostrel
