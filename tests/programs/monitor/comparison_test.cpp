// What the monitor makes of a receiver that does not hear everything.
#include "programs/monitor/comparison.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

#include "receive/datagram_reader.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

constexpr double kOnTheWay = 1.3;  // seconds at 9600 bits a second, and some for the radio

/// A busy station in virtual time, with long pauses and identifications; its datagrams, and its
/// line behind a channel that drops packets.
struct Channel {
  Channel() {
    station.Set({{"PacketHost", "True"}, {"TxUpTime", "1"}, {"TxDownTime", "45"}});
    station.Set({{"CWIDTime", "3"}, {"CWSpeed", "5"}, {"ComBaud", "9600"}});
    station.Rule(4, "AFD*");
    station.machine.line.onWrite = [this](std::string_view bytes) { Carry(bytes); };
    station.Start();
  }

  double Now() const {
    return std::chrono::duration<double>(station.machine.clock.Monotonic()).count();
  }

  void Carry(std::string_view bytes) {
    for (const auto& event : decoder.Feed(bytes)) {
      const auto* const packet = std::get_if<ReceivedPacket>(&event);
      if (packet == nullptr) continue;
      const bool isDropped = std::bernoulli_distribution(drops)(random);
      sent += 1;
      dropped += isDropped;
      if (isDropped) hit.insert(packet->name);
      if (!isDropped) onTheWay.emplace_back(Now() + kOnTheWay, *packet);
    }
  }

  void Run(milliseconds length) {
    for (const auto end = Now() + std::chrono::duration<double>(length).count(); Now() < end;) {
      if (station.Queue(5).size() < 2) {
        ++number;
        station.Drop(fmt::format("AFD{}.TXT", number), SampleText(5000, number));
      }
      station.Run(125ms);
      for (auto& datagrams = station.machine.datagrams.sent; told < datagrams.size(); ++told)
        onTheNet.emplace_back(Now() + netDelay, datagrams[told]);
      for (; !onTheNet.empty() && onTheNet.front().first <= Now(); onTheNet.pop_front())
        comparison.Sent(std::get<ReceivedPacket>(*ReadDatagram(onTheNet.front().second)), Now());
      for (; !onTheWay.empty() && onTheWay.front().first <= Now(); onTheWay.pop_front())
        comparison.Heard(onTheWay.front().second, Now());
      comparison.Look(Now());
      if (comparison.unheardSince())
        longestUnheard = std::max(longestUnheard, Now() - *comparison.unheardSince());
    }
  }

  VirtualStation station;
  StreamDecoder decoder;
  std::mt19937 random{7};
  std::deque<std::pair<double, ReceivedPacket>> onTheWay;
  std::deque<std::pair<double, std::string>> onTheNet;
  std::size_t told = 0;
  int number = 0, sent = 0, dropped = 0;
  double drops = 0, netDelay = 0, longestUnheard = 0;
  std::set<std::string> hit, broken;  // products that a drop hit, and that were told
  Comparison comparison{[this](const std::string& name) { broken.insert(name); }};
};

TEST(Comparison, SaysTheShareThatTheChannelDrops) {
  for (const auto& [share, netDelay] : {std::pair{0.0, 0.0}, {0.02, 3.0}, {0.3, 0.0}}) {
    SCOPED_TRACE(fmt::format("{} dropped, datagrams {} s late", share, netDelay));
    Channel channel;
    channel.drops = share;
    channel.netDelay = netDelay;
    channel.Run(30min);
    const auto& comparison = channel.comparison;
    EXPECT_GT(channel.sent, 500);
    EXPECT_NEAR(comparison.all().LossPercent(), 100.0 * channel.dropped / channel.sent, 0.5);
    EXPECT_EQ(comparison.strangers(), 0);
    // The last ones are still under way.
    for (const auto& name : channel.broken) EXPECT_TRUE(channel.hit.contains(name)) << name;
    EXPECT_NEAR(static_cast<double>(channel.broken.size()), static_cast<double>(channel.hit.size()),
                3);
    EXPECT_EQ(comparison.brokenProducts() > 0, share > 0);
    EXPECT_TRUE(share > 0 || channel.longestUnheard < 2) << "pauses and identifications";
  }
}

TEST(Comparison, TellsASilenceUntilSomethingIsHeardAgainOrTheStationEnds) {
  Channel channel;
  auto& comparison = channel.comparison;
  channel.Run(5min);
  EXPECT_EQ(comparison.LastHour(channel.Now()).lost, 0);
  channel.drops = 1;
  channel.Run(10min);
  EXPECT_GT(channel.Now() - *comparison.unheardSince(), 590);
  EXPECT_GT(channel.Now() - *comparison.lastHeard(), 590);
  EXPECT_GT(comparison.LastHour(channel.Now()).LossPercent(), 50);
  EXPECT_EQ(comparison.LastHour(channel.Now() + 3601).lost, 0);
  channel.drops = 0;
  channel.Run(3min);
  EXPECT_FALSE(comparison.unheardSince() && channel.Now() - *comparison.unheardSince() > 2);
  const ReceivedPacket last{"LAST.TXT", 1, 1, "", ""};
  comparison.Sent(last, channel.Now());
  comparison.Heard(last, channel.Now() + 11);
  EXPECT_NEAR(*comparison.lastDelay(), 11, 1e-6);
  comparison.Sent({"CUT.TXT", 1, 1, "", ""}, channel.Now());
  comparison.Ended();
  EXPECT_FALSE(comparison.unheardSince());
  comparison.Heard({"OTHER.TXT", 1, 1, "", ""}, channel.Now());
  comparison.Look(channel.Now() + 11);
  EXPECT_EQ(comparison.strangers(), 1);
}

}  // namespace
}  // namespace ostrel
