// One observable value: what a label shows, a text field or a check box holds. The engine and the
// intake read and write these; the windows follow.
#pragma once

#include <utility>

#include "state/signal.h"

namespace ostrel {

template <typename T>
class Field {
 public:
  Field() = default;
  explicit Field(T initial) : value_(initial), initial_(std::move(initial)) {}
  Field(const Field&) = delete;
  Field& operator=(const Field&) = delete;

  const T& Get() const { return value_; }
  /// What it held at first: the default of a field that is stored.
  const T& initial() const { return initial_; }

  /// Stores `value` and calls the subscribers; nothing happens when it is what the field holds.
  void Set(T value) {
    if (value == value_) return;
    value_ = std::move(value);
    changed_.Emit(value_);
  }

  /// `call` gets the new value at every change.
  [[nodiscard]] Subscription OnChange(typename Signal<const T&>::Call call) {
    return changed_.Subscribe(std::move(call));
  }

 private:
  T value_{};
  T initial_{};
  Signal<const T&> changed_;
};

}  // namespace ostrel
