// The station in figures, as programs beside it ask for them: one plain struct, filled from memory.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "base/priority.h"
#include "ident/morse_identification.h"
#include "intake/transmit_queue.h"
#include "platform/clock.h"
#include "radio/transmitter.h"
#include "state/transmit_status.h"
#include "station/intake_figures.h"

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
  /// Until the last of them is out, if nothing more comes; nothing for an empty queue, and while
  /// the station is off the air.
  std::optional<milliseconds> outIn;
  std::optional<milliseconds> oldest;  // how long it has waited; nothing when the queue is empty
};

struct DayFigures {
  int files = 0;
  int fills = 0;
  Counts counts;
};

struct Figures {
  std::string name;  // of the station
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
  std::optional<milliseconds> onAirOutIn;  // until its last block is out, as far as that is known
  DayFigures sinceMidnight, sinceStart;
  float compressionRatio = 1;
  std::optional<milliseconds> nextIdentification;
  std::optional<std::int64_t> freeBytes;
  bool intakeIsPaused = false;
  std::optional<RestoredSettings> restored;
  std::string historyTrouble;  // empty: none
  IntakeFigures intake;
  std::optional<milliseconds> silentFor;  // keyed, and nothing is sent
  std::string silentBecause;              // empty while that is not known, or meant to be so
  std::map<std::string, std::string, std::less<>> unusable;  // files, with the reason
};

/// How long it takes until all is out that waits at `p` and more urgently, if nothing more comes.
/// Nothing where nothing waits, and while the station is off the air.
std::optional<milliseconds> TimeUntilOut(const Figures& figures, Priority p);

struct FigureSources {
  Clock& clock;
  Transmitter& transmitter;
  TransmitQueue& queue;
  SetupFields& setup;
  TransmitStatus& status;
  MorseIdentification& morse;
  IntakeCount& intake;
  const ProgramValues& values;
};
Figures FiguresOf(const FigureSources& sources);

/// One that waits, with the time until its last block is out; nothing where none will be, and while
/// the station is off the air.
using EntryCall =
    std::function<void(Priority, const TransmitQueue::Entry&, std::optional<milliseconds> outIn)>;
/// Every entry in the order in which they are sent, at the present rate, pauses and identifications
/// reckoned in, if nothing more comes.
void ForEachEntry(const FigureSources& sources, const EntryCall& call);

}  // namespace ostrel
