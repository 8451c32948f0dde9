// Who wants to hear of a change. A subscription is an object: when it goes, with the window that
// holds it, the calls stop.
#pragma once

#include <functional>
#include <memory>
#include <vector>

namespace ostrel {

/// Keeps one subscriber subscribed for as long as it lives.
using Subscription = std::shared_ptr<void>;

template <typename... Args>
class Signal {
 public:
  using Call = std::function<void(Args...)>;

  /// `call` is called at every Emit until the returned object is gone.
  [[nodiscard]] Subscription Subscribe(Call call) {
    auto subscriber = std::make_shared<Call>(std::move(call));
    subscribers_.push_back(subscriber);
    return subscriber;
  }

  /// Calls every subscriber at once, in the order of subscription. A subscriber may subscribe,
  /// unsubscribe and cause further changes.
  void Emit(Args... args) {
    ++depth_;
    for (std::size_t i = 0; i < subscribers_.size(); ++i) {
      if (const auto subscriber = subscribers_[i].lock()) (*subscriber)(args...);
    }
    if (--depth_ == 0) std::erase_if(subscribers_, [](const auto& s) { return s.expired(); });
  }

 private:
  std::vector<std::weak_ptr<Call>> subscribers_;
  int depth_ = 0;
};

}  // namespace ostrel
