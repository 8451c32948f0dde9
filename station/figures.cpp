#include "station/figures.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

#include "base/about.h"
#include "base/numbers.h"
#include "base/reporting.h"
#include "engine/packet.h"
#include "engine/queue_service.h"
#include "station/forecast.h"

namespace ostrel {

namespace {

constexpr int kCountdownSecond = 30;  // of the minute: where TimeLeft goes down

StationState StateOf(const FigureSources& from) {
  switch (from.transmitter.state()) {
    case Transmitter::State::kClosed:
      return StationState::kPortClosed;
    case Transmitter::State::kFailed:
      return StationState::kPortFailed;
    case Transmitter::State::kVanished:
      return StationState::kPortVanished;
    case Transmitter::State::kOpen:
      break;
  }
  switch (from.status.onTheAir.Get()) {
    case OnTheAir::kPause:
      return StationState::kPaused;
    case OnTheAir::kIdentification:
      return StationState::kIdentifying;
    case OnTheAir::kPackets:
      break;
  }
  const bool isBetweenBlocks = from.status.block.has_value();
  return isBetweenBlocks || from.transmitter.IsSending() ? StationState::kSending
                                                         : StationState::kIdle;
}

/// When the tick after this moment comes, from now.
milliseconds NextTick(const FigureSources& from) {
  const auto since = from.clock.Monotonic() - from.status.lastTick;
  return kCyclePeriod - since % kCyclePeriod;
}

/// Nothing while the station is off the air. The fields may have been edited since the port was
/// opened, to what no line is.
std::optional<Outlook> OutlookOf(const FigureSources& from) {
  if (from.transmitter.state() != Transmitter::State::kOpen) return std::nullopt;
  const auto& setup = from.setup;
  Outlook outlook;
  const auto measure = [&] {
    outlook.packet = from.transmitter.TimeOf(kPacketSize);
    outlook.nearlyDrained = from.transmitter.TimeOf(kNearlyDrained);
    outlook.pauseText = from.transmitter.TimeOf(Transmitter::kPauseText.size());
    outlook.waiting = from.transmitter.TimeOf(from.transmitter.BytesWaiting());
  };
  if (!TryStep(measure)) return std::nullopt;
  outlook.now = from.clock.Now();
  outlook.nextTick = NextTick(from);
  outlook.txStart = from.status.TxStart;
  outlook.upMinutes = LeadingNumber(setup.totdown.Get());
  outlook.downSeconds = LeadingNumber(setup.totup.Get());
  outlook.keyUp = from.transmitter.KeyUpDelay();
  if (from.status.onTheAir.Get() != OnTheAir::kPackets) {
    const auto left = std::max(from.status.endsAt - from.clock.Monotonic(), milliseconds(1));
    outlook.blockedFor = left;
    outlook.isPausing = from.status.onTheAir.Get() == OnTheAir::kPause;
    if (outlook.isPausing) outlook.txStart = outlook.now + left - from.transmitter.KeyUpDelay();
  }
  const auto wholeMinutes = [](const Field<std::string>& field) {
    return static_cast<int>(std::ceil(std::clamp(LeadingNumber(field.Get()), 0.0, 1e6)));
  };
  outlook.interval = wholeMinutes(setup.IDTime);
  outlook.countdown = wholeMinutes(setup.TimeLeft);
  if (outlook.interval > 0) outlook.identification = from.morse.Length();
  return outlook;
}

std::int64_t BlocksLeft(const FigureSources& from, Priority p, const TransmitQueue::Entry& entry) {
  const auto blocks = BlockCount(entry.bytes);
  if (entry.state != TransmitQueue::State::kOnAir) return entry.hasFile ? blocks : 0;
  return std::max<std::int64_t>(blocks - from.status.blocksBuilt[p], 0);
}

void CountQueues(const FigureSources& from, Figures& figures) {
  const auto now = from.clock.Monotonic();
  ForEachEntry(
      from, [&](Priority p, const TransmitQueue::Entry& entry, std::optional<milliseconds> outIn) {
        auto& queue = figures.queues[p];
        ++queue.files;
        queue.bytes += entry.bytes;
        queue.oldest = std::max(queue.oldest.value_or(milliseconds(0)), now - entry.since);
        if (outIn) queue.outIn = outIn;
        const bool isOnAir = figures.onAir && figures.onAir->priority == p;
        if (isOnAir && entry.state == TransmitQueue::State::kOnAir) figures.onAirOutIn = outIn;
      });
}

/// The countdown is in minutes and goes down at a fixed second.
std::optional<milliseconds> NextIdentification(const FigureSources& from) {
  if (LeadingNumber(from.setup.IDTime.Get()) <= 0) return std::nullopt;
  const int minutes = std::max(LeadingInteger(from.setup.TimeLeft.Get()), 0);
  if (minutes == 0) return milliseconds(0);
  const int second = Calendar(from.clock.Now()).second;
  const int toNext = (kCountdownSecond - second + 59) % 60 + 1;
  return seconds(60 * (minutes - 1) + toNext);
}

}  // namespace

Figures FiguresOf(const FigureSources& from) {
  const auto& status = from.status;
  const auto now = from.clock.Monotonic();
  const auto since = [now](std::optional<milliseconds> moment) {
    if (moment) moment = now - *moment;
    return moment;
  };
  Figures figures;
  figures.name = from.values.Name();
  figures.version = fmt::format("{}.{}.{}", kVersionMajor, kVersionMinor, kVersionBuild);
  figures.now = from.clock.UtcNow();
  figures.started = status.started;
  figures.state = StateOf(from);
  if (status.onTheAir.Get() != OnTheAir::kPackets)
    figures.endsIn = std::max(status.endsAt - now, milliseconds(0));
  figures.isKeyed = from.transmitter.IsKeyed();
  figures.port = from.setup.lblCommMesg.Get();
  figures.rate = LeadingInteger(from.setup.lblOutBaud.Get());
  figures.sincePacket = since(status.lastPacket);
  figures.sinceArrival = since(status.lastArrival);
  figures.onAir = status.block;
  CountQueues(from, figures);
  figures.sinceMidnight = {status.FilesSentInAll(), status.FillsSent, status.sinceMidnight};
  figures.sinceStart = {status.filesSinceStart, status.fillsSinceStart, status.sinceStart};
  figures.compressionRatio = status.compression.ratio;
  figures.nextIdentification = NextIdentification(from);
  figures.freeBytes = status.freeBytes;
  figures.intakeIsPaused = status.intakeIsPaused;
  figures.restored = status.restored;
  figures.historyTrouble = status.historyTrouble;
  figures.intake = from.intake.Look();
  if (figures.state == StationState::kIdle && figures.isKeyed) {
    figures.silentFor = since(status.silentSince);
    figures.silentBecause = status.silentBecause;
  }
  figures.unusable = status.unusable;
  return figures;
}

std::optional<milliseconds> TimeUntilOut(const Figures& figures, Priority p) {
  std::optional<milliseconds> time;
  for (const Priority urgent : AllPriorities()) {
    if (urgent.number() <= p.number() && figures.queues[urgent].outIn)
      time = figures.queues[urgent].outIn;
  }
  return time;
}

void ForEachEntry(const FigureSources& sources, const EntryCall& call) {
  const auto outlook = OutlookOf(sources);
  std::optional<Forecast> forecast;
  if (outlook) forecast.emplace(*outlook);
  for (const Priority p : AllPriorities()) {
    for (const auto& entry : sources.queue.Entries(p)) {
      std::optional<milliseconds> outIn;
      if (forecast) {
        const auto out = forecast->Send(BlocksLeft(sources, p, entry));
        if (out && (entry.hasFile || entry.state == TransmitQueue::State::kOnAir))
          outIn = std::chrono::round<milliseconds>(std::max(*out, nanoseconds(0)));
      }
      call(p, entry, outIn);
    }
  }
}

}  // namespace ostrel
