#include "receive/product_assembler.h"

#include <algorithm>
#include <utility>

namespace ostrel {
namespace {

// Ten priorities can be under way at once; what is beyond this many began in an earlier life of the
// station and will not be finished.
constexpr std::size_t kMostUnderWay = 64;
// No product has 8 MB; who announces more is not listened to.
constexpr int kMostBlocks = 8192;

// The end of a zip archive by its closing record: 22 bytes and a comment whose length stands in
// the last two (PKWARE APPNOTE, 4.3.16).
std::optional<std::size_t> ZipLength(std::string_view blocks) {
  constexpr std::size_t kRecord = 22;
  if (!blocks.starts_with("PK")) return std::nullopt;
  const std::size_t record = blocks.rfind("PK\x05\x06");
  if (record == std::string_view::npos || record + kRecord > blocks.size()) return std::nullopt;
  const auto byte = [&](std::size_t at) {
    return std::size_t{static_cast<unsigned char>(blocks[record + at])};
  };
  const std::size_t length = record + kRecord + byte(20) + (byte(21) << 8);
  if (length > blocks.size()) return std::nullopt;
  return length;
}

}  // namespace

std::size_t LengthWithoutFiller(std::string_view blocks) {
  if (blocks.size() < kReceivedBlock) return blocks.size();
  const std::size_t least = blocks.size() - kReceivedBlock + 1;
  const std::size_t length =
      ZipLength(blocks).value_or(blocks.find_last_not_of('\0') + 1);  // 0 if all are zero
  return std::max(length, least);
}

BlockOutcome ProductAssembler::Accept(const ReceivedPacket& packet) {
  auto transmission = Find(packet);
  if (transmission == open_.end()) transmission = Begin(packet);
  BlockOutcome outcome;
  outcome.missing = packet.block - transmission->nextBlock;
  if (outcome.missing > 0) {
    transmission->whole = false;
    transmission->data.clear();
  }
  transmission->nextBlock = packet.block + 1;
  if (transmission->whole) transmission->data += packet.data;
  if (packet.block < packet.count) return outcome;

  outcome.endedIncomplete = !transmission->whole;
  if (transmission->whole) {
    transmission->data.resize(LengthWithoutFiller(transmission->data));
    outcome.product = ReceivedProduct{packet.name, std::move(transmission->data)};
  }
  open_.erase(transmission);
  return outcome;
}

// The youngest first: what interrupted another of its own name ends before that one goes on.
ProductAssembler::Transmissions::iterator ProductAssembler::Find(const ReceivedPacket& packet) {
  if (packet.block == 1) return open_.end();
  const auto search = [&](auto fits) {
    const auto found = std::find_if(open_.rbegin(), open_.rend(), [&](const Transmission& t) {
      return t.name == packet.name && t.count == packet.count && t.stamp == packet.stamp &&
             fits(t.nextBlock);
    });
    return found == open_.rend() ? open_.end() : std::prev(found.base());
  };
  const auto due = search([&](int next) { return next == packet.block; });
  return due != open_.end() ? due : search([&](int next) { return next < packet.block; });
}

ProductAssembler::Transmissions::iterator ProductAssembler::Begin(const ReceivedPacket& packet) {
  if (open_.size() == kMostUnderWay) open_.erase(open_.begin());
  // Whoever tunes in late has not lost the blocks before; the product cannot become whole.
  open_.push_back({.name = packet.name,
                   .count = packet.count,
                   .stamp = packet.stamp,
                   .nextBlock = packet.block,
                   .whole = packet.block == 1 && packet.count <= kMostBlocks,
                   .data = {}});
  return std::prev(open_.end());
}

}  // namespace ostrel
