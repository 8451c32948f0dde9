#include "station/figures.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/about.h"
#include "base/numbers.h"
#include "base/reporting.h"
#include "engine/packet.h"

namespace ostrel {

namespace {

constexpr std::int64_t kBlockBytes = kBlockSize;
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

QueueFigures QueueOf(const FigureSources& from, Priority p) {
  QueueFigures queue;
  const auto now = from.clock.Monotonic();
  for (const auto& entry : from.queue.Entries(p)) {
    ++queue.files;
    queue.bytes += entry.bytes;
    queue.blocks += (entry.bytes + kBlockBytes - 1) / kBlockBytes;
    queue.oldest = std::max(queue.oldest.value_or(milliseconds(0)), now - entry.since);
  }
  const auto& onAir = from.status.block;
  if (onAir && onAir->priority == p)
    queue.blocks -= std::min<std::int64_t>(onAir->number, queue.blocks);
  return queue;
}

double PauseFactor(const FigureSources& from) {
  const double up = LeadingNumber(from.setup.totdown.Get()) * 60;
  if (up <= 0) return 1;
  const std::chrono::duration<double> keyUp = from.transmitter.KeyUpDelay();
  return (up + LeadingNumber(from.setup.totup.Get()) + 1 + keyUp.count()) / up;
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
  for (const Priority p : AllPriorities()) figures.queues[p] = QueueOf(from, p);
  figures.onAir = status.block;
  figures.sinceMidnight = {status.FilesSentInAll(), status.FillsSent, status.sinceMidnight};
  figures.sinceStart = {status.filesSinceStart, status.fillsSinceStart, status.sinceStart};
  figures.compressionRatio = status.compression.ratio;
  figures.nextIdentification = NextIdentification(from);
  figures.freeBytes = status.freeBytes;
  // The fields may have been edited since the port was opened, to what no line is.
  if (from.transmitter.state() == Transmitter::State::kOpen)
    TryStep(
        [&] { figures.packetTime = std::max(from.transmitter.TimeOf(kPacketSize), kCyclePeriod); });
  figures.pauseFactor = PauseFactor(from);
  return figures;
}

std::optional<milliseconds> TimeUntilOut(const Figures& figures, Priority p) {
  if (!figures.packetTime) return std::nullopt;
  std::chrono::duration<double> time{0};
  for (const Priority urgent : AllPriorities()) {
    if (urgent.number() > p.number()) break;
    const auto& queue = figures.queues[urgent];
    // The turn that retires a file sends nothing.
    time += queue.blocks * *figures.packetTime + queue.files * kCyclePeriod;
  }
  return std::chrono::round<milliseconds>(time * figures.pauseFactor);
}

}  // namespace ostrel
