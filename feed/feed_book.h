// What the feed tells: its log, and the figures that a window shows. Used by several threads.
#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace spdlog {
class logger;
}

namespace ostrel {

/// What became of a product.
enum class FeedOutcome { kDelivered, kRepeat, kUnknown, kTooLarge, kPassedOver };

struct FeedFigures {
  using Clock = std::chrono::steady_clock;

  struct Source {
    std::string name = {}, state = {};
    bool isWell = false;
    long long products = 0;
  };
  struct Product {
    std::chrono::system_clock::time_point at = {};
    std::string name = {}, source = {};
    FeedOutcome outcome = FeedOutcome::kDelivered;
  };

  std::vector<Source> sources = {};
  std::deque<Product> last = {};  // newest first
  long long delivered = 0, repeats = 0, unknown = 0, tooLarge = 0;
  std::map<std::string, long long> passedOver = {};  // by the rule that does so
  Clock::time_point lastCame = Clock::now();         // the last product, or the start
  std::string trouble = {};                          // why nothing is taken at present
};

class FeedBook {
 public:
  /// Writes to `path`, which is renewed before it grows beyond a megabyte; the four before it stay.
  /// With `isSpoken` every line goes to standard error as well. A log that cannot be written costs
  /// its lines and nothing else.
  FeedBook(const std::string& path, bool isSpoken);
  ~FeedBook();

  /// Puts a source into the figures; the others name it by the number that this returns.
  std::size_t AddSource(const std::string& name);
  /// Tells the state of a source; a line when it is a new one.
  void SetState(std::size_t source, const std::string& state, bool isWell);
  /// One product and what became of it. `given` is the name that it came under, `rule` the one that
  /// passes it over.
  void Note(std::size_t source, std::string_view given, const std::string& name, int urgency,
            FeedOutcome outcome, const std::string& rule = {});
  /// Why nothing is taken, or that it is again when empty; a line when that is new.
  void SetTrouble(const std::string& trouble);
  void Log(const std::string& text);

  FeedFigures Figures() const;

 private:
  mutable std::mutex mutex_;
  FeedFigures figures_;
  std::shared_ptr<spdlog::logger> log_;
};

}  // namespace ostrel
