#include <fmt/format.h>
#include <gtest/gtest.h>
#include <numeric>

#include "tools/monitor/datagram_reader.h"
#include "tools/monitor/product_assembler.h"

namespace ostrel {
namespace {

using std::string_literals::operator""s;

const ReceivedPacket kUsual = {"ZFPSFOCA.TXT", 3, 3, "10/27/2003 4:28:30 PM", "HF"};

std::string OnTheLine(ReceivedPacket packet) {
  const int sum = std::accumulate(packet.data.begin(), packet.data.end(), 0, [](int total, char c) {
    return total + static_cast<unsigned char>(c);
  });
  packet.data.resize(1024);
  const std::string zeros(6, '\0');
  return zeros +
         fmt::format("/PF{:12}/PN {:<5}/PT {:<5}/CS {:<6}/FD{:32}\r\n", packet.name, packet.block,
                     packet.count, sum, packet.stamp) +
         packet.data + zeros;
}

TEST(PacketReader, ReadsEveryFieldAndNamesTheOnesThatAreWrong) {
  const std::string usual = OnTheLine(kUsual);
  const struct {
    std::size_t at;
    std::string bytes, problem;
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
  };
  for (const auto& [at, bytes, problem] : cases) {
    std::string packet = usual;
    packet.replace(at, bytes.size(), bytes);
    EXPECT_EQ(ReadPacket(packet).problems, std::vector{problem}) << at << " " << bytes;
  }
  const ReceivedPacket atMidnight = {"A", 1, 20, "10/27/2003", std::string(1024, '\xff')};
  for (const auto& packet : {kUsual, atMidnight}) {
    EXPECT_EQ(ReadPacket(OnTheLine(packet)).problems, std::vector<std::string>{});
  }
  EXPECT_EQ(ReadPacket(usual).packet.stamp, kUsual.stamp);
}

struct Shown {
  std::string operator()(const ReceivedPacket& packet) { return fmt::format("P{} ", packet.block); }
  std::string operator()(const DamagedPacket& damaged) {
    return fmt::format("D{} ", damaged.reading.packet.block);
  }
  std::string operator()(const PauseText&) { return "pause "; }
  std::string operator()(const Noise& noise) { return fmt::format("{} ", noise.bytes); }
};

std::string Decode(std::string_view stream) {
  StreamDecoder decoder;
  std::string shown;
  const auto show = [&](const std::vector<StreamEvent>& events) {
    for (const auto& event : events) shown += std::visit(Shown{}, event);
  };
  for (const char& byte : stream) show(decoder.Feed({&byte, 1}));
  show(decoder.Finish());
  return shown;
}

TEST(StreamDecoder, FindsPacketsInWhateverTheLineCarries) {
  const auto packet = [](int block) {
    return OnTheLine({"A.TXT", block, 3, "1/2/2026 3:04:05 AM", std::string(1024, 'a')});
  };
  const std::string a = packet(1), b = packet(2), c = packet(3);
  const std::string head = b.substr(0, 600), tail = b.substr(601), changed = head + "!" + tail;
  const std::pair<std::string, std::string_view> cases[] = {
      {a + "Transmit Timeout" + b, "P1 pause P2 "},
      {a + "Transmit Time" + b, "P1 13 P2 "},
      {"static" + a + std::string(300, '/') + b, "6 P1 300 P2 "},
      {a.substr(500) + b, "616 P2 "},
      {a + head + tail + c, "P1 D2 P3 "},
      {a + head + "xy" + tail + c, "P1 D2 1 P3 "},
      {a + head + c, "P1 D2 P3 "},
      {changed + "noise!" + c, "D2 6 P3 "},
  };
  for (const auto& [stream, shown] : cases) EXPECT_EQ(Decode(stream), shown);
}

TEST(DatagramReader, TellsPacketsFromTheEndAndFromStrangers) {
  const std::string usual = OnTheLine(kUsual);
  std::string bad = usual;
  bad[90] = '!';
  EXPECT_TRUE(std::holds_alternative<ReceivedPacket>(*ReadDatagram("R0060" + usual)));
  EXPECT_TRUE(std::holds_alternative<DamagedPacket>(*ReadDatagram("R0001" + bad)));
  EXPECT_FALSE(ReadDatagram("E0000"));
  EXPECT_TRUE(std::holds_alternative<Noise>(*ReadDatagram("R0001")));
}

// Products that an assembler makes of a list of blocks, as "name:size"; a failed one as "-" and
// what was missed just before its end.
std::string Assemble(const std::vector<ReceivedPacket>& blocks) {
  ProductAssembler assembler;
  std::string shown;
  for (const auto& block : blocks) {
    const auto outcome = assembler.Accept(block);
    if (const auto& made = outcome.product)
      shown += fmt::format("{}:{} ", made->name, made->data.size());
    if (outcome.endedIncomplete) shown += fmt::format("-{} ", outcome.missing);
  }
  return shown;
}

TEST(ProductAssembler, MakesProductsOfWholeBlocksOnly) {
  const std::string full(1024, 'f'), stamp = "1/2/2026 3:04:05 AM";
  const ReceivedPacket first = {"LONG.TXT", 1, 3, stamp, full};
  const ReceivedPacket second = {"LONG.TXT", 2, 3, stamp, full};
  const ReceivedPacket third = {"LONG.TXT", 3, 3, stamp, "end" + std::string(1021, '\0')};
  const ReceivedPacket urgent = {"TOR.TXT", 1, 1, stamp, full};
  // The same name, sent out of an urgent queue while its namesake waits, begun a second later.
  const ReceivedPacket twin = {"LONG.TXT", 1, 3, "1/2/2026 3:04:06 AM", full};
  const ReceivedPacket twinEnd = {"LONG.TXT", 3, 3, twin.stamp, full};

  EXPECT_EQ(Assemble({first, urgent, second, urgent, third}),
            "TOR.TXT:1024 TOR.TXT:1024 LONG.TXT:2051 ");
  EXPECT_EQ(Assemble({first, first, second, third, second, third}), "LONG.TXT:2051 LONG.TXT:2051 ");
  EXPECT_EQ(Assemble({first, twin, second, twinEnd, third}), "-1 LONG.TXT:2051 ");
  EXPECT_EQ(Assemble({second, third, first, second}), "-0 ") << "tuned in late: none is missing";
}

TEST(ProductAssembler, CutsTheFillerAsFarAsThePacketTells) {
  const std::string filler(1000, '\0');
  const std::string zip = "PK\x05\x06" + std::string(16, '\0') + "\x02\x00"s + "c\0"s;
  EXPECT_EQ(LengthWithoutFiller(zip + filler), zip.size()) << "an archive tells its own end";
  EXPECT_EQ(LengthWithoutFiller(std::string(2048, '\0')), 1025U) << "a block has one byte";
  const std::string cutShort = "PK" + std::string(1018, 'x') + "PK\x05\x06";
  EXPECT_EQ(LengthWithoutFiller(cutShort), 1024U) << "a record cut short tells nothing";
}

}  // namespace
}  // namespace ostrel
