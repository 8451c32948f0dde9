#include "feed/feed.h"

#include <QCoreApplication>
#include <fmt/format.h>
#include <stdexcept>

#include "base/failure.h"
#include "base/names.h"
#include "feed/broker_source.h"
#include "feed/folder_source.h"
#include "feed/packet_source.h"
#include "feed/placing.h"
#include "platform/linux/sqlite_settings_store.h"
#include "settings/settings_table.h"

namespace ostrel {
namespace {

constexpr const char* kStore = "KvRegistry.db";
constexpr std::chrono::seconds kAgain{2};

bool IsAmong(const SourceSettings& settings, SourceKinds kinds) {
  const bool isSerial = std::holds_alternative<SerialSettings>(settings);
  return kinds == SourceKinds::kAll || isSerial == (kinds == SourceKinds::kSerial);
}

FeedMemory::Time Now() {
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

}  // namespace

std::string FeedConfigPath(const std::string& station) {
  return JoinPath(station, "Feed.toml");
}

Feed::Feed(const std::string& station, SourceKinds kinds, bool isSpoken)
    : station_(station),
      folder_(FeedFolder(station)),
      config_(ReadFeedConfig(FeedConfigPath(station), station)),
      areas_(AreasOf(station)),
      areaRules_(config_.areas, areas_),
      stopNotifier_(stop_.Descriptor(), QSocketNotifier::Read) {
  MakeOwnFolders();
  lock_.emplace(folder_);
  if (!lock_->TryLock()) throw std::runtime_error("Another feed of this station is at work.");
  book_.emplace(JoinPath(folder_, "FeedLog.txt"), isSpoken);
  OpenMemory();
  const auto outbox = config_.publish ? JoinPath(folder_, "outbox") : std::string{};
  delivery_.emplace(Delivery::Parts{.memory = *memory_,
                                    .book = *book_,
                                    .now = Now,
                                    .ingestFolder = [this] { return IngestFolder(); },
                                    .unknownFolder = config_.unknownFolder,
                                    .outbox = outbox,
                                    .repeats = config_.repeats,
                                    .largest = config_.largest,
                                    .areas = &areaRules_},
                    NameRules(config_.names));
  AddSources(kinds);
  if (config_.publish)
    sources_.push_back(
        std::make_unique<BrokerPublisher>(*config_.publish, outbox, *delivery_, *book_));
}

Feed::~Feed() = default;

/// A memory that is damaged is laid aside. Nobody knows then which of the files that are left in
/// their trees were taken: those from before are left.
void Feed::OpenMemory() {
  const auto path = JoinPath(folder_, "memory.db");
  try {
    memory_.emplace(path);
  } catch (const Failure& failure) {
    const std::string_view why = failure.text();
    if (why.find("not a database") == why.npos && why.find("malformed") == why.npos) throw;
    book_->Log(fmt::format("{}. A new one is begun; files from before are left.", why));
    files_.Rename(path, path + ".damaged");
    memory_.emplace(path);
    for (auto& source : config_.sources) {
      if (auto* const folder = std::get_if<FolderSettings>(&source)) folder->takesOldFiles = false;
    }
  }
}

/// Those that lie in the station. A tree elsewhere may be a share that is not there yet: nobody
/// makes folders in its place.
void Feed::MakeOwnFolders() const {
  MakeFolders(JoinPath(folder_, "outbox"));
  MakeFolders(config_.unknownFolder);
  for (const auto& source : config_.sources) {
    const auto* const folder = std::get_if<FolderSettings>(&source);
    if (folder == nullptr) continue;
    for (const auto& path : folder->paths) {
      if (path.starts_with(station_ + "/")) MakeFolders(path);
    }
  }
}

void Feed::AddSources(SourceKinds kinds) {
  for (const auto& settings : config_.sources) {
    if (IsAmong(settings, kinds)) Add(settings);
  }
  if (sources_.empty()) throw std::runtime_error("Feed.toml names no source for this program.");
}

void Feed::Add(const SourceSettings& settings) {
  auto& delivery = *delivery_;
  auto& book = *book_;
  if (const auto* const folder = std::get_if<FolderSettings>(&settings)) {
    const auto workshop = JoinPath(folder_, fmt::format("unpack{}", sources_.size()));
    sources_.push_back(
        std::make_unique<FolderSource>(*folder, archives_, workshop, delivery, book));
  } else if (const auto* const serial = std::get_if<SerialSettings>(&settings)) {
    sources_.push_back(std::make_unique<SerialSource>(*serial, delivery, book));
  } else if (const auto* const udp = std::get_if<UdpSettings>(&settings)) {
    sources_.push_back(std::make_unique<UdpSource>(*udp, delivery, book));
  } else if (const auto* const tcp = std::get_if<TcpSettings>(&settings)) {
    sources_.push_back(std::make_unique<TcpSource>(*tcp, delivery, book));
  } else if (const auto* const broker = std::get_if<BrokerSettings>(&settings)) {
    sources_.push_back(std::make_unique<BrokerSource>(*broker, delivery, book));
  }
}

void Feed::Start() {
  QObject::connect(&stopNotifier_, &QSocketNotifier::activated, &stopNotifier_, [this] {
    stopNotifier_.setEnabled(false);
    QCoreApplication::quit();
  });
  QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &stopNotifier_,
                   [this] { book_->Log("The feed ends."); });
  book_->Log("The feed begins.");
  delivery_->GoOn();
  QObject::connect(&again_, &QTimer::timeout, &again_, [this] { delivery_->GoOn(); });
  again_.start(kAgain);
  for (const auto& source : sources_) source->Start();
}

/// The operator may name another ingest folder while the feed runs: the station's store is asked
/// each time. A store that cannot be read at the moment, or is gone, has not changed.
std::string Feed::IngestFolder() {
  if (config_.deliverTo) return *config_.deliverTo;
  try {
    auto fallback = JoinPath(station_, "KvData/RxFiles");
    const auto path = JoinPath(station_, kStore);
    if (!files_.Exists(path)) return ingestFolder_.empty() ? fallback : ingestFolder_;
    SqliteSettingsStores stores(path);
    ingestFolder_ =
        OpenAtRoot(stores)->ReadSetting(KeyPath(Section::kSettings), "IngestPath", fallback);
  } catch (const Failure&) {
    if (ingestFolder_.empty()) throw;
  }
  return ingestFolder_;
}

}  // namespace ostrel
