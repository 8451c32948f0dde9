// What the monitor makes of the events of a stream: a line for its operator, products in the
// folder, and the counts of the summary.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>
#include <vector>

#include "listen/listeners_page.h"
#include "programs/monitor/product_store.h"
#include "receive/product_assembler.h"
#include "receive/stream_decoder.h"

namespace ostrel {

/// Prints one line with the local time in front, at once.
void ShowLine(std::string_view text, std::FILE* where = stdout);

class Receiver {
 public:
  /// What it hears goes into `page`, too, where there is one.
  explicit Receiver(ProductStore& store, ListenersPage* page = nullptr)
      : store_(store), page_(page) {}

  void Take(const std::vector<StreamEvent>& events);
  void ShowSummary() const;
  /// A block came damaged or went missing.
  bool SawBadBlock() const { return damaged_ + missing_ > 0; }

 private:
  void Show(const ReceivedPacket& packet);
  void Show(const DamagedPacket& packet);
  void Show(const PauseText& pause);
  void Show(const Noise& noise);
  void Keep(const ReceivedProduct& product);
  void Lose(int& kind, int blocks);

  ProductStore& store_;
  ListenersPage* page_;
  ProductAssembler assembler_;
  int packets_ = 0;
  int products_ = 0;
  int damaged_ = 0;
  int missing_ = 0;
  int incomplete_ = 0;
  int pauses_ = 0;
  std::size_t noise_ = 0;
};

}  // namespace ostrel
