#include "engine/transmit_cycle.h"

#include <fmt/format.h>

#include "base/numbers.h"
#include "base/scope_guard.h"
#include "base/text.h"

namespace ostrel {

namespace {

constexpr const char* kProcedure = "Timer";
constexpr int kSameSecond = 99;
constexpr milliseconds kDrainWait{1};
constexpr milliseconds kPauseWait{50};
constexpr int kRatioDecimals = 4;

bool IsStatisticsHour(int hour) {
  return hour % 6 == 0;
}

}  // namespace

template <typename Action>
void TransmitCycle::Step(Action&& action) {
  RunStep(parts_.reporting, kProcedure, std::forward<Action>(action));
}

void TransmitCycle::Tick() {
  if (isInTick_) return;
  isInTick_ = true;
  const ScopeGuard leave([this] { isInTick_ = false; });
  RunTick();
}

void TransmitCycle::RunTick() {
  FollowClockStep();
  const auto now = Calendar(parts_.clock.Now());
  const int s = NewSecond(now);
  if (parts_.engine.timingReadout) ShowTimingReadout(s, now.second);
  parts_.port.Announce(kCyclePeriod);
  if (!IsReady()) {
    return parts_.mainWindow.lblDataRate.Set(DataRateText(PortState::kClosed, parts_.setup));
  }
  if (parts_.values.ingestPath.empty()) return;

  Step([&] { steps_.identify(s); });
  RunDutyCycle();
  if (!IsReady()) return;  // the operator took the port away during a wait
  if (s == 0) {
    Step(steps_.processSchedule);
    parts_.mainWindow.lblFilesSent.Set(fmt::format("{}", parts_.engine.FilesSentInAll()));
  }
  ToggleActivityLight();
  Step(steps_.checkForNewFiles);
  Step(steps_.checkForNewPriFiles);
  Step([this] { parts_.service.CheckPriorityLists(); });
  ShowRates();
  if (s % 15 == 0) CheckBlockCompression();
  if (s == 0 && now.minute == 0 && IsStatisticsHour(now.hour)) {
    WriteStatistics();
    if (now.hour == 0) ResetDailyCounters();
  }
  parts_.output.SendPendingPacket();
}

/// The second that this tick is the first to see, or 99.
int TransmitCycle::NewSecond(const CalendarTime& now) {
  if (now.second == lastSecond_) return kSameSecond;
  return lastSecond_ = now.second;
}

void TransmitCycle::ShowTimingReadout(int newSecond, int second) {
  parts_.mainWindow.lblStatus2.Set(
      fmt::format("{} {} {:04}", newSecond, second, parts_.port.BytesWaiting()));
}

void TransmitCycle::RunDutyCycle() {
  const double minutes = LeadingNumber(parts_.setup.totdown.Get());
  if (!parts_.port.KeyLine1() || minutes <= 0) return;
  const auto crossed = MinuteBoundaries(parts_.engine.TxStart, parts_.clock.Now());
  if (static_cast<double>(crossed) > minutes) Pause();
}

void TransmitCycle::Pause() {
  auto& window = parts_.mainWindow;
  Step([this] { parts_.port.Write("Transmit Timeout"); });
  WaitForDrain();
  const ScopeGuard clearDisplay([&window] {
    window.lblActivefileBackColor.Set(Shade::kLightGrey);
    window.lblActivefile.Set("");
  });
  window.lblActivefileBackColor.Set(Shade::kYellow);
  window.lblActivefile.Set("Paused");
  window.lblBlkPktNum.Set("");
  window.lblBlkPktTot.Set("");
  Step([this] { parts_.port.SetKeyLine1(false); });
  BeginTxStart();
  WaitForPauseEnd();
  BeginTxStart();
  if (!IsReady()) return;
  Step([this] { parts_.port.SetKeyLine1(true); });
  const auto keyUpDelay = LeadingMilliseconds(parts_.setup.txtTxDelay.Get());
  parts_.port.Announce(keyUpDelay);
  parts_.clock.Sleep(keyUpDelay);
}

void TransmitCycle::WaitForDrain() {
  while (parts_.port.BytesWaiting() > 0) {
    parts_.events.ProcessPendingEvents();
    parts_.clock.Sleep(kDrainWait);
  }
}

void TransmitCycle::WaitForPauseEnd() {
  while (IsReady()) {
    FollowClockStep();
    const auto crossed = SecondBoundaries(parts_.engine.TxStart, parts_.clock.Now());
    if (static_cast<double>(crossed) > LeadingNumber(parts_.setup.totup.Get())) return;
    parts_.events.ProcessPendingEvents();
    parts_.port.Announce(kPauseWait);
    parts_.clock.Sleep(kPauseWait);
  }
}

/// A step that the clock made before, in the drain say, is no step of what begins now.
void TransmitCycle::BeginTxStart() {
  clockSteps_.TakeStep();
  parts_.engine.TxStart = parts_.clock.Now();
}

void TransmitCycle::FollowClockStep() {
  parts_.engine.TxStart += clockSteps_.TakeStep();
}

void TransmitCycle::ToggleActivityLight() {
  if (parts_.port.BytesWaiting() == 0 || parts_.engine.port == PortState::kVanished) return;
  auto& light = parts_.mainWindow.imgActivity;
  light.Set(light.Get() == Light::kRed ? Light::kYellow : Light::kRed);
}

void TransmitCycle::ShowRates() {
  const double ratio = parts_.engine.compression.ratio;
  if (ratio <= 0) return;
  auto& window = parts_.mainWindow;
  window.lblCompressionRatio.Set(
      fmt::format("Compression Ratio = {}:1", FormatRounded(ratio, kRatioDecimals)));
  window.lblDataRate.Set(DataRateText(parts_.engine.port, parts_.setup));
  const double rate = LeadingNumber(parts_.setup.lblOutBaud.Get());
  window.lblThroughput.Set(
      fmt::format("Throughput = {} BPS", static_cast<long long>(ratio * rate)));
}

void TransmitCycle::CheckBlockCompression() {
  Step(steps_.refreshCompressList);
  const auto threshold = LeadingNumber(parts_.setup.CompFiles.Get());
  if (threshold <= static_cast<double>(parts_.setup.CompressList.size()))
    Step(steps_.compressBlock);
}

void TransmitCycle::WriteStatistics() {
  const auto log = [this](std::string_view text) { parts_.reporting.WriteLog("Stats", text); };
  log(parts_.mainWindow.lblThroughput.Get());
  log(fmt::format("Fills Sent: {}", parts_.engine.FillsSent));
  log(fmt::format("Files Sent: {}", parts_.engine.FilesSentInAll()));
  for (const Priority p : AllPriorities()) {
    log(fmt::format("Priority {:02} Maximum Count: {}", p.number(), parts_.engine.MaximumCount[p]));
  }
}

void TransmitCycle::ResetDailyCounters() {
  auto& engine = parts_.engine;
  engine.FillsSent = 0;
  engine.FilesSent = {};
  engine.MaximumCount = {};
  engine.compression.compressed = 0;
  engine.compression.uncompressed = 0;
}

}  // namespace ostrel
