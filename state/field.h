// One observable value: what a label shows, a text field or a check box holds. The core reads and
// writes these; the windows follow. A field knows the name of its element, under which tests,
// screen readers and scripts find it on the screen.
#pragma once

#include <string>
#include <utility>

#include "state/signal.h"

namespace ostrel {

template <typename T>
class Field {
 public:
  /// `name` is the element's; `initial` what the field holds until somebody sets it.
  explicit Field(std::string name, T initial = {})
      : name_(std::move(name)), value_(initial), initial_(std::move(initial)) {}
  Field(const Field&) = delete;
  Field& operator=(const Field&) = delete;

  const std::string& name() const { return name_; }
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
  std::string name_;
  T value_;
  T initial_;
  Signal<const T&> changed_;
};

}  // namespace ostrel
