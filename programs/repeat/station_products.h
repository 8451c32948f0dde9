// The products that a station received of late, with what they say: from its history and its sent
// folder, read again at each look. What was read once is remembered.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "programs/queue/past_products.h"
#include "repeat/plan.h"

namespace ostrel {

/// A sending that was asked for again.
struct PastRepetition {
  UtcTime asked;
  std::int64_t bytes = 0;
};

class StationProducts {
 public:
  explicit StationProducts(std::string station) : station_(std::move(station)) {}

  struct Known {
    std::vector<KnownProduct> products;
    std::vector<PastRepetition> repetitions;
  };
  /// Those of the eight days before `now`. Throws Failure where there is no history.
  Known Read(UtcTime now);

 private:
  /// What a product says; nothing for one whose bytes are gone, or that are no text.
  using Said = std::shared_ptr<const Bulletin>;
  Said SaidBy(const PastProducts& history, const PastProduct& product);
  std::optional<std::string> BytesOf(const PastProducts& history, const PastProduct& product) const;

  std::string station_;
  std::map<std::int64_t, Said> said_;  // by the id of the arrival
};

}  // namespace ostrel
