// A day on the air: thousands of arrivals at 1200 baud, across midnight, with pauses,
// identifications and statistics.
#include <gtest/gtest.h>
#include <map>
#include <random>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

constexpr int kArrivals = 3000;

struct Sent {
  int files = 0;
  int fills = 0;
};

/// Packets that begin a file are files started; the fill file is counted apart.
Sent CountStarts(const std::vector<ReceivedPacket>& packets) {
  Sent sent;
  for (const auto& packet : packets) {
    if (packet.block != 1) continue;
    ++sent.files;
    if (packet.name == "FILLFILE.TXT") ++sent.fills;
  }
  return sent;
}

int NumberBehind(const std::string& line, const std::string& label) {
  const auto at = line.find(label);
  return at == std::string::npos ? -1 : std::stoi(line.substr(at + label.size()));
}

int Statistic(VirtualStation& station, const std::string& stamp, const std::string& label) {
  for (const auto& line : station.LogOf("Stats")) {
    if (line.rfind(stamp, 0) == 0 && NumberBehind(line, label) >= 0)
      return NumberBehind(line, label);
  }
  return -1;
}

/// Every drop of the transmitter outside an identification comes right behind the pause text.
int CountPauses(const std::vector<StreamEvent>& events) {
  int pauses = 0;
  for (const auto& event : events) pauses += std::holds_alternative<PauseText>(event);
  return pauses;
}

TEST(Day, ThreeThousandProductsGoOutWholeAndTheFiguresAddUp) {
  VirtualStation station;
  station.Rule(0, "TOR*");
  station.Rule(4, "AFD*");
  station.Rule(8, "SAT*");
  station.Start();
  std::mt19937 random(7);
  const auto between = [&](long long low, long long high) {
    return std::uniform_int_distribution<long long>(low, high)(random);
  };
  std::map<std::string, std::string> dropped;
  for (int i = 0; i < kArrivals; ++i) {
    const auto* kind = i % 100 == 0 ? "SAT" : i % 10 == 0 ? "TOR" : "AFD";
    const auto name = kind + std::to_string(10000 + i) + ".TXT";
    const auto content = SampleText(static_cast<std::size_t>(between(100, 2500)), i);
    dropped[name] = content;
    station.machine.clock.At(milliseconds(between(0, 85'000'000)),
                             [&station, name, content] { station.Drop(name, content); });
  }
  // From noon to noon, and the pause that stands before the last statistics.
  station.Run(24h + 30s);

  int received = 0;
  for (const auto& product : station.Products()) {
    if (product.name == "FILLFILE.TXT") continue;
    ++received;
    ASSERT_EQ(product.data, dropped[product.name]) << product.name;
  }
  EXPECT_EQ(received, kArrivals);

  // Until midnight and from midnight on the counters and the wire agree, but for what was under
  // way.
  const auto sent = CountStarts(station.Packets());
  const int files = Statistic(station, "11/19/26 00:00:", "Files Sent: ") +
                    Statistic(station, "11/19/26 12:00:", "Files Sent: ");
  const int fills = Statistic(station, "11/19/26 00:00:", "Fills Sent: ") +
                    Statistic(station, "11/19/26 12:00:", "Fills Sent: ");
  EXPECT_GT(files, kArrivals);
  EXPECT_NEAR(files, sent.files, 40);
  EXPECT_NEAR(fills, sent.fills, 20);
  EXPECT_EQ(station.LogOf("Stats").size(), 4u * 13);
  // A period ends at its tenth minute boundary: a pause every ten minutes.
  EXPECT_EQ(CountPauses(station.Events()), 144);
  EXPECT_EQ(station.Names("KvData/RtXmit"), std::vector<std::string>{});
}

}  // namespace
}  // namespace ostrel
