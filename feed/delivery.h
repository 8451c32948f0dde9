// The road of one product, whatever source it came from: its name, whether it came before, and the
// folders that it is laid into. Used by several threads, one product at a time.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "feed/apart_product.h"
#include "feed/area_rules.h"
#include "feed/feed_book.h"
#include "feed/feed_memory.h"
#include "feed/product_name.h"
#include "receive/product_assembler.h"

namespace ostrel {

/// A whole product as a source has it.
struct FeedProduct {
  std::string given = {};  // the name that it came under, any bytes
  std::string_view content = {};
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
    /// What has more bytes is kept apart: it would hold up the station for hours.
    std::size_t largest = kLargestProduct;
    const AreaRules* areas = nullptr;  // what concerns the station; all does without
  };

  Delivery(Parts parts, NameRules rules) : parts_(std::move(parts)), rules_(std::move(rules)) {}

  /// Finishes what the last run of the program had begun, and what could not be placed since. To be
  /// called again from time to time; the book has what is in the way.
  void GoOn();
  /// Whoever publishes is told of each file that comes into the outbox.
  void TellOfOutbox(std::function<void()> tell);

  /// Takes a product and tells what became of it. Throws Failure when it could not be taken: the
  /// source still has it then, and offers it again.
  FeedOutcome Take(std::size_t source, const FeedProduct& product);
  /// Begins to keep apart a product of `bytes` at most. Throws Failure: 6 when there is never room
  /// for so many, another one when there may be later.
  std::unique_ptr<ApartProduct> BeginApart(const std::string& given, std::uintmax_t bytes);
  /// The same as Take for one whose bytes were all written.
  FeedOutcome TakeApart(std::size_t source, ApartProduct& product, const Mark& mark);
  std::size_t largest() const { return parts_.largest; }

  /// Both throw Failure.
  bool IsTaken(const Mark& mark);
  /// Remembers a file that is not to be taken.
  void Leave(const Mark& mark);

 private:
  using HiddenFiles = std::vector<std::unique_ptr<HiddenFile>>;

  /// What is known of a product before it is laid anywhere.
  struct Arrival {
    std::size_t source;
    std::string_view given;
    Mark mark;
    std::string hash = {};
    std::string name = {};
    int urgency = 0;
    FeedOutcome outcome = FeedOutcome::kDelivered;
    std::string rule = {};  // that passes it over
  };

  template <typename Step>
  FeedOutcome TakeInTurn(std::string_view content, Step&& step);
  FeedOutcome TakeUnheard(std::size_t source, const FeedProduct& product);
  FeedOutcome TakeLarge(std::size_t source, const FeedProduct& product);
  std::unique_ptr<ApartProduct> MakeApart(const std::string& given, std::uintmax_t bytes);
  FeedOutcome EndApart(std::size_t source, ApartProduct& product, const Mark& mark);
  Arrival Identify(std::size_t source, std::string_view given, Mark mark) const;
  bool DropRepeat(Arrival& arrival);
  bool PassOver(Arrival& arrival, std::string_view content) const;
  FeedOutcome Record(const Arrival& arrival, const std::vector<HiddenFile*>& files);
  HiddenFiles Lay(const FeedProduct& product, const std::string& name) const;
  HiddenFiles LayApart(const FeedProduct& product, const std::string& name) const;
  void FinishLastRun();
  void PlaceAll();
  void Settle(std::string_view content);
  void KeepBounds();

  Parts parts_;
  NameRules rules_;
  std::mutex mutex_;
  std::function<void()> tellOfOutbox_ = [] {};
  bool isLastRunFinished_ = false;
  std::vector<Placement> unplaced_;             // recorded, and hidden still
  std::string unplacedContent_;                 // of these, where placing them has failed
  std::atomic<std::uintmax_t> apartBytes_ = 0;  // of what is being kept apart
  FeedMemory::Time lastBounds_ = {};
};

}  // namespace ostrel
