// The station in figures, as programs beside it ask for them: one plain struct, filled from memory.
#pragma once

#include <optional>
#include <string>

#include "base/priority.h"
#include "intake/transmit_queue.h"
#include "platform/clock.h"
#include "radio/transmitter.h"
#include "state/transmit_status.h"

namespace ostrel {

enum class StationState {
  kSending,
  kIdle,  // keyed, and no byte waits: the carrier is unmodulated
  kPaused,
  kIdentifying,
  kPortClosed,
  kPortFailed,
  kPortVanished,
};

/// What waits in one queue, the file on the air included until its last block is out.
struct QueueFigures {
  int files = 0;
  std::int64_t bytes = 0;
  std::int64_t blocks = 0;             // that are still to be sent
  std::optional<milliseconds> oldest;  // how long it has waited; nothing when the queue is empty
};

struct DayFigures {
  int files = 0;
  int fills = 0;
  Counts counts;
};

struct Figures {
  std::string version;
  UtcTime now{}, started{};
  StationState state = StationState::kPortClosed;
  milliseconds endsIn{0};  // of a pause or an identification, from now on
  bool isKeyed = false;
  std::string port;  // how it stands, in the station's words
  int rate = 0;      // bits a second, as set
  std::optional<milliseconds> sincePacket, sinceArrival;
  PerPriority<QueueFigures> queues;
  std::optional<BlockOnAir> onAir;
  DayFigures sinceMidnight, sinceStart;
  float compressionRatio = 1;
  std::optional<milliseconds> nextIdentification;
  std::optional<std::int64_t> freeBytes;
  std::optional<milliseconds> packetTime;  // from one packet to the next; nothing off the air
  double pauseFactor = 1;                  // how much longer all takes with the transmit pauses
};

/// About how long it takes until all is out that waits at `p` and more urgently, at the present
/// rate and with the pauses in between, if nothing more comes. Nothing while the station is off the
/// air.
std::optional<milliseconds> TimeUntilOut(const Figures& figures, Priority p);

struct FigureSources {
  Clock& clock;
  Transmitter& transmitter;
  TransmitQueue& queue;
  SetupFields& setup;
  TransmitStatus& status;
};
Figures FiguresOf(const FigureSources& sources);

}  // namespace ostrel
