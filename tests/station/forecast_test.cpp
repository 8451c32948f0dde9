// What the station says of the future, against what the line carries then.
#include "station/forecast.h"

#include <gtest/gtest.h>
#include <random>

#include "receive/packet_reader.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

/// Each product by its name, and when it is out.
using Times = std::map<std::string, milliseconds>;

struct WatchedStation : VirtualStation {
  WatchedStation(const std::string& baud, const std::string& upTime, const std::string& interval,
                 const std::string& keyUp, int count)
      : products(count) {
    Set({{"ComBaud", baud},
         {"TxUpTime", "0"},
         {"CWIDTime", interval},
         {"CWIDText", "DE N0CALL"},
         {"PurgeTime", "0"}});
    Start();
    std::mt19937 random(7);
    for (int i = 0; i < products; ++i) {
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
    setup().totdown.Set(upTime);
    setup().txtTxDelay.Set(keyUp);
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
    EXPECT_GE(static_cast<int>(told.size()), products / 4);
    for (const auto& [name, time] : told) {
      if (name == "FILLFILE.TXT") continue;
      ASSERT_TRUE(out.contains(name)) << name;
      EXPECT_LE(std::chrono::abs(time - out[name]), packet) << name;
    }
  }
  int products;
  Times out;
};

TEST(Forecast, IsRightWithinOnePacketThroughPausesAndIdentifications) {
  const struct {
    const char *baud, *upTime, *interval;
    milliseconds packet;
    const char* keyUp = "300";
    int products = 200;
  } cases[] = {{"1200", "9", "15", 10230ms},
               {"9600", "1", "4", 1279ms},
               {"38400", "1", "2", 320ms},
               {"9600", "0.5", "1", 1279ms},
               {"38400", "0.5", "0", 320ms, "62000", 60},  // a pause before each packet
               {"1200", "0", "0", 10230ms}};
  for (const auto& [baud, upTime, interval, packet, keyUp, products] : cases) {
    SCOPED_TRACE(fmt::format("{} bits a second, {} and {} minutes", baud, upTime, interval));
    WatchedStation station(baud, upTime, interval, keyUp, products);
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

TEST(Forecast, EndsWhateverIsSet) {
  Outlook outlook{.packet = 1s};
  for (const double upMinutes : {0.0, 1e-9, 0.5, 2e8, 1e300}) {
    for (const double downSeconds : {-5.0, 1e300}) {
      for (const milliseconds length : {0ms, 60'000ms, 2'147'483'647ms}) {
        outlook.upMinutes = upMinutes;
        outlook.downSeconds = downSeconds;
        outlook.keyUp = outlook.identification = length;
        outlook.interval = length > 0ms;
        const auto out = Forecast(outlook).Send(3);
        EXPECT_TRUE(!out || *out >= 3s);
        EXPECT_TRUE(out || upMinutes > 0 || length > 0ms);
      }
    }
  }
}

}  // namespace
}  // namespace ostrel
