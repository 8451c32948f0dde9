#include "station/standstill.h"

#include <fmt/format.h>

#include "base/names.h"
#include "base/text.h"

namespace ostrel {

namespace {

/// A file that is being written keeps the scan waiting for a moment.
constexpr milliseconds kBlockedFor{10'000};

std::string BlockedFolder(const Obstacles& obstacles, const Clock& clock) {
  const auto blocking = obstacles.blocking();
  if (!blocking || clock.Monotonic() - blocking->second.since < kBlockedFor) return {};
  const auto& [place, obstacle] = *blocking;
  if (place.ends_with('/')) return "The ingest folder cannot be used. " + obstacle.reason;
  return fmt::format("{} holds up the ingest folder. {}", Printable(FileNameOf(place)),
                     obstacle.reason);
}

}  // namespace

std::string Standstill(const Transmitter& transmitter, const ProgramValues& values,
                       const TransmitStatus& status, const Obstacles& obstacles,
                       const Clock& clock) {
  if (status.started == UtcTime{}) return {};
  switch (transmitter.state()) {
    case Transmitter::State::kOpen:
      if (values.ingestPath.empty())
        return "The ingest path is empty. Nothing is taken and nothing is sent.";
      if (status.intakeIsPaused)
        return "An operator has paused the intake. Received files wait in their folder.";
      if (!status.silentBecause.empty())
        return "The transmitter is keyed and carries nothing. " + status.silentBecause;
      return BlockedFolder(obstacles, clock);
    case Transmitter::State::kVanished:
      return transmitter.PortText() + " Nothing goes on the air until it is back.";
    case Transmitter::State::kClosed:
    case Transmitter::State::kFailed:
      break;
  }
  return transmitter.PortText() + " Nothing goes on the air.";
}

}  // namespace ostrel
