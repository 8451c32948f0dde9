// The EMWIN block packet, byte by byte; docs/packet-format.md tells it in prose. Encoding only: the
// receiver has its own reading of the format.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/time.h"

namespace ostrel {

inline constexpr std::size_t kPacketMarginSize = 6;  // zero bytes at either end
inline constexpr std::size_t kHeaderTextSize = 78;
inline constexpr std::size_t kHeaderSize = kHeaderTextSize + 2;  // and CR LF
inline constexpr std::size_t kBlockSize = 1024;
inline constexpr std::size_t kPacketSize = 1116;
static_assert(kPacketMarginSize + kHeaderSize + kBlockSize + kPacketMarginSize == kPacketSize);

inline constexpr std::size_t kNameFieldSize = 12;
inline constexpr std::size_t kNumberFieldSize = 6;
inline constexpr std::size_t kChecksumFieldSize = 7;
inline constexpr std::size_t kDateFieldSize = 32;
inline constexpr std::size_t kMarkSize = 3;  // "/PF", "/PN", "/PT", "/CS", "/FD"
static_assert(5 * kMarkSize + kNameFieldSize + 2 * kNumberFieldSize + kChecksumFieldSize +
                  kDateFieldSize ==
              kHeaderTextSize);

using Block = std::array<char, kBlockSize>;

/// What the header says of a block.
struct PacketHeader {
  std::string nameField;  // 12 characters
  long long block;        // 1 and up
  long long blockCount;
  std::string timeStamp;  // UTC, in the general date form
};

/// The 12-character name field of a file: without its duplicate number, upper case, padded or cut.
std::string NameField(std::string_view fileName);

/// A blank, the number in decimal, blanks up to `width`; cut to `width` when longer.
std::string NumberField(long long number, std::size_t width);

/// Blocks of a file of `length` bytes; 0 for an empty one.
long long BlockCount(std::int64_t length);

/// The sum of the block's bytes, each 0 to 255.
std::uint32_t Checksum(const Block& block);

/// The whole packet of 1116 bytes.
std::string EncodePacket(const PacketHeader& header, const Block& block);

}  // namespace ostrel
