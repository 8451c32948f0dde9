// A priority is 1 to 10, 1 served first. Lists and captions are indexed from 0; the type keeps the
// two from being mistaken for each other.
#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <utility>

namespace ostrel {

inline constexpr int kPriorityCount = 10;

class Priority {
 public:
  /// `number` is 1 to 10.
  explicit constexpr Priority(int number) : number_(number) {
    assert(number >= 1 && number <= kPriorityCount);
  }

  constexpr int number() const { return number_; }
  constexpr std::size_t index() const { return static_cast<std::size_t>(number_ - 1); }
  friend constexpr bool operator==(Priority, Priority) = default;

 private:
  int number_;
};

/// All priorities, first served first.
constexpr std::array<Priority, kPriorityCount> AllPriorities() {
  return {Priority(1), Priority(2), Priority(3), Priority(4), Priority(5),
          Priority(6), Priority(7), Priority(8), Priority(9), Priority(10)};
}

/// One value for each priority, reached by Priority.
template <typename T>
class PerPriority {
 public:
  PerPriority() : values_{} {}
  /// Each value is what `make` gives for its priority.
  template <typename Make>
  explicit PerPriority(const Make& make)
      : PerPriority(make, std::make_index_sequence<kPriorityCount>{}) {}

  T& operator[](Priority p) { return values_[p.index()]; }
  const T& operator[](Priority p) const { return values_[p.index()]; }
  auto begin() { return values_.begin(); }
  auto end() { return values_.end(); }
  auto begin() const { return values_.begin(); }
  auto end() const { return values_.end(); }

 private:
  template <typename Make, std::size_t... index>
  PerPriority(const Make& make, std::index_sequence<index...> /*all*/)
      : values_{make(Priority(static_cast<int>(index) + 1))...} {}

  std::array<T, kPriorityCount> values_;
};

}  // namespace ostrel
