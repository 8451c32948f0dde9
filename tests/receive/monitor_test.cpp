#include <fmt/format.h>
#include <gtest/gtest.h>
#include <numeric>

#include "receive/datagram_port.h"
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

/// Of a large product, what came and whether it went without an end.
struct LargeBytes : LargeProduct {
  explicit LargeBytes(std::string& taken) : bytes(taken) { bytes += "["; }
  ~LargeBytes() override { bytes += "]"; }
  void Append(std::string_view more) override { bytes += more; }
  std::string& bytes;
};

TEST(ProductAssembler, HandsOnWhatIsTooLargeAsItComes) {
  const auto block = [](int number, const std::string& name, const std::string& text) {
    return ReceivedPacket{name, number, 4, "stamp", text + std::string(1024 - text.size(), '\0')};
  };
  std::string taken;
  std::size_t announced = 0;
  const auto begin = [&](const std::string&, std::size_t bytes) {
    announced = bytes;
    return std::make_unique<LargeBytes>(taken);
  };
  const std::string full(1024, 'f'), text = full + full + full + "end";
  // The fourth block has at least one byte, so 3072 are too few and 3073 may be enough.
  for (const bool isLarge : {true, false}) {
    ProductAssembler assembler(isLarge ? 3072 : 3073, begin);
    taken.clear();
    for (int number = 1; number < 4; ++number) assembler.Accept(block(number, "LONG.TXT", full));
    EXPECT_EQ(taken, isLarge ? "[" + full : "") << "two blocks are held back";
    auto outcome = assembler.Accept(block(4, "LONG.TXT", "end"));
    EXPECT_EQ(outcome.large != nullptr, isLarge);
    EXPECT_EQ(isLarge ? taken : "[" + outcome.product.value().data, "[" + text);
  }
  EXPECT_EQ(announced, 4096U);
  ProductAssembler assembler(3000, begin);
  taken.clear();
  const std::string archive = std::string("PK\5\6") + std::string(18, '\0');  // ends with zeros
  for (const auto& [number, part] : {std::pair{1, "PK" + full.substr(2)}, {2, full}, {3, full}})
    assembler.Accept(block(number, "PACK.ZIP", part));
  EXPECT_NE(assembler.Accept(block(4, "PACK.ZIP", archive)).large, nullptr);
  EXPECT_EQ(taken, "[PK" + full.substr(2) + full + full + archive + "]");
  taken.clear();
  assembler.Accept(block(1, "LONG.TXT", full));
  assembler.Accept(block(3, "LONG.TXT", full));
  EXPECT_EQ(taken, "[]") << "one is missing: it goes at once";
  EXPECT_TRUE(assembler.Accept(block(4, "LONG.TXT", "end")).endedIncomplete);
  ProductAssembler unwilling(3000);
  unwilling.Accept(block(1, "LONG.TXT", full));
  EXPECT_EQ(unwilling.Accept(block(2, "LONG.TXT", full)).missing, 0);
}

TEST(ProductAssembler, HoldsNoMoreThanAMemoryHas) {
  ProductAssembler assembler;
  const std::string full(64 * 1024, 'f');
  constexpr int kProducts = 15, kBlocks = 150;  // of ten million bytes each
  int whole = 0;
  for (int number = 1; number <= kBlocks; ++number) {
    for (int product = 0; product < kProducts; ++product) {
      const auto outcome =
          assembler.Accept({fmt::format("P{}.TXT", product), number, kBlocks, "stamp", full});
      whole += outcome.product.has_value();
    }
  }
  EXPECT_GE(whole, kProducts - 3);
  EXPECT_LT(whole, kProducts) << "the oldest gave way";
}

TEST(DatagramAddress, IsThisComputersUnlessTold) {
  EXPECT_EQ(ReadDatagramAddress("9510").address, "127.0.0.1");
  EXPECT_EQ(ReadDatagramAddress("0.0.0.0:9510").address, "0.0.0.0");
  EXPECT_EQ(ReadDatagramAddress("192.168.1.7:9510").port, 9510);
  for (const auto* wrong : {"", "0", "65536", "x", "9510x", "host:9510", "1.2.3:9510", ":9510"})
    EXPECT_THROW(ReadDatagramAddress(wrong), std::runtime_error) << wrong;
  const std::pair<const char*, const char*> networks[] = {{"192.168.1.0/24", "192.168.1.0/24"},
                                                          {"10.1.2.3", "10.1.2.3"},
                                                          {"10.1.2.3/32", "10.1.2.3"},
                                                          {"0.0.0.0/0", "0.0.0.0/0"}};
  for (const auto& [text, spelt] : networks)
    EXPECT_EQ(SpellIpv4Network(ReadIpv4Network(text).value()), spelt);
  for (const auto* wrong : {"", "10.0.0.0/33", "10.0.0.0/-1", "10.0.0.0/", "10.0.0/8", "any"})
    EXPECT_FALSE(ReadIpv4Network(wrong)) << wrong;
  const auto network = ReadIpv4Network("192.168.1.128/25").value();
  EXPECT_TRUE(network.Holds(ReadIpv4("192.168.1.200").value()));
  EXPECT_FALSE(network.Holds(ReadIpv4("192.168.1.127").value()));
  EXPECT_TRUE(ReadIpv4Network("0.0.0.0/0")->Holds(ReadIpv4("203.0.113.9").value()));
}

}  // namespace
}  // namespace ostrel
