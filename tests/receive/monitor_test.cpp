#include <fmt/format.h>
#include <gtest/gtest.h>
#include <numeric>

#include "receive/datagram_reader.h"
#include "receive/product_assembler.h"

namespace ostrel {
namespace {

using std::string_literals::operator""s;

std::string OnTheLine(ReceivedPacket packet) {
  const int sum = std::accumulate(packet.data.begin(), packet.data.end(), 0, [](int total, char c) {
    return total + static_cast<unsigned char>(c);
  });
  const std::string zeros(6, '\0');
  return zeros +
         fmt::format("/PF{:12}/PN {:<5}/PT {:<5}/CS {:<6}/FD{:32}\r\n", packet.name, packet.block,
                     packet.count, sum, packet.stamp) +
         packet.data + zeros;
}

const std::string kUsual =
    OnTheLine({"ZFPSFOCA.TXT", 3, 3, "10/27/2003 4:28:30 PM", std::string(1024, 'H')});

TEST(PacketReader, NamesEveryFieldThatIsWrong) {
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
      {42, " 73727 ", "the checksum says 73727, the data 73728"},
      {52, "10/07/2003", "no time stamp"},
      {52, "10/27/2003 0:28:30 PM", "no time stamp"},
  };
  for (const auto& [at, bytes, problem] : cases) {
    std::string packet = kUsual;
    packet.replace(at, bytes.size(), bytes);
    EXPECT_EQ(ReadPacket(packet).problems, std::vector{problem}) << at << " " << bytes;
  }
  const auto atMidnight = OnTheLine({"A", 1, 20, "10/27/2003", std::string(1024, '\xff')});
  EXPECT_EQ(ReadPacket(atMidnight).problems, std::vector<std::string>{});
}

TEST(StreamDecoder, FindsPacketsInWhateverTheLineCarries) {
  const std::string head = kUsual.substr(0, 600), tail = kUsual.substr(601);
  const std::string marred = kUsual.substr(0, 30) + "!" + kUsual.substr(31);  // in "/PT"
  const std::string inStamp = OnTheLine({"A", 1, 1, "Transmit Timeout", std::string(1024, 'H')});
  // P for a good packet, D for a damaged one, - for the pause text, n for noise.
  const std::pair<std::string, std::string_view> cases[] = {
      {kUsual + "Transmit Timeout" + kUsual, "P-P"},
      {"static" + kUsual + std::string(300, '/') + kUsual, "nPnP"},
      {kUsual.substr(500) + kUsual, "nP"},
      {kUsual + head + tail + kUsual, "PDP"},
      {kUsual + head + "xy" + tail + kUsual, "PDnP"},
      {kUsual + head + kUsual, "PDP"},
      {marred + "noise!" + kUsual, "DnP"},
      {inStamp + kUsual, "n-nP"},
      {marred.substr(0, 600) + "Transmit Timeout" + marred.substr(0, 600) + kUsual, "D-DP"},
  };
  for (const auto& [stream, expected] : cases) {
    for (const std::size_t piece : {std::size_t{1}, stream.size()}) {
      StreamDecoder decoder;
      std::string shown;
      const auto show = [&](const std::vector<StreamEvent>& events) {
        for (const auto& event : events) shown += "PD-n"[event.index()];
      };
      for (std::size_t at = 0; at < stream.size(); at += piece) {
        show(decoder.Feed(std::string_view{stream}.substr(at, piece)));
      }
      show(decoder.Finish());
      EXPECT_EQ(shown, expected) << "in pieces of " << piece;
    }
  }
}

TEST(DatagramReader, TellsPacketsFromTheEndAndFromStrangers) {
  std::string bad = kUsual;
  bad[90] = '!';
  EXPECT_TRUE(std::holds_alternative<ReceivedPacket>(*ReadDatagram("R0060" + kUsual)));
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

}  // namespace
}  // namespace ostrel
