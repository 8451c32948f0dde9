// What has come already, over a restart too: which products, from which files and messages, and
// which of them were on their way into a folder when the program ended.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/sqlite_database.h"

namespace ostrel {

/// Where a product came from, so that the same file or message is not taken again. `key` is a
/// file's path or a message's number; a file that stands otherwise than `state` tells is another.
struct Mark {
  std::string key = {};
  std::string state = {};
};

/// A whole file under a hidden name, and the path that it is to get, or the first free one after
/// it.
struct Placement {
  std::string hidden, path;
};

class FeedMemory {
 public:
  using Time = std::chrono::sys_seconds;

  /// The database at `path`, which is made when missing. Throws Failure 57, as everything here
  /// does.
  explicit FeedMemory(const std::string& path);

  bool IsTaken(const Mark& mark);
  /// True when the same name with the same content was recorded less than `age` before `now`.
  bool IsRepeat(const std::string& name, const std::string& hash, Time now,
                std::chrono::seconds age);
  /// One product that came: all of it is remembered, or nothing. What was recorded before counts as
  /// placed.
  void Record(const std::string& name, const std::string& hash, const Mark& mark, Time now,
              const std::vector<Placement>& placements);
  /// A file or message that needs no placing: a repeat, or one that is to be left.
  void RecordMark(const Mark& mark, Time now);
  /// What the last record placed, or was about to.
  std::vector<Placement> LastPlacements();
  /// Forgets products that came before `products`, and marks from before `marks` that are
  /// `isGone`.
  void Forget(Time products, Time marks, const std::function<bool(const std::string&)>& isGone);

 private:
  void Insert(const Mark& mark, Time now);

  SqliteDatabase database_;
};

}  // namespace ostrel
