// The road of one product, whatever source it came from: its name, whether it came before, and the
// folders that it is laid into. Used by several threads, one product at a time.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "feed/feed_book.h"
#include "feed/feed_memory.h"
#include "feed/product_name.h"

namespace ostrel {

/// A whole product as a source has it.
struct FeedProduct {
  std::string given = {};  // the name that it came under, any bytes
  std::string content = {};
  Mark mark = {};
  /// False for what came from a broker: it would go round in a circle.
  bool isPublished = true;
};

class Delivery {
 public:
  struct Parts {
    FeedMemory& memory;
    FeedBook& book;
    std::function<FeedMemory::Time()> now;
    /// The folder to deliver to, asked for each time; empty where there is none.
    std::function<std::string()> ingestFolder;
    std::string unknownFolder;
    /// What is to be published waits here; empty where nothing is.
    std::string outbox;
    /// The same name and content is dropped for so long.
    std::chrono::seconds repeats;
  };

  Delivery(Parts parts, NameRules rules) : parts_(std::move(parts)), rules_(std::move(rules)) {}

  /// Finishes what the last run of the program had begun. Throws Failure.
  void Finish();
  /// Whoever publishes is told of each file that comes into the outbox.
  void TellOfOutbox(std::function<void()> tell);

  /// Takes a product and tells what became of it. Throws Failure when it could not be taken: the
  /// source still has it then, and offers it again.
  FeedOutcome Take(std::size_t source, const FeedProduct& product);
  bool IsTaken(const Mark& mark);
  /// Remembers a file that is not to be taken.
  void Leave(const Mark& mark);

 private:
  FeedOutcome TakeUnheard(std::size_t source, const FeedProduct& product);
  std::vector<Placement> Lay(const FeedProduct& product, const std::string& name) const;
  std::vector<Placement> LayApart(const FeedProduct& product, const std::string& name) const;
  void PlaceAll();
  void KeepBounds();

  Parts parts_;
  NameRules rules_;
  std::mutex mutex_;
  std::function<void()> tellOfOutbox_ = [] {};
  std::vector<Placement> unplaced_;  // recorded, and hidden still
  FeedMemory::Time lastBounds_ = {};
};

}  // namespace ostrel
