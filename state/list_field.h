// An observable list of lines: a queue, a rule list, the schedule. Subscribers hear of every change
// by its position, so that a view of a hundred thousand entries is updated and never rebuilt.
#pragma once

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

#include "state/signal.h"

namespace ostrel {

/// One change of a list, told after it happened.
struct ListChange {
  enum class Kind { kInserted, kRemoved, kReplaced, kReset };
  Kind kind;
  std::size_t position;  // 0 for a reset
};

class ListField {
 public:
  /// `name` is that of the list's element.
  explicit ListField(std::string name) : name_(std::move(name)) {}
  ListField(const ListField&) = delete;
  ListField& operator=(const ListField&) = delete;

  const std::string& name() const { return name_; }
  std::size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }
  /// `position` must be below size().
  const std::string& operator[](std::size_t position) const { return entries_[position]; }
  const std::string& front() const { return entries_.front(); }
  auto begin() const { return entries_.begin(); }
  auto end() const { return entries_.end(); }

  bool Contains(const std::string& entry) const {
    return std::find(begin(), end(), entry) != end();
  }

  /// Adds `entry` behind the last one.
  void Append(std::string entry) {
    entries_.push_back(std::move(entry));
    changed_.Emit({ListChange::Kind::kInserted, entries_.size() - 1});
  }
  /// In front of the entry at `position`.
  void Insert(std::size_t position, std::string entry) {
    entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(position), std::move(entry));
    changed_.Emit({ListChange::Kind::kInserted, position});
  }
  /// Replace and Remove: `position` must be below size().
  void Replace(std::size_t position, std::string entry) {
    entries_[position] = std::move(entry);
    changed_.Emit({ListChange::Kind::kReplaced, position});
  }
  void Remove(std::size_t position) {
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(position));
    changed_.Emit({ListChange::Kind::kRemoved, position});
  }
  /// Removes the entries at `positions`, in any order; repeats and positions beyond the end are
  /// ignored.
  void RemoveEach(std::vector<std::size_t> positions) {
    std::sort(positions.begin(), positions.end());
    positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
    for (auto position = positions.rbegin(); position != positions.rend(); ++position) {
      if (*position < size()) Remove(*position);
    }
  }
  /// Takes over a whole new content; nothing happens when it is what the list holds.
  void Assign(const std::vector<std::string>& entries) {
    if (std::equal(begin(), end(), entries.begin(), entries.end())) return;
    entries_.assign(entries.begin(), entries.end());
    changed_.Emit({ListChange::Kind::kReset, 0});
  }

  /// `call` gets every change after it happened.
  [[nodiscard]] Subscription OnChange(Signal<const ListChange&>::Call call) {
    return changed_.Subscribe(std::move(call));
  }

 private:
  std::string name_;
  std::deque<std::string> entries_;
  Signal<const ListChange&> changed_;
};

}  // namespace ostrel
