// How much of the line the station uses with a backlog, at each data rate, and what limits it. An
// hour of virtual time a rate, files of eleven blocks.
#include <fmt/format.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

constexpr int kBlocks = 11;

constexpr double kTickSeconds = 0.125;
constexpr double kPacketBytes = 1116;
constexpr double kNearlyDrained = 50;

/// The bytes per second that the rules of the cycle allow at best on a line of `rate` bytes per
/// second: one turn a tick, none while more than 50 bytes wait, and one turn to retire each file.
double CycleLimit(double rate) {
  constexpr int kTicks = 1'000'000;
  double waiting = 0, sent = 0;
  int turn = 0;
  for (int tick = 0; tick < kTicks; ++tick) {
    if (waiting <= kNearlyDrained && ++turn % (kBlocks + 1) != 0) waiting += kPacketBytes;
    const double leaving = std::min(waiting, rate * kTickSeconds);
    waiting -= leaving;
    sent += leaving;
  }
  return sent / (kTicks * kTickSeconds);
}

double MeasuredRate(const std::string& baud) {
  VirtualStation station;
  station.Set("TxUpTime", "0");
  station.Set("CWIDTime", "0");
  station.Set("ComBaud", baud);
  station.Rule(4, "AFD*");
  for (int i = 0; i < 4000; ++i)
    station.Drop("AFD" + std::to_string(i) + ".TXT", SampleText(kBlocks * 1024, i));
  station.Start();
  station.Run(5min);
  const auto before = station.machine.line.carried.size() - station.machine.line.BytesWaiting();
  station.Run(60min);
  const auto after = station.machine.line.carried.size() - station.machine.line.BytesWaiting();
  return static_cast<double>(after - before) / 3600;
}

}  // namespace
}  // namespace ostrel

int main() {
  using namespace ostrel;
  fmt::print("{:>7} {:>10} {:>10} {:>10} {:>9} {:>9}  {}\n", "baud", "line B/s", "limit B/s",
             "sent B/s", "of line", "of limit", "limited by");
  for (const auto* baud : {"1200", "2400", "9600", "19200", "38400", "57600", "115200"}) {
    const double line = std::stod(baud) / 11;
    const double limit = CycleLimit(line);
    const double sent = MeasuredRate(baud);
    fmt::print("{:>7} {:>10.1f} {:>10.1f} {:>10.1f} {:>8.2f}% {:>8.2f}%  {}\n", baud, line, limit,
               sent, 100 * sent / line, 100 * sent / limit,
               line - limit < 0.1 ? "the line" : "the tick");
  }
}
