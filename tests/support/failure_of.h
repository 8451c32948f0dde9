// The number of the failure that a step ends in, for tests that expect one.
#pragma once

#include "base/failure.h"

namespace ostrel {

/// 0 when the step works.
template <typename Step>
std::int32_t FailureOf(Step&& step) {
  try {
    step();
    return 0;
  } catch (const Failure& failure) {
    return failure.number();
  }
}

}  // namespace ostrel
