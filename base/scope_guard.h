// Puts something back at the end of a scope, however the scope is left.
#pragma once

#include <utility>

namespace ostrel {

template <typename Restore>
class [[nodiscard]] ScopeGuard {
 public:
  explicit ScopeGuard(Restore restore) : restore_(std::move(restore)) {}
  ~ScopeGuard() { restore_(); }
  ScopeGuard(const ScopeGuard&) = delete;
  ScopeGuard& operator=(const ScopeGuard&) = delete;

 private:
  Restore restore_;
};

}  // namespace ostrel
