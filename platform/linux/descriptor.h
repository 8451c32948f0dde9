// An open file of the system, closed when its owner goes.
#pragma once

#include <unistd.h>
#include <utility>

namespace ostrel {

class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { Reset(); }

  explicit operator bool() const { return number_ >= 0; }
  int Get() const { return number_; }
  /// Gives it to an owner of another kind.
  int Release() { return std::exchange(number_, -1); }
  void Reset() {
    if (number_ >= 0) close(number_);
    number_ = -1;
  }

 private:
  int number_;
};

}  // namespace ostrel
