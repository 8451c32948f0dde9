#include "receive/product_assembler.h"

#include <algorithm>
#include <utility>

namespace ostrel {
namespace {

// Ten priorities can be under way at once; what is beyond this many began in an earlier life of the
// station and will not be finished.
constexpr std::size_t kMostUnderWay = 64;
constexpr std::size_t kMostHeld = 128 * 1024 * 1024;  // bytes, more than the largest product
// Of a product that is handed on as it comes, what its end can be told by.
constexpr std::size_t kHeldBack = 2 * kReceivedBlock;

constexpr std::string_view kArchiveMark = "PK";

// The end of a zip archive by its closing record: 22 bytes and a comment whose length stands in
// the last two (PKWARE APPNOTE, 4.3.16).
std::optional<std::size_t> ZipLength(std::string_view blocks) {
  constexpr std::size_t kRecord = 22;
  const std::size_t record = blocks.rfind("PK\x05\x06");
  if (record == std::string_view::npos || record + kRecord > blocks.size()) return std::nullopt;
  const auto byte = [&](std::size_t at) {
    return std::size_t{static_cast<unsigned char>(blocks[record + at])};
  };
  const std::size_t length = record + kRecord + byte(20) + (byte(21) << 8);
  if (length > blocks.size()) return std::nullopt;
  return length;
}

/// Of the last blocks of a product.
std::size_t LengthOfEnd(std::string_view blocks, bool isArchive) {
  if (blocks.size() < kReceivedBlock) return blocks.size();
  const std::size_t least = blocks.size() - kReceivedBlock + 1;
  const auto zip = isArchive ? ZipLength(blocks) : std::nullopt;
  const std::size_t length = zip.value_or(blocks.find_last_not_of('\0') + 1);  // 0: all are zero
  return std::max(length, least);
}

}  // namespace

std::size_t LengthWithoutFiller(std::string_view blocks) {
  return LengthOfEnd(blocks, blocks.starts_with(kArchiveMark));
}

BlockOutcome ProductAssembler::Accept(const ReceivedPacket& packet) {
  auto transmission = Find(packet);
  if (transmission == open_.end()) transmission = Begin(packet);
  BlockOutcome outcome;
  outcome.missing = packet.block - transmission->nextBlock;
  if (outcome.missing > 0) {
    transmission->whole = false;
    transmission->data.clear();
    transmission->large.reset();
  }
  transmission->nextBlock = packet.block + 1;
  if (transmission->whole) Add(*transmission, packet.data);
  if (packet.block < packet.count) {
    KeepBounds(*transmission);
    return outcome;
  }
  outcome.endedIncomplete = !transmission->whole;
  if (transmission->whole) End(*transmission, outcome);
  open_.erase(transmission);
  return outcome;
}

void ProductAssembler::Add(Transmission& transmission, const std::string& block) {
  auto& data = transmission.data;
  if (data.empty()) transmission.isArchive = block.starts_with(kArchiveMark);
  data += block;
  if (transmission.large == nullptr || data.size() <= kHeldBack) return;
  const auto ready = data.size() - kHeldBack;
  transmission.large->Append(std::string_view(data).substr(0, ready));
  data.erase(0, ready);
}

void ProductAssembler::End(Transmission& transmission, BlockOutcome& outcome) {
  auto& data = transmission.data;
  data.resize(LengthOfEnd(data, transmission.isArchive));
  if (transmission.large == nullptr) {
    outcome.product = ReceivedProduct{transmission.name, std::move(data)};
  } else {
    transmission.large->Append(data);
    outcome.large = std::move(transmission.large);
  }
}

/// What is under way and will not end must not fill the memory: the oldest give way.
void ProductAssembler::KeepBounds(const Transmission& spared) {
  std::size_t held = 0;
  for (const auto& transmission : open_) held += transmission.data.size();
  for (auto& transmission : open_) {
    if (held <= kMostHeld) return;
    if (&transmission == &spared) continue;
    held -= transmission.data.size();
    transmission.whole = false;
    transmission.data = {};
  }
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
  open_.push_back({.name = packet.name,
                   .count = packet.count,
                   .stamp = packet.stamp,
                   .nextBlock = packet.block,
                   // Whoever tunes in late has not lost the blocks before; the product cannot
                   // become whole.
                   .whole = packet.block == 1,
                   .data = {},
                   .large = {}});
  auto& begun = open_.back();
  const auto blocks = static_cast<std::size_t>(packet.count);
  if (begun.whole && (blocks - 1) * kReceivedBlock >= largest_) {
    if (begin_) begun.large = begin_(packet.name, blocks * kReceivedBlock);
    begun.whole = begun.large != nullptr;
  }
  return std::prev(open_.end());
}

}  // namespace ostrel
