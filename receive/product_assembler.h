// Puts the blocks of received packets together to products. A product that is interrupted by a more
// urgent one goes on where it stopped; a product with a missing block never becomes one.
#pragma once

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

/// What one block did to its product.
struct BlockOutcome {
  /// Set by the last block of a product that came whole.
  std::optional<ReceivedProduct> product;
  /// Blocks between this one and the one before it that never came.
  int missing = 0;
  /// The product ended with this block and was not whole.
  bool endedIncomplete = false;
};

/// The length of a product whose last block is filled up with zero bytes. The packet does not tell
/// it: zero bytes at the very end of a product cannot be told from filler and are cut, except in a
/// zip archive, which tells its own length. A block holds at least one byte of its product.
std::size_t LengthWithoutFiller(std::string_view blocks);

class ProductAssembler {
 public:
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
    std::string data;
  };
  using Transmissions = std::vector<Transmission>;

  Transmissions::iterator Find(const ReceivedPacket& packet);
  Transmissions::iterator Begin(const ReceivedPacket& packet);

  Transmissions open_;
};

}  // namespace ostrel
