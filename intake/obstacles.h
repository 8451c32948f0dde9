// What cannot go on in the folders that a received file passes through: where, why and since when.
// The steps that are refused report it here, for who asks how the station stands. A place is the
// path of a file or, with a separator at its end, of a folder that cannot be used.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "platform/files.h"

namespace ostrel {

/// What failures say, without the path at its end where that is `place`: who reads it here knows
/// it.
std::string WithoutPlace(const std::string& text, std::string_view place);

class Obstacles {
 public:
  Obstacles(Files& files, const Clock& clock) : files_(files), clock_(clock) {}

  struct Obstacle {
    std::string reason = {};
    milliseconds since{0}, last{0};            // monotonic: of the first and of the last refusal
    std::optional<milliseconds> nextTry = {};  // monotonic; nothing for what is tried all the time
  };
  using Placed = std::pair<std::string, Obstacle>;

  /// The ingest scan gets no further than `place`.
  void Block(const std::string& place, const std::string& reason);
  /// It got further.
  void Pass();
  /// The place alone is refused, and nobody waits for it. Beyond a thousand they are not counted.
  void Refuse(const std::string& place, const std::string& reason,
              std::optional<milliseconds> nextTry = {});
  /// A folder is not refused any more. Files that went on are forgotten without it.
  void Accept(const std::string& folder) {
    if (!refused_.empty()) refused_.erase(folder);
  }

  /// The one that blocks the ingest folder; none after it is gone.
  std::optional<Placed> blocking() const;
  /// The longest first.
  std::vector<Placed> refused();
  /// Why `place` stays where it is; empty when nothing keeps it.
  std::string ReasonOf(const std::string& place) const;

 private:
  bool IsGone(const std::string& place) const;

  Files& files_;
  const Clock& clock_;
  std::optional<Placed> blocking_;
  std::map<std::string, Obstacle> refused_;  // by place
};

}  // namespace ostrel
