// How the sending stands: what no window shows as a field, but more than one part of the station
// reads.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "base/priority.h"
#include "base/time.h"
#include "state/field.h"

namespace ostrel {

/// The compression's account of the day.
struct CompressionTotals {
  std::int64_t compressed = 0;    // bytes
  std::int64_t uncompressed = 0;  // bytes
  float ratio = 1;
};

/// What the transmitter is used for at this moment.
enum class OnTheAir { kPackets, kPause, kIdentification };

/// What became of products and steps over a stretch of time.
struct Counts {
  int packets = 0;  // written to the port
  int discarded = 0;
  int unmatched = 0;                               // no rule named them
  int purged = 0;                                  // too old before their turn
  int replaced = 0;                                // by a newer one of their product
  std::map<std::string, int, std::less<>> errors;  // reported, by procedure
};

/// A block of a file.
struct BlockOnAir {
  Priority priority{1};
  std::string file;
  long long number = 0, count = 0;
};

/// A settings store that was damaged or gone, in whose place its copy is.
struct RestoredSettings {
  UtcTime at;
  std::string text;
};

struct StartedFile {
  LocalTime at;
  std::string name;
};

struct TransmitStatus {
  bool timingReadout = false;
  LocalTime TxStart{};            // of the present transmit period, or pause
  std::string PendingPacket;      // empty, or one packet
  PerPriority<int> FilesSent;     // since midnight
  PerPriority<int> MaximumCount;  // the longest queue since midnight
  int FillsSent = 0;              // since midnight
  CompressionTotals compression;
  bool intakeIsPaused = false;          // by an operator
  std::deque<StartedFile> LastStarted;  // newest first, a handful

  // What programs beside the station ask for
  UtcTime started{};
  Field<OnTheAir> onTheAir{"onTheAir"};
  milliseconds endsAt{0};              // monotonic: when a pause or an identification is over
  std::optional<BlockOnAir> block;     // the last one that was built, while its file is on the air
  PerPriority<long long> blocksBuilt;  // of the file on the air in each priority
  milliseconds lastTick{0};            // monotonic
  Counts sinceMidnight, sinceStart;
  int filesSinceStart = 0, fillsSinceStart = 0;
  int arrivedSinceStart = 0, sentSinceStart = 0;        // products; sent to their last block
  std::optional<milliseconds> lastPacket, lastArrival;  // monotonic
  std::optional<std::int64_t> freeBytes;     // where the queues lie, a minute ago at most
  std::optional<RestoredSettings> restored;  // in this run
  std::string historyTrouble;                // that its store was damaged, or cannot be written now
  std::string noPacketBecause;  // why the last turn found nothing to send, if it should have
  std::optional<milliseconds>
      silentSince;            // monotonic: keyed and nothing sent; nothing while it is
  std::string silentBecause;  // once it lasts, where something should be sent
  /// What lies in the station's folder and cannot be used, by name, with the reason.
  std::map<std::string, std::string, std::less<>> unusable;

  void Count(int Counts::*what, int count = 1) {
    sinceMidnight.*what += count;
    sinceStart.*what += count;
  }
  void CountError(std::string_view procedure) {
    for (auto* counts : {&sinceMidnight, &sinceStart}) ++counts->errors[std::string(procedure)];
  }

  /// `why` is empty for what can be used. Returns whether that is news.
  bool SetUnusable(std::string_view name, const std::string& why) {
    const auto known = unusable.find(name);
    if (known == unusable.end() ? why.empty() : known->second == why) return false;
    why.empty() ? void(unusable.erase(known)) : void(unusable[std::string(name)] = why);
    return true;
  }

  int FilesSentInAll() const {
    int sum = 0;
    for (const int sent : FilesSent) sum += sent;
    return sum;
  }
};

}  // namespace ostrel
