// What Repeat.toml says: which warnings are repeated, how often, and how much of the air they get.
#pragma once

#include <string>
#include <vector>

#include "base/time.h"

namespace ostrel {

/// Products of these kinds are sent again so long after they went out last.
struct RepeatRule {
  std::vector<std::string> kinds;  // "TOR"; "*" is every kind
  std::chrono::minutes every{0};
};

/// What becomes of a product that waits while its event is over.
enum class Obsolete { kLeave, kDelete };

struct RepeatConfig {
  int priority = 3;      // the queue of what is repeated, 1 to 10
  int share = 10;        // of the air, in percent
  seconds interval{30};  // between two looks
  Obsolete obsolete = Obsolete::kLeave;
  std::vector<RepeatRule> rules;  // the first that has the kind decides
};

/// Throws std::runtime_error that names file and line of what is wrong.
RepeatConfig ReadRepeatConfig(const std::string& path);

/// For operators, in sentences.
std::string Explain(const RepeatConfig& config);

}  // namespace ostrel
