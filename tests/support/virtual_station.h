// The whole station in virtual time, over real files in a folder of its own: drop products, let
// time pass, read what the line carried.
#pragma once

#include <chrono>
#include <filesystem>
#include <fmt/format.h>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/linux_files.h"
#include "platform/linux/sqlite_settings_store.h"
#include "platform/linux/temporary_folder.h"
#include "platform/linux/zip_archives.h"
#include "platform/virtual/virtual_machine.h"
#include "receive/product_assembler.h"
#include "receive/stream_decoder.h"
#include "settings/settings_table.h"
#include "station/station.h"
#include "tests/support/faulty_files.h"

namespace ostrel {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

/// 18 November 2026, 12:00:00 UTC.
inline constexpr UtcTime kNoon =
    std::chrono::sys_days(std::chrono::year(2026) / 11 / 18) + std::chrono::hours(12);

inline Lines Entries(const ListField& list) {
  return {list.begin(), list.end()};
}

class VirtualStation {
 public:
  explicit VirtualStation(UtcTime start = kNoon,
                          std::vector<ZoneRule> zone = {{UtcTime{}, std::chrono::seconds(0)}});
  /// Expects that in all its life no keyed line was left alone for longer than announced.
  virtual ~VirtualStation();

  /// Start-up; rules, settings and files have been laid before. Asserts that it came up.
  void Start();
  /// Starts and puts the first priority on the air for minutes, so that all else waits.
  void StartBusy();
  void Run(milliseconds duration) { machine.loop.RunFor(duration); }
  /// Ends the station, if it runs, and makes another one over the same folder and store, which is
  /// started, or is not yet.
  void Restart();
  void MakeAnew();

  // Before Start
  void Rule(std::size_t list, const std::string& keyword);
  void Set(const std::string& key, const std::string& value, Section section = Section::kSettings);
  void Set(const std::map<std::string, std::string>& settings);

  /// A product as the ingest program drops it.
  void Drop(const std::string& name, const std::string& content);
  void WriteFile(const std::string& path, const std::string& content);
  static std::string ReadFile(const std::string& path);
  /// The names in a folder below the program folder, sorted; hidden ones left out.
  Lines Names(const std::string& folder);
  std::string Path(const std::string& name) const { return folder.path() + "/" + name; }
  std::string InTransmitFolder(const std::string& name) const {
    return Path("KvData/RtXmit/" + name);
  }
  /// Lays a file into a holding folder; it is taken before this returns.
  void Hold(int priority, const std::string& name, const std::string& content);
  Lines Queue(int priority);

  /// What a receiver made of the line so far.
  std::vector<ReceivedPacket> Packets();
  /// The packets as "name block/count", fill files aside.
  Lines Blocks();
  /// Fill files aside.
  std::vector<ReceivedProduct> Products();
  /// The log's lines, without their ends.
  Lines Log();
  /// Lines whose message follows the category `category`.
  Lines LogOf(const std::string& category);
  /// The same without stamp and category; of all categories when there is none.
  Lines Messages(const std::string& category = "");

  SetupFields& setup() { return station->setup(); }
  MainFields& window() { return station->mainFields(); }

  TemporaryFolder folder;
  VirtualMachine machine;
  LinuxFiles realFiles{machine.clock, seconds(60)};  // no tick of virtual time passes meanwhile
  FaultyFiles files{realFiles};
  ZipArchives archives{files, machine.clock};
  SqliteSettingsStores stores{folder.path() + "/KvRegistry.db"};
  std::unique_ptr<Station> station;

 protected:
  /// In the place of the one before, if there is one.
  virtual void MakeStation();
};

/// A product's text of `length` bytes that tells itself from any other.
std::string SampleText(std::size_t length, int seed = 1);

}  // namespace ostrel
