// What the station says of the future, against what the line carries then.
#include <gtest/gtest.h>
#include <random>

#include "receive/packet_reader.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

constexpr int kProducts = 200;

/// Each product by its name, and when it is out.
using Times = std::map<std::string, milliseconds>;

struct WatchedStation : VirtualStation {
  WatchedStation(const std::string& baud, const std::string& upTime, const std::string& interval) {
    Set({{"ComBaud", baud},
         {"TxUpTime", upTime},
         {"CWIDTime", interval},
         {"CWIDText", "DE N0CALL"},
         {"PurgeTime", "0"}});
    Start();
    std::mt19937 random(7);
    for (int i = 0; i < kProducts; ++i) {
      const auto path = fmt::format("KvData/RtPri{}/P{}.TXT", random() % 10 + 1, i);
      WriteFile(Path(path), SampleText(random() % (baud == "1200" ? 3000 : 9000) + 1, i));
    }
    machine.line.onWrite = [this](std::string_view bytes) {
      if (bytes.size() != kReceivedPacket) return;
      const auto packet = ReadPacket(bytes).packet;
      const auto waiting =
          TimeOnLine(ParseLineSettings(machine.line.openings.back()), machine.line.BytesWaiting());
      if (packet.block == packet.count)
        out[packet.name] = machine.clock.Monotonic() + std::chrono::ceil<milliseconds>(waiting);
    };
    Run(10s);
  }
  Times Foretell() {
    Times times;
    station->ForEachEntry(
        [&](Priority, const TransmitQueue::Entry& entry, std::optional<milliseconds> outIn) {
          times[entry.name] = machine.clock.Monotonic() + outIn.value();
        });
    return times;
  }
  void Compare(const Times& told, milliseconds packet) {
    EXPECT_GE(told.size(), 90U);
    for (const auto& [name, time] : told) {
      if (name == "FILLFILE.TXT") continue;
      ASSERT_TRUE(out.contains(name)) << name;
      EXPECT_LE(std::chrono::abs(time - out[name]), packet) << name;
    }
  }
  Times out;
};

TEST(Forecast, IsRightWithinOnePacketThroughPausesAndIdentifications) {
  const struct {
    const char *baud, *upTime, *interval;
    milliseconds packet;
  } cases[] = {{"1200", "9", "15", 10230ms},
               {"9600", "1", "4", 1279ms},
               {"38400", "1", "2", 320ms},
               {"9600", "0.5", "1", 1279ms},
               {"1200", "0", "0", 10230ms}};
  for (const auto& [baud, upTime, interval, packet] : cases) {
    SCOPED_TRACE(fmt::format("{} bits a second, {} and {} minutes", baud, upTime, interval));
    WatchedStation station(baud, upTime, interval);
    Times inPause;
    const auto hear = station.station->status().onTheAir.OnChange([&](OnTheAir use) {
      if (use == OnTheAir::kPause && station.out.size() > 20 && inPause.empty())
        inPause = station.Foretell();
    });
    const auto atFirst = station.Foretell();
    milliseconds last{0};
    for (const auto& [name, time] : atFirst) last = std::max(last, time);
    station.Run((last - station.machine.clock.Monotonic()) / 3);
    const auto later = station.Foretell();
    station.Run(last - station.machine.clock.Monotonic() + 1min);
    station.Compare(atFirst, packet);
    station.Compare(later, packet);
    if (!inPause.empty()) station.Compare(inPause, packet);
  }
}

}  // namespace
}  // namespace ostrel
