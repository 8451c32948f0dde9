#include "programs/simulate/simulation.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>

#include "base/failure.h"
#include "base/names.h"
#include "base/text.h"
#include "intake/ingest_scan.h"
#include "intake/rule_matcher.h"
#include "platform/linux/sqlite_settings_store.h"
#include "platform/linux/zip_archives.h"
#include "platform/virtual/memory_files.h"
#include "platform/virtual/virtual_machine.h"
#include "programs/simulate/ledger.h"
#include "receive/packet_reader.h"
#include "station/station.h"

namespace ostrel {

namespace {

constexpr milliseconds kSampleInterval{300'000};
/// A Thursday midnight; the rules of a station do not know the day.
constexpr UtcTime kBeginning = std::chrono::sys_days(std::chrono::year(2026) / 1 / 1);

class Run {
 public:
  Run(const StationCopy& copy, const std::vector<Arrival>& arrivals)
      : copy_(copy), arrivals_(arrivals) {}

  Measures Measure(milliseconds length) {
    Prepare(length);
    if (!station_.Start()) {
      throw Failure(failure_number::kInvalidArgument,
                    "The station does not start: " + machine_.dialogs.messages.back().text);
    }
    if (machine_.line.openings.empty()) {
      throw Failure(failure_number::kInvalidArgument,
                    "The station has no port to send on: " + station_.setup().lblCommMesg.Get());
    }
    machine_.loop.RunFor(length);
    Finish(length);
    station_.Stop();
    return std::move(measures_);
  }

 private:
  void Prepare(milliseconds length) {
    LayStation();
    for (const auto& arrival : arrivals_) {
      if (arrival.at <= length) machine_.clock.At(arrival.at, [&] { Arrive(arrival); });
    }
    for (milliseconds at{0}; at <= length; at += kSampleInterval)
      machine_.clock.At(at, [this] { SampleDepths(); });
    machine_.line.onWrite = [this](std::string_view bytes) { Watch(bytes); };
    for (const Priority p : AllPriorities()) {
      subscriptions_.push_back(station_.mainFields().PriorityList[p].OnChange(
          [this, p](const ListChange& change) { Follow(p, change); }));
    }
  }

  void LayStation() {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(copy_.path())) {
      if (!entry.is_regular_file()) continue;
      std::ifstream file(entry.path(), std::ios::binary);
      files_.Lay(entry.path().string(), std::string(std::istreambuf_iterator<char>(file), {}));
    }
  }

  void Arrive(const Arrival& arrival) {
    const auto path = copy_.IngestFolder() + "/" + arrival.name;
    if (files_.Exists(path)) ledger_.Overwritten(arrival.name);
    files_.Lay(path, arrival.content);
    ++measures_.arrivals;
    const auto target = TargetOf(ToUpper(arrival.name));
    if (!target) {
      ++measures_.ruledOut;
      return;
    }
    Carried carried{arrival.name, arrival.at, static_cast<long long>(arrival.content.size())};
    if (target->list == kCompressList) return ledger_.ArrivedForBlock(std::move(carried));
    ledger_.Arrived(Priority(target->folder()), std::move(carried));
  }

  /// Nothing for what is thrown away or unpacked.
  std::optional<Target> TargetOf(const std::string& name) {
    const bool isUnpacked = station_.values().unZipFiles && IsReceivedArchive(name);
    if (isUnpacked || rules_.DiscardedBy(name)) return std::nullopt;
    return rules_.TargetOf(name);
  }

  void Watch(std::string_view bytes) {
    measures_.bytesOnLine += static_cast<long long>(bytes.size());
    if (bytes.size() != kReceivedPacket) return;
    ++packets_;
    const auto packet = ReadPacket(bytes).packet;
    if (StripExtension(packet.name) == FillProduct()) ++fills_;
    if (packet.block == packet.count)
      ledger_.LastBlockOut(SendingPriority(), machine_.clock.Monotonic() + TimeOfWaitingBytes());
  }

  std::string FillProduct() {
    return ToUpper(StripExtension(FileNameOf(station_.setup().NameAs.Get())));
  }

  void End(Priority p, const Carried& arrival, Outcome fate, milliseconds outAt) {
    if (fate == Outcome::kReplaced) ++measures_.replaced;
    if (fate == Outcome::kPurged) ++measures_.purged;
    if (fate != Outcome::kSent) return;
    auto& measure = measures_.priorities[p];
    ++measures_.sent;
    ++measure.files;
    measure.bytes += arrival.bytes;
    measure.waits.push_back(outAt - arrival.since);
  }

  /// The packet has been handed to the line, which sends what waits before it first.
  milliseconds TimeOfWaitingBytes() {
    const auto settings = ParseLineSettings(machine_.line.openings.back());
    return std::chrono::ceil<milliseconds>(TimeOnLine(settings, machine_.line.BytesWaiting()));
  }

  /// The one that had the turn: the most urgent that is in the middle of a file.
  Priority SendingPriority() {
    for (const Priority p : AllPriorities()) {
      if (station_.queue().IsOnAir(p)) return p;
    }
    return Priority(kPriorityCount);
  }

  void Follow(Priority p, const ListChange& change) {
    const auto& queue = station_.mainFields().PriorityList[p];
    auto& deepest = measures_.priorities[p].deepestQueue;
    deepest = std::max(deepest, queue.size());
    switch (change.kind) {
      case ListChange::Kind::kInserted:
        return ledger_.Listed(p, queue[change.position]);
      case ListChange::Kind::kReplaced:
        return ledger_.Replaced(p, change.position, queue[change.position]);
      case ListChange::Kind::kRemoved:
        return ledger_.Removed(p, change.position);
      case ListChange::Kind::kReset:
        return;  // no queue is ever filled at once
    }
  }

  void SampleDepths() {
    DepthSample sample{machine_.clock.Monotonic(), {}};
    for (const Priority p : AllPriorities())
      sample.depth[p] = station_.mainFields().PriorityList[p].size();
    measures_.depths.push_back(sample);
  }

  void Finish(milliseconds length) {
    const auto settings = ParseLineSettings(machine_.line.openings.back());
    const auto busy = TimeOnLine(settings, static_cast<std::size_t>(measures_.bytesOnLine));
    measures_.length = length;
    measures_.waiting = ledger_.Waiting();
    measures_.lineUse = std::chrono::duration<double>(busy) / std::chrono::duration<double>(length);
    measures_.fillShare = packets_ == 0 ? 0 : static_cast<double>(fills_) / packets_;
    for (auto& priority : measures_.priorities)
      std::sort(priority.waits.begin(), priority.waits.end());
  }

  const StationCopy& copy_;
  const std::vector<Arrival>& arrivals_;
  VirtualMachine machine_{kBeginning};
  MemoryFiles files_{machine_.clock};
  ZipArchives archives_{files_, machine_.clock};
  SqliteSettingsStores stores_{copy_.StorePath()};
  Station station_{machine_.For(copy_.path(), files_, archives_, stores_)};
  RuleMatcher rules_{station_.setup().SetupPriList};
  Ledger ledger_{[this](auto&&... ended) { End(ended...); }};
  std::vector<Subscription> subscriptions_;
  int packets_ = 0;
  int fills_ = 0;
  Measures measures_;
};

}  // namespace

Measures Simulate(const StationCopy& station, const std::vector<Arrival>& arrivals,
                  milliseconds length) {
  return Run(station, arrivals).Measure(length);
}

}  // namespace ostrel
