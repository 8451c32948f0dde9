// What Feed.toml says: sources, names, and where products go.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "broker/broker_address.h"
#include "feed/area_rules.h"
#include "feed/product_name.h"
#include "receive/datagram_port.h"
#include "receive/product_assembler.h"

namespace ostrel {

/// Trees of folders into which a receiver writes.
struct FolderSettings {
  enum class Afterwards { kLeave, kMove, kDelete };

  std::vector<std::string> paths = {};
  bool takesOldFiles = true;  // what is there at the start and was not taken before
  Afterwards afterwards = Afterwards::kLeave;
  std::string moveTo = {};
  std::vector<std::string> passedOver = {};  // patterns of names, with "*" and "?"
  bool unpacks = false;                      // the members of zip archives, each a product
};

/// A receiver's port, with 8 data bits and no parity.
struct SerialSettings {
  std::string device = {};
  int baud = 9600;
};

/// Datagrams of a station's packet host. Anybody's where nobody is named.
struct UdpSettings {
  DatagramAddress where = {};
  std::vector<Ipv4Network> from = {};
};

/// A packet stream over TCP. Connected anew after so long a silence; 0 is never.
struct TcpSettings {
  std::string host = {};
  int port = 0;
  std::chrono::seconds silence{120};
};

/// Products that another feed publishes. The broker keeps what comes for `session` while it is
/// away.
struct BrokerSettings {
  BrokerAddress address = {};
  std::string session = {};
};

using SourceSettings =
    std::variant<FolderSettings, SerialSettings, UdpSettings, TcpSettings, BrokerSettings>;

struct FeedConfig {
  /// Where products go; the station's own ingest folder where nothing is said, nowhere when empty.
  std::optional<std::string> deliverTo = {};
  std::string unknownFolder = {};
  std::chrono::seconds repeats{600};      // the same name and content is dropped for so long
  std::chrono::seconds quiet{1200};       // nothing for so long is shown as trouble
  std::size_t largest = kLargestProduct;  // bytes; what has more is kept apart
  std::vector<NameRule> names = {};
  std::vector<AreaRule> areas = {};  // the first that fits decides
  std::vector<SourceSettings> sources = {};
  std::optional<BrokerAddress> publish = {};
};

/// Reads the file; relative paths in it are the `station` folder's. Throws std::runtime_error that
/// names file, line and what is wrong, and Failure when it is there and cannot be read.
FeedConfig ReadFeedConfig(const std::string& path, const std::string& station);

/// The folder of the feed's own in a station: its memory, its log, what waits to be published.
std::string FeedFolder(const std::string& station);

/// A source in a few words: "folder /srv/emwin", "udp port 5000".
std::string NameOfSource(const SourceSettings& settings);

/// The whole of it in sentences, for the operator.
std::string Explain(const FeedConfig& config);

}  // namespace ostrel
