#include "engine/transmit_cycle.h"

#include <fmt/format.h>

#include "base/numbers.h"
#include "base/scope_guard.h"
#include "base/text.h"

namespace ostrel {

namespace {

constexpr const char* kProcedure = "Timer";
constexpr int kSameSecond = 99;
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
  parts_.status.lastTick = parts_.clock.Monotonic();
  const auto now = Calendar(parts_.clock.Now());
  const int s = NewSecond(now);
  if (parts_.status.timingReadout) ShowTimingReadout(s, now.second);
  parts_.transmitter.Announce(kCyclePeriod);
  if (!IsReady()) return parts_.transmitter.ShowNoPort();
  if (parts_.values.ingestPath.empty()) return;

  Step([&] { parts_.morse.CountDown(s); });
  RunDutyCycle();
  if (!IsReady()) return;  // the operator took the port away during a wait
  if (s == 0) {
    Step([this] { parts_.schedule.ProcessSchedule(); });
    parts_.mainFields.lblFilesSent.Set(fmt::format("{}", parts_.status.FilesSentInAll()));
  } else {
    Step([this] { parts_.schedule.ProcessWaiting(); });
  }
  ToggleActivityLight();
  Step([this] { parts_.scan.CheckForNewFiles(); });
  Step([this] { parts_.intake.CheckForNewPriFiles(); });
  Step([this] { parts_.service.CheckPriorityLists(); });
  ShowRates();
  if (s % 15 == 0) CheckBlockCompression();
  if (s == 0 && now.minute == 0 && IsStatisticsHour(now.hour)) {
    WriteStatistics();
    if (now.hour == 0) ResetDailyCounters();
  }
  SendPendingPacket();
  parts_.silence.Look();
}

void TransmitCycle::SendPendingPacket() {
  auto& packet = parts_.status.PendingPacket;
  if (packet.empty()) return;
  parts_.outputs.Send(packet);
  packet.clear();
  parts_.status.Count(&Counts::packets);
  parts_.status.lastPacket = parts_.clock.Monotonic();
}

/// The second that this tick is the first to see, or 99.
int TransmitCycle::NewSecond(const CalendarTime& now) {
  if (now.second == lastSecond_) return kSameSecond;
  return lastSecond_ = now.second;
}

void TransmitCycle::ShowTimingReadout(int newSecond, int second) {
  parts_.mainFields.lblStatus2.Set(
      fmt::format("{} {} {:04}", newSecond, second, parts_.transmitter.BytesWaiting()));
}

void TransmitCycle::RunDutyCycle() {
  const double minutes = LeadingNumber(parts_.setup.totdown.Get());
  if (!parts_.transmitter.IsKeyed() || minutes <= 0) return;
  const auto crossed = MinuteBoundaries(parts_.status.TxStart, parts_.clock.Now());
  if (static_cast<double>(crossed) > minutes) Pause();
}

void TransmitCycle::Pause() {
  auto& window = parts_.mainFields;
  auto& transmitter = parts_.transmitter;
  Step([&] { transmitter.Send(std::string(Transmitter::kPauseText)); });
  transmitter.Drain();
  const ScopeGuard clearDisplay([&window, this] {
    parts_.status.onTheAir.Set(OnTheAir::kPackets);
    window.lblActivefileBackColor.Set(Shade::kLightGrey);
    window.lblActivefile.Set("");
  });
  window.lblActivefileBackColor.Set(Shade::kYellow);
  window.lblActivefile.Set("Paused");
  window.lblBlkPktNum.Set("");
  window.lblBlkPktTot.Set("");
  Step([&] { transmitter.Rest(); });
  parts_.status.endsAt = parts_.clock.Monotonic() + PauseLength();
  parts_.status.onTheAir.Set(OnTheAir::kPause);
  BeginTxStart();
  WaitForPauseEnd();
  BeginTxStart();
  if (!IsReady()) return;
  Step([&] { transmitter.Rise(); });
  transmitter.Hold(transmitter.KeyUpDelay());
}

/// At most: the boundary of the last second may come sooner.
milliseconds TransmitCycle::PauseLength() const {
  const seconds boundaries(LeadingInteger(parts_.setup.totup.Get()) + 1);
  return boundaries + parts_.transmitter.KeyUpDelay();
}

void TransmitCycle::WaitForPauseEnd() {
  while (IsReady()) {
    FollowClockStep();
    const auto crossed = SecondBoundaries(parts_.status.TxStart, parts_.clock.Now());
    if (static_cast<double>(crossed) > LeadingNumber(parts_.setup.totup.Get())) return;
    parts_.events.ProcessPendingEvents();
    parts_.transmitter.Hold(kPauseWait);
  }
}

/// A step that the clock made before, in the drain say, does not count for the new period.
void TransmitCycle::BeginTxStart() {
  clockSteps_.TakeStep();
  parts_.status.TxStart = parts_.clock.Now();
}

void TransmitCycle::FollowClockStep() {
  parts_.status.TxStart += clockSteps_.TakeStep();
}

void TransmitCycle::ToggleActivityLight() {
  if (!parts_.transmitter.IsSending()) return;
  auto& light = parts_.mainFields.imgActivity;
  light.Set(light.Get() == Light::kRed ? Light::kYellow : Light::kRed);
}

void TransmitCycle::ShowRates() {
  const double ratio = parts_.status.compression.ratio;
  if (ratio <= 0) return;
  auto& window = parts_.mainFields;
  window.lblCompressionRatio.Set(
      fmt::format("Compression Ratio = {}:1", FormatRounded(ratio, kRatioDecimals)));
  parts_.transmitter.ShowDataRate();
  const double rate = LeadingNumber(parts_.setup.lblOutBaud.Get());
  window.lblThroughput.Set(
      fmt::format("Throughput = {} BPS", static_cast<long long>(ratio * rate)));
}

void TransmitCycle::CheckBlockCompression() {
  Step([this] { parts_.compression.RefreshCompressList(); });
  const auto threshold = LeadingNumber(parts_.setup.CompFiles.Get());
  if (threshold <= static_cast<double>(parts_.setup.CompressList.size()))
    Step([this] { parts_.compression.CompressBlock(); });
}

void TransmitCycle::WriteStatistics() {
  const auto log = [this](std::string_view text) { parts_.reporting.WriteLog("Stats", text); };
  log(parts_.mainFields.lblThroughput.Get());
  log(fmt::format("Fills Sent: {}", parts_.status.FillsSent));
  log(fmt::format("Files Sent: {}", parts_.status.FilesSentInAll()));
  for (const Priority p : AllPriorities()) {
    log(fmt::format("Priority {:02} Maximum Count: {}", p.number(), parts_.status.MaximumCount[p]));
  }
}

void TransmitCycle::ResetDailyCounters() {
  auto& status = parts_.status;
  status.FillsSent = 0;
  status.FilesSent = {};
  status.MaximumCount = {};
  status.sinceMidnight = {};
  status.compression.compressed = 0;
  status.compression.uncompressed = 0;
}

}  // namespace ostrel
