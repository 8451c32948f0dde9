// The whole feed of a station: its sources, the road to the ingest folder, what is published. Runs
// in the application's event loop.
#pragma once

#include <QSocketNotifier>
#include <QTimer>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "feed/delivery.h"
#include "feed/feed_book.h"
#include "feed/feed_config.h"
#include "feed/feed_memory.h"
#include "feed/source.h"
#include "platform/linux/linux_clock.h"
#include "platform/linux/linux_files.h"
#include "platform/linux/linux_instance_lock.h"
#include "platform/linux/stop_signal.h"
#include "platform/linux/zip_archives.h"

namespace ostrel {

/// Which of the sources in the configuration run: the station's dialog offers the serial ones apart
/// from all others.
enum class SourceKinds { kAll, kSerial, kOthers };

class Feed {
 public:
  /// The feed of the station in that folder, by its Feed.toml; with `isSpoken` its log goes to
  /// standard error as well. Throws std::runtime_error when there is nothing it could do, or
  /// Failure: no or a wrong configuration, no source of these kinds, another feed at work.
  Feed(const std::string& station, SourceKinds kinds, bool isSpoken);
  ~Feed();

  /// Finishes what the last run had begun, and begins. A signal to stop ends the application's
  /// loop.
  void Start();
  FeedFigures Figures() const { return book_->Figures(); }
  const FeedConfig& config() const { return config_; }

 private:
  void MakeOwnFolders() const;
  void OpenMemory();
  void AddSources(SourceKinds kinds);
  void Add(const SourceSettings& settings);
  std::string IngestFolder();

  std::string station_, folder_;
  FeedConfig config_;
  Areas areas_;
  AreaRules areaRules_;
  StopSignal stop_;
  LinuxClock clock_{stop_};
  LinuxFiles files_{clock_};
  ZipArchives archives_{files_, clock_};
  std::optional<LinuxInstanceLock> lock_;
  std::optional<FeedBook> book_;
  std::optional<FeedMemory> memory_;
  std::optional<Delivery> delivery_;
  std::string ingestFolder_;  // as last read from the station's settings
  std::vector<std::unique_ptr<Source>> sources_;
  QTimer again_;
  QSocketNotifier stopNotifier_;
};

/// Where the configuration of a station's feed lies.
std::string FeedConfigPath(const std::string& station);

}  // namespace ostrel
