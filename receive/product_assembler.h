// Puts the blocks of received packets together to products. A product that is interrupted by a more
// urgent one goes on where it stopped; a product with a missing block never becomes one. What is
// larger than any product is never held in memory.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "receive/packet_reader.h"

namespace ostrel {

/// A product of which every block came whole.
struct ReceivedProduct {
  std::string name;
  std::string data;
};

/// The most bytes that a product has unless somebody is told otherwise, and the most that one can
/// have: a packet counts up to 99,999 blocks.
inline constexpr std::size_t kLargestProduct = 10'000'000;
inline constexpr std::size_t kMostProductBlocks = 99'999;

/// Takes the bytes of a product that is too large, as they come. One that goes without an end did
/// not become whole.
class LargeProduct {
 public:
  virtual ~LargeProduct() = default;
  virtual void Append(std::string_view bytes) = 0;
};
/// Begins one that comes in blocks of `bytes` together; null where nobody wants it.
using BeginLargeProduct =
    std::function<std::unique_ptr<LargeProduct>(const std::string& name, std::size_t bytes)>;

/// What one block did to its product.
struct BlockOutcome {
  /// Set by the last block of a product that came whole.
  std::optional<ReceivedProduct> product;
  /// The same for one that is too large, with all its bytes appended.
  std::unique_ptr<LargeProduct> large;
  /// Blocks between this one and the one before it that never came.
  int missing = 0;
  /// The product ended with this block and was not whole, or too large and unwanted.
  bool endedIncomplete = false;
};

/// The length of a product whose last block is filled up with zero bytes. The packet does not tell
/// it: zero bytes at the very end of a product cannot be told from filler and are cut, except in a
/// zip archive, which tells its own length. A block holds at least one byte of its product.
std::size_t LengthWithoutFiller(std::string_view blocks);

class ProductAssembler {
 public:
  explicit ProductAssembler(std::size_t largest = kLargestProduct, BeginLargeProduct begin = {})
      : largest_(largest), begin_(std::move(begin)) {}

  /// Takes the next good packet of the stream.
  BlockOutcome Accept(const ReceivedPacket& packet);
  /// Products that have begun and not ended.
  std::size_t Unfinished() const { return open_.size(); }

 private:
  // One transmission of one product. The stamp is the moment it began, so the same name sent twice,
  // or two of the same name under way at different priorities, are told apart.
  struct Transmission {
    std::string name;
    int count = 0;
    std::string stamp;
    int nextBlock = 1;
    bool whole = true;
    std::string data;  // of a large one, its last two blocks
    std::unique_ptr<LargeProduct> large;
    bool isArchive = false;
  };
  using Transmissions = std::vector<Transmission>;

  Transmissions::iterator Find(const ReceivedPacket& packet);
  Transmissions::iterator Begin(const ReceivedPacket& packet);
  static void Add(Transmission& transmission, const std::string& block);
  static void End(Transmission& transmission, BlockOutcome& outcome);
  void KeepBounds(const Transmission& spared);

  std::size_t largest_;
  BeginLargeProduct begin_;
  Transmissions open_;
};

}  // namespace ostrel
