#include <fmt/format.h>
#include <gtest/gtest.h>
#include <string>
#include <variant>
#include <vector>

#include "tools/monitor/datagram_reader.h"
#include "tools/monitor/product_assembler.h"
#include "tools/monitor/stream_decoder.h"

namespace ostrel {
namespace {

using std::string_literals::operator""s;
using std::string_view_literals::operator""sv;

// clang-format off
constexpr std::string_view kGoldenHead =
    "\x00\x00\x00\x00\x00\x00"                                              // six zero bytes
    "\x2f\x50\x46" "\x5a\x46\x50\x53\x46\x4f\x43\x41\x2e\x54\x58\x54"       // /PF ZFPSFOCA.TXT
    "\x2f\x50\x4e" "\x20\x33\x20\x20\x20\x20"                               // /PN block 3
    "\x2f\x50\x54" "\x20\x33\x20\x20\x20\x20"                               // /PT of 3
    "\x2f\x43\x53" "\x20\x31\x34\x32\x20\x20\x20"                           // /CS 'H' + 'F'
    "\x2f\x46\x44" "\x31\x30\x2f\x32\x37\x2f\x32\x30\x30\x33"               // /FD 10/27/2003
    "\x20\x34\x3a\x32\x38\x3a\x33\x30\x20\x50\x4d"                          //  4:28:30 PM
    "\x20\x20\x20\x20\x20\x20\x20\x20\x20\x20\x20"                          // eleven blanks
    "\x0d\x0a"                                                              // CR LF
    "\x48\x46"sv;                                                           // two bytes of data
// clang-format on
const std::string kGolden = std::string(kGoldenHead) + std::string(1022 + 6, '\0');

std::string Pad(std::string text, std::size_t width) {
  text.resize(width, ' ');
  return text;
}

struct Block {
  std::string name = "A.TXT";
  int block = 1;
  int count = 1;
  std::string data = "data";
  std::string stamp = "1/2/2026 3:04:05 AM";
};

std::string PacketOf(Block block) {
  int sum = 0;
  for (const char c : block.data) sum += static_cast<unsigned char>(c);
  block.data.resize(1024, '\0');
  const std::string zeros(6, '\0');
  return zeros + "/PF" + Pad(block.name, 12) + "/PN" + Pad(fmt::format(" {}", block.block), 6) +
         "/PT" + Pad(fmt::format(" {}", block.count), 6) + "/CS" + Pad(fmt::format(" {}", sum), 7) +
         "/FD" + Pad(block.stamp, 32) + "\r\n" + block.data + zeros;
}

// The events of a stream in one line: P good packet, D damaged, pause, and the size of noise.
std::string Decode(std::string_view stream, std::size_t piece) {
  StreamDecoder decoder;
  std::string shown;
  const auto show = [&](const std::vector<StreamEvent>& events) {
    for (const StreamEvent& event : events) {
      if (const auto* packet = std::get_if<ReceivedPacket>(&event)) {
        shown += fmt::format("P{} ", packet->block);
      } else if (const auto* damaged = std::get_if<DamagedPacket>(&event)) {
        shown += fmt::format("D{} ", damaged->reading.packet.block);
      } else if (const auto* noise = std::get_if<Noise>(&event)) {
        shown += fmt::format("{} ", noise->bytes);
      } else {
        shown += "pause ";
      }
    }
  };
  for (std::size_t at = 0; at < stream.size(); at += piece) {
    show(decoder.Feed(stream.substr(at, piece)));
  }
  show(decoder.Finish());
  return shown;
}

TEST(PacketReader, TakesTheGoldenPacketApart) {
  ASSERT_EQ(kGolden.size(), kReceivedPacket);
  const PacketReading reading = ReadPacket(kGolden);
  EXPECT_EQ(reading.problems, std::vector<std::string>{});
  EXPECT_EQ(reading.packet.name, "ZFPSFOCA.TXT");
  EXPECT_EQ(reading.packet.block, 3);
  EXPECT_EQ(reading.packet.count, 3);
  EXPECT_EQ(reading.packet.stamp, "10/27/2003 4:28:30 PM");
  EXPECT_EQ(reading.packet.data, "HF" + std::string(1022, '\0'));
}

TEST(PacketReader, NamesEveryFieldThatIsWrong) {
  const struct {
    std::size_t at;
    std::string_view bytes, problem;
  } cases[] = {
      {2, "\x01", "no six zero bytes in front"},
      {1115, "\x01", "no six zero bytes behind"},
      {84, "\n\r", "a header mark is wrong"},
      {9, "../ESCAPE.TX", "no file name"},
      {24, " 0    ", "the block numbers are wrong"},
      {24, " 4    ", "the block numbers are wrong"},
      {33, " 03   ", "the block numbers are wrong"},
      {42, " 141   ", "the checksum says 141, the data 142"},
      {52, "10/07/2003", "no time stamp"},
      {52, "10/27/2003 0:28:30 PM", "no time stamp"},
      {87, "G", "the checksum says 142, the data 143"},
  };
  for (const auto& wrong : cases) {
    std::string packet = kGolden;
    packet.replace(wrong.at, wrong.bytes.size(), wrong.bytes);
    EXPECT_EQ(ReadPacket(packet).problems, std::vector{std::string(wrong.problem)})
        << wrong.at << " " << wrong.bytes;
  }
  EXPECT_TRUE(ReadPacket(PacketOf({.stamp = "10/27/2003"})).problems.empty()) << "midnight";
  EXPECT_TRUE(ReadPacket(PacketOf({.data = std::string(1024, '\xff')})).problems.empty());
}

TEST(StreamDecoder, FindsPacketsInWhateverTheLineCarries) {
  const std::string a = PacketOf({.block = 1, .count = 3, .data = std::string(1024, 'a')});
  const std::string b = PacketOf({.block = 2, .count = 3, .data = std::string(1024, 'b')});
  const std::string c = PacketOf({.block = 3, .count = 3, .data = "c"});
  const auto without = [](std::string packet, std::size_t at) { return packet.erase(at, 1); };
  const auto with = [](std::string packet, std::size_t at) { return packet.insert(at, "x"); };
  const auto changed = [](std::string packet, std::size_t at) {
    packet[at] = '!';
    return packet;
  };
  const struct {
    std::string stream;
    std::string_view shown;
  } cases[] = {
      {a + "Transmit Timeout" + b, "P1 pause P2 "},
      {a + "Transmit Time" + b, "P1 13 P2 "},
      {"static" + a + std::string(300, '/') + b, "6 P1 300 P2 "},
      {a.substr(500) + b, "616 P2 "},
      {a + changed(b, 600) + c, "P1 D2 P3 "},
      {a + without(b, 600) + c, "P1 D2 P3 "},
      {a + with(b, 600) + c, "P1 D2 1 P3 "},
      {a + b.substr(0, 600) + c, "P1 D2 P3 "},
      {changed(a, 600) + "noise!" + b, "D1 6 P2 "},
  };
  for (const auto& line : cases) {
    for (const std::size_t piece : {1U, 7U, 1116U, 100000U}) {
      EXPECT_EQ(Decode(line.stream, piece), line.shown) << line.shown << " by " << piece;
    }
  }
}

TEST(DatagramReader, TellsPacketsFromTheEndAndFromStrangers) {
  std::string bad = kGolden;
  bad[90] = '!';
  EXPECT_TRUE(std::holds_alternative<ReceivedPacket>(*ReadDatagram("R0060" + kGolden)));
  EXPECT_TRUE(std::holds_alternative<DamagedPacket>(*ReadDatagram("R0001" + bad)));
  EXPECT_FALSE(ReadDatagram("E0000"));
  for (const std::string& strange : {"R00x1" + kGolden, "R0001" + kGolden + "x", "R0001"s, ""s}) {
    EXPECT_TRUE(std::holds_alternative<Noise>(*ReadDatagram(strange))) << strange.size();
  }
}

// Products that an assembler makes of a list of blocks, as "name:size", a failed one as "-".
std::string Assemble(const std::vector<Block>& blocks) {
  ProductAssembler assembler;
  std::string shown;
  for (const Block& block : blocks) {
    const auto outcome = assembler.Accept(ReadPacket(PacketOf(block)).packet);
    if (const auto& made = outcome.product) {
      shown += fmt::format("{}:{} ", made->name, made->data.size());
    }
    if (outcome.endedIncomplete) shown += fmt::format("-{} ", outcome.missing);
  }
  return shown + fmt::format("{}", assembler.Unfinished());
}

TEST(ProductAssembler, MakesProductsOfWholeBlocksOnly) {
  const std::string full(1024, 'f');
  const Block first{"LONG.TXT", 1, 3, full};
  const Block second{"LONG.TXT", 2, 3, full};
  const Block third{"LONG.TXT", 3, 3, "end"};
  const Block urgent{"TOR.TXT", 1, 1, "urgent"};
  // The same name, sent out of an urgent queue while its namesake waits, begun a second later.
  const Block twin{"LONG.TXT", 1, 3, full, "1/2/2026 3:04:06 AM"};
  Block twinEnd = third;
  twinEnd.stamp = twin.stamp;

  EXPECT_EQ(Assemble({first, urgent, second, urgent, third}),
            "TOR.TXT:6 TOR.TXT:6 LONG.TXT:2051 0");
  EXPECT_EQ(Assemble({first, first, second, third, second, third}),
            "LONG.TXT:2051 LONG.TXT:2051 0");
  EXPECT_EQ(Assemble({first, twin, second, twinEnd, third}), "-1 LONG.TXT:2051 0");
  EXPECT_EQ(Assemble({second, third, first, second}), "-0 1") << "tuned in late: none is missing";
}

TEST(ProductAssembler, CutsTheFillerAsFarAsThePacketTells) {
  const std::string zip = "PK\x05\x06" + std::string(16, '\0') + "\x02\x00"s + "c\0"s;
  const auto padded = [](std::string data) {
    data.resize((data.size() + 1023) / 1024 * 1024, '\0');
    return data;
  };
  EXPECT_EQ(LengthWithoutFiller(padded("abc")), 3U);
  EXPECT_EQ(LengthWithoutFiller(std::string(2048, 'x')), 2048U);
  EXPECT_EQ(LengthWithoutFiller(padded("abc\0\0"s)), 3U) << "the limit: they pass for filler";
  EXPECT_EQ(LengthWithoutFiller(std::string(2048, '\0')), 1025U) << "a block has one byte";
  EXPECT_EQ(LengthWithoutFiller(padded(zip)), zip.size()) << "an archive tells its own end";
  const std::string cutShort = "PK" + std::string(1018, 'x') + "PK\x05\x06";
  EXPECT_EQ(LengthWithoutFiller(cutShort), 1024U) << "a record cut short tells nothing";
}

}  // namespace
}  // namespace ostrel
