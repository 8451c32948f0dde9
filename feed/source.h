// What every source of products has: its place in the book, and the road to the delivery.
#pragma once

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

#include "base/failure.h"
#include "base/reporting.h"
#include "feed/delivery.h"
#include "feed/feed_book.h"

namespace ostrel {

class Source {
 public:
  Source(const std::string& name, Delivery& delivery, FeedBook& book)
      : delivery_(delivery), book_(book), number_(book.AddSource(name)) {}
  virtual ~Source() = default;
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  /// Begins, and goes on by the event loop until this is destroyed.
  virtual void Start() = 0;

 protected:
  /// Throws Failure when the product could not be taken.
  FeedOutcome Take(const FeedProduct& product) { return delivery_.Take(number_, product); }
  void SetState(const std::string& state, bool isWell) { book_.SetState(number_, state, isWell); }
  std::size_t number() const { return number_; }

  /// Runs what the event loop or a library calls: nothing that is thrown goes further. What cannot
  /// be done now is done later; each source sees to that. False when something was thrown.
  template <typename Step>
  bool Safely(Step&& step) {
    try {
      std::forward<Step>(step)();
      return true;
    } catch (const std::exception& error) {
      TryStep([&] { book_.Log(error.what()); });
    } catch (const StopRequested&) {  // the program is about to end
    }
    return false;
  }

  Delivery& delivery_;
  FeedBook& book_;

 private:
  std::size_t number_;
};

/// Waits between tries that grow from one second to a minute.
class GrowingWait {
 public:
  std::chrono::seconds Next() {
    const auto wait = next_;
    next_ = std::min(next_ * 2, std::chrono::seconds(60));
    return wait;
  }
  void Reset() { next_ = std::chrono::seconds(1); }

 private:
  std::chrono::seconds next_{1};
};

}  // namespace ostrel
