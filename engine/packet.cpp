#include "engine/packet.h"

#include <fmt/format.h>

#include "base/names.h"
#include "base/text.h"

namespace ostrel {

std::string NameField(std::string_view fileName) {
  return ToUpper(PadOrCut(StripDupSuffix(fileName), kNameFieldSize));
}

std::string NumberField(long long number, std::size_t width) {
  return PadOrCut(fmt::format(" {}", number), width);
}

long long BlockCount(std::int64_t length) {
  constexpr auto kSize = static_cast<std::int64_t>(kBlockSize);
  return (length + kSize - 1) / kSize;
}

std::uint32_t Checksum(const Block& block) {
  std::uint32_t sum = 0;
  for (const char byte : block) sum += static_cast<unsigned char>(byte);
  return sum;
}

std::string EncodePacket(const PacketHeader& header, const Block& block) {
  const auto text = fmt::format("/PF{}/PN{}/PT{}/CS{}/FD{}", header.nameField,
                                NumberField(header.block, kNumberFieldSize),
                                NumberField(header.blockCount, kNumberFieldSize),
                                NumberField(Checksum(block), kChecksumFieldSize), header.timeStamp);
  std::string packet(kPacketMarginSize, '\0');
  packet.reserve(kPacketSize);
  packet.append(PadOrCut(text, kHeaderTextSize)).append(kLineEnd);
  packet.append(block.data(), block.size());
  packet.append(kPacketMarginSize, '\0');
  return packet;
}

}  // namespace ostrel
