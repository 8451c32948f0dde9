// What became of each product: one row a product, in a store that outlives the station. It is
// written behind the station's back: no call here waits for a disk, and a store that fails costs
// rows, never a packet.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/time.h"

namespace ostrel {

enum class Fate {
  kWaiting,     // on its way: in a holding folder, or in its queue
  kOnAir,       // its first block is out, the last may be
  kHeld,        // an operator holds it back
  kSent,        // every block went to the line, and the line has drained
  kIncomplete,  // some of its blocks did not
  kReplaced,    // by a newer one of its product, before its turn
  kPurged,      // too old before its turn
  kRemoved,     // by an operator
  kStopped,     // by an operator, while it was on the air
  kDiscarded,   // a rule throws it away
  kNoRule,      // no rule names it
  kUnpacked,    // an archive, whose members are products of their own
  kArchived,    // sent in a block archive, which has its own row
  kEmpty,       // it had no byte to send
  kGone,        // somebody deleted its file
  kSetAside,    // it went to the quarantine; restored, it is a new one
  kUnknown,     // the station was killed before its end could be written
};
/// What the store calls them, in this order.
inline constexpr std::array kFateWords = {
    "waiting",  "on the air", "held",    "sent",      "sent in part", "replaced",
    "purged",   "removed",    "stopped", "discarded", "no rule",      "unpacked",
    "archived", "empty",      "gone",    "set aside", "unknown"};
static_assert(kFateWords.size() == static_cast<std::size_t>(Fate::kUnknown) + 1);

struct ProductRow {
  std::int64_t id = 0;  // none of the history
  std::string name;     // as it was received, in upper case
  std::string sentAs;   // as its queue lists it
  std::string place;    // where its file is; empty once it has ended
  int priority = 0;     // none
  UtcTime arrived{};
  std::optional<UtcTime> firstBlock, lastBlock, ended;
  int timesSent = 0;
  Fate fate = Fate::kWaiting;
  std::int64_t archive = 0;   // the id of the one that it was packed into
  std::int64_t resendOf = 0;  // the id of the one that it repeats
};

/// A product's bytes, readable until this goes, whatever becomes of its file.
class ProductContent {
 public:
  virtual ~ProductContent() = default;
};

/// How long things are kept. What is older goes by a share a day, the oldest first: at twice the
/// pace at which it grows old, so that a clock that is wrong for a while erases next to nothing.
struct HistoryTerms {
  std::chrono::days rows{400};
  std::chrono::days products{0};  // their bytes; 0 keeps none
  UtcTime now{};
};

/// For log and status.
struct HistoryNews {
  enum class Kind {
    kFails,       // what happens meanwhile is written later
    kWorksAgain,  // after that
    kBegunAnew,   // it was damaged, and is set aside
  };
  Kind kind = Kind::kFails;
  std::string text;
};

class History {
 public:
  virtual ~History() = default;

  /// What an earlier run has left.
  struct Earlier {
    std::vector<ProductRow> open;  // that have not ended
    std::int64_t lastId = 0;
  };
  /// Opens the store, before the first tick: the one call that may wait, half a second at most.
  /// A store that is damaged is set aside and begun anew. Throws Failure.
  virtual Earlier Begin(const HistoryTerms& terms) = 0;
  /// Writes what there is to write, for two seconds at most.
  virtual void End() = 0;

  /// The file at `path`, for its size, its hash and, where they are kept, its bytes. Nothing when
  /// it cannot be opened or too many are.
  virtual std::unique_ptr<ProductContent> Open(const std::string& path) = 0;
  /// The row as it stands from now on; the one of its id before is replaced.
  virtual void Put(const ProductRow& row, std::unique_ptr<ProductContent> content) = 0;
  /// What has become of the store since the last time, one after the other.
  virtual std::optional<HistoryNews> TakeNews() = 0;
};

}  // namespace ostrel
