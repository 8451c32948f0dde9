#include "feed/feed_config.h"

#include <algorithm>
#include <cerrno>
#include <set>

#include "base/names.h"
#include "base/text.h"
#include "config/toml_reading.h"
#include "feed/placing.h"
#include "platform/linux/file_io.h"
#include "platform/linux/system_error.h"

namespace ostrel {
namespace {

using Afterwards = FolderSettings::Afterwards;
using std::chrono::seconds;

constexpr int kDay = 86'400, kYear = 366 * kDay;  // seconds
constexpr std::size_t kLongestPattern = 200;
constexpr int kLargestPort = 65'535;
constexpr int kMostBytes = kMostProductBlocks * kReceivedBlock;

bool IsWithin(const std::string& path, const std::string& folder) {
  return path == folder || path.starts_with(folder.ends_with('/') ? folder : folder + "/");
}

class Reader {
 public:
  explicit Reader(const std::string& station) : station_(station) {}

  FeedConfig Read(const toml::table& file) const {
    CheckKeys(file, {"deliver", "unknown", "repeats", "quiet", "largest", "name", "area", "folder",
                     "serial", "udp", "tcp", "broker", "publish"});
    FeedConfig config;
    if (file.contains("deliver")) config.deliverTo = Path(file, "deliver", "");
    config.unknownFolder = Path(file, "unknown", FeedFolder(station_) + "/unknown");
    config.repeats = seconds(GetNumber(file, "repeats", 600, 0, kYear));
    config.quiet = seconds(GetNumber(file, "quiet", 1200, 1, kYear));
    config.largest =
        static_cast<std::size_t>(GetNumber(file, "largest", kLargestProduct, 1, kMostBytes));
    for (const auto* const table : GetTables(file, "name")) config.names.push_back(Name(*table));
    const NameRules valid(config.names);
    for (const auto* const table : GetTables(file, "area")) config.areas.push_back(Area(*table));
    AddSources(file, config);
    if (const auto* const publish = file.get("publish")) config.publish = Publish(*publish);
    return config;
  }

 private:
  void AddSources(const toml::table& file, FeedConfig& config) const {
    const auto add = [&](std::string_view key, auto&& read) {
      for (const auto* const table : GetTables(file, key)) config.sources.push_back(read(*table));
    };
    add("folder", [&](const toml::table& table) { return Folder(table); });
    add("serial", [&](const toml::table& table) { return Serial(table); });
    add("udp", [&](const toml::table& table) { return Udp(table); });
    add("tcp", [&](const toml::table& table) { return Tcp(table); });
    add("broker", [&](const toml::table& table) { return Broker(table); });
    std::set<std::string> names;
    for (const auto& source : config.sources) {
      if (!names.insert(NameOfSource(source)).second)
        throw std::runtime_error(fmt::format("\"{}\" is there twice.", NameOfSource(source)));
    }
  }

  std::string InStation(const std::string& path) const {
    return path.empty() || path.starts_with('/') ? path : JoinPath(station_, path);
  }
  std::string Path(const toml::table& table, std::string_view key, const std::string& other) const {
    auto path = InStation(Get<std::string>(table, key, other));
    while (path.size() > 1 && path.ends_with('/')) path.pop_back();
    return path;
  }
  static std::string Needed(const toml::table& table, std::string_view key) {
    auto text = Get<std::string>(table, key, "");
    if (text.empty()) Refuse(table, fmt::format("\"{}\" is missing.", key));
    return text;
  }

  static NameRule Name(const toml::table& table) {
    CheckKeys(table, {"pattern", "name"});
    NameRule rule{.pattern = Needed(table, "pattern"), .name = Needed(table, "name")};
    if (rule.pattern.size() > kLongestPattern) Refuse(table, "the pattern is too long.");
    try {
      const NameRules valid({rule});
    } catch (const std::runtime_error& error) {
      Refuse(table, error.what());
    }
    return rule;
  }

  /// The texts at `key`, in upper case: letters, digits and what `besides` has.
  static std::vector<std::string> Codes(const toml::table& table, std::string_view key,
                                        std::size_t longest, std::string_view besides = {}) {
    auto codes = GetTexts(table, key);
    for (auto& code : codes) {
      code = ToUpper(code);
      const bool isCode = std::ranges::all_of(code, [&](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || besides.find(c) != besides.npos;
      });
      if (!isCode || code.empty() || code.size() > longest)
        Refuse(table, fmt::format("\"{}\" is none of the {}.", code, key));
    }
    return codes;
  }
  static Circle Within(const toml::node& node) {
    if (!node.is_table()) Refuse(node, R"("within" is { lat = 42.03, lon = -93.62, km = 80 }.)");
    const auto& table = *node.as_table();
    CheckKeys(table, {"lat", "lon", "km"});
    const auto number = [&](std::string_view key, double least, double most) {
      const auto* const there = table.get(key);
      const auto value = there ? there->value<double>() : std::nullopt;
      if (!value || !(*value >= least && *value <= most))
        Refuse(node, fmt::format("\"{}\" is a number from {} to {}.", key, least, most));
      return *value;
    };
    return {{number("lat", -90, 90), number("lon", -180, 180)}, number("km", 0, 20'000)};
  }
  static AreaRule Area(const toml::table& table) {
    CheckKeys(table, {"codes", "within", "kinds", "offices", "action"});
    AreaRule rule{.codes = Codes(table, "codes", 6, "*?"),
                  .kinds = Codes(table, "kinds", 3),
                  .offices = Codes(table, "offices", 4)};
    if (const auto* const within = table.get("within")) rule.within = Within(*within);
    const auto action = Needed(table, "action");
    if (action != "take" && action != "pass over")
      Refuse(table, R"("action" is "take" or "pass over".)");
    rule.isTaken = action == "take";
    return rule;
  }

  FolderSettings Folder(const toml::table& table) const {
    CheckKeys(table, {"paths", "at_start", "afterwards", "move_to", "pass_over", "unpack"});
    FolderSettings folder{.passedOver = GetTexts(table, "pass_over", {"*.tmp", "*.part"}),
                          .unpacks = Get<bool>(table, "unpack", false)};
    for (const auto& path : GetTexts(table, "paths")) folder.paths.push_back(InStation(path));
    if (folder.paths.empty()) Refuse(table, "\"paths\" is missing.");
    const auto start = Get<std::string>(table, "at_start", "take");
    if (start != "take" && start != "leave") Refuse(table, R"("at_start" is "take" or "leave".)");
    folder.takesOldFiles = start == "take";
    folder.moveTo = Path(table, "move_to", "");
    folder.afterwards = AfterwardsOf(table);
    if ((folder.afterwards == Afterwards::kMove) == folder.moveTo.empty())
      Refuse(table, R"("move_to" goes with "afterwards" = "move".)");
    for (const auto& path : folder.paths) {
      for (const auto& own : {folder.moveTo, station_ + "/KvData/RxFiles", FeedFolder(station_)})
        if (IsWithin(own, path)) Refuse(table, fmt::format("{} lies within {}.", own, path));
    }
    return folder;
  }
  static Afterwards AfterwardsOf(const toml::table& table) {
    const auto text = Get<std::string>(table, "afterwards", "leave");
    if (text == "leave") return Afterwards::kLeave;
    if (text == "move") return Afterwards::kMove;
    if (text == "delete") return Afterwards::kDelete;
    Refuse(table, R"("afterwards" is "leave", "move" or "delete".)");
  }

  static SerialSettings Serial(const toml::table& table) {
    CheckKeys(table, {"device", "baud"});
    return {.device = Needed(table, "device"),
            .baud = GetNumber(table, "baud", 9600, 300, 115'200)};
  }
  static UdpSettings Udp(const toml::table& table) {
    CheckKeys(table, {"port", "address", "from"});
    UdpSettings udp;
    udp.where.port = GetNumber(table, "port", 0, 1, kLargestPort);
    udp.where.address = Get<std::string>(table, "address", udp.where.address);
    const auto address = ReadIpv4(udp.where.address);
    if (!address) Refuse(table, R"("address" is four numbers, as in "192.168.1.7".)");
    for (const auto& text : GetTexts(table, "from")) {
      const auto network = ReadIpv4Network(text);
      if (!network) Refuse(table, R"("from" names senders as "192.168.1.20" or "10.0.0.0/8".)");
      udp.from.push_back(*network);
    }
    if (!IsLoopback(*address) && udp.from.empty())
      Refuse(table, R"("from" is missing: who may send to this address.)");
    return udp;
  }
  static TcpSettings Tcp(const toml::table& table) {
    CheckKeys(table, {"host", "port", "silence"});
    return {.host = Needed(table, "host"),
            .port = GetNumber(table, "port", 0, 1, kLargestPort),
            .silence = seconds(GetNumber(table, "silence", 120, 0, kDay))};
  }
  static BrokerAddress Address(const toml::table& table) {
    try {
      return ParseBrokerAddress(Needed(table, "url"));
    } catch (const std::runtime_error& error) {
      Refuse(table, error.what());
    }
  }
  static BrokerSettings Broker(const toml::table& table) {
    CheckKeys(table, {"url", "session"});
    return {.address = Address(table), .session = Needed(table, "session")};
  }
  static BrokerAddress Publish(const toml::node& node) {
    if (!node.is_table()) Refuse(node, "this is written [publish].");
    CheckKeys(*node.as_table(), {"url"});
    return Address(*node.as_table());
  }

  const std::string& station_;
};

std::string Spell(const BrokerAddress& address) {
  return fmt::format("{}:{}, {}topic {}", address.host, address.port,
                     address.isEncrypted ? "encrypted, " : "", address.topic);
}

struct SourceNames {
  std::string operator()(const FolderSettings& folder) const {
    return fmt::format("folder {}", fmt::join(folder.paths, ", "));
  }
  std::string operator()(const SerialSettings& serial) const { return "serial " + serial.device; }
  std::string operator()(const UdpSettings& udp) const {
    return fmt::format("udp {}:{}", udp.where.address, udp.where.port);
  }
  std::string operator()(const TcpSettings& tcp) const {
    return fmt::format("tcp {}:{}", tcp.host, tcp.port);
  }
  std::string operator()(const BrokerSettings& broker) const {
    return "broker " + Spell(broker.address);
  }
};

template <typename Add>
void AddDetails(const FolderSettings& folder, Add&& add) {
  const auto after = folder.afterwards == Afterwards::kLeave    ? std::string("stay")
                     : folder.afterwards == Afterwards::kDelete ? "are deleted"
                                                                : "go to " + folder.moveTo;
  add(fmt::format("    Files that are there at the start are {}. Taken files {}.",
                  folder.takesOldFiles ? "taken, if they were not before" : "left", after));
  add(fmt::format("    Passed over: {}. Zip archives are {}.",
                  folder.passedOver.empty()
                      ? "hidden files"
                      : fmt::format("hidden files, {}", fmt::join(folder.passedOver, ", ")),
                  folder.unpacks ? "unpacked" : "taken as they are"));
}

std::string Details(const UdpSettings& udp) {
  if (udp.from.empty()) return "    From this computer alone.";
  std::vector<std::string> senders;
  for (const auto& network : udp.from) senders.push_back(SpellIpv4Network(network));
  const bool isAnybody = std::any_of(udp.from.begin(), udp.from.end(),
                                     [](const auto& network) { return network.mask == 0; });
  return fmt::format("    From {}{}.", fmt::join(senders, ", "),
                     isAnybody ? ": from anybody who reaches this computer" : " alone");
}

/// A file that cannot be read at the moment is no wrong one: another try may end otherwise.
std::string TextOf(const std::string& path) {
  const auto file = OpenToRead(path, Links::kFollowed);
  if (!file && errno == ENOENT) throw std::runtime_error(path + " is missing.");
  if (!file) ThrowFileFailure(errno, path);
  return ReadOpened(file.Get(), path);
}

}  // namespace

FeedConfig ReadFeedConfig(const std::string& path, const std::string& station) {
  return ReadTomlText(path, TextOf(path),
                      [&](const toml::table& file) { return Reader(station).Read(file); });
}

std::string FeedFolder(const std::string& station) {
  return JoinPath(station, "KvData/Feed");
}

std::string NameOfSource(const SourceSettings& settings) {
  return std::visit(SourceNames{}, settings);
}

std::string Explain(const FeedConfig& config) {
  std::string text;
  const auto add = [&text](std::string_view line) { text += Printable(line) + '\n'; };
  add(config.sources.empty() ? "No source is set." : "Sources:");
  for (const auto& source : config.sources) {
    add("  " + NameOfSource(source));
    if (const auto* const folder = std::get_if<FolderSettings>(&source)) AddDetails(*folder, add);
    if (const auto* const udp = std::get_if<UdpSettings>(&source)) add(Details(*udp));
    if (const auto* const broker = std::get_if<BrokerSettings>(&source))
      add(fmt::format("    What comes while this is away is kept for {}.", broker->session));
  }
  add(config.deliverTo && config.deliverTo->empty() ? "Nothing is delivered to a station."
      : config.deliverTo ? fmt::format("Products go to {}.", *config.deliverTo)
                         : "Products go to the station's ingest folder.");
  add(fmt::format("The same product again within {} s is dropped.", config.repeats.count()));
  add(fmt::format("What has more than {} bytes is kept in {}.", config.largest,
                  config.unknownFolder));
  for (const auto& rule : config.names)
    add(fmt::format("A name like {} becomes {}.", rule.pattern, rule.name));
  add(fmt::format("What has no short name goes to {}.", config.unknownFolder));
  for (const auto& rule : config.areas)
    add(fmt::format("{}: {}.", rule.isTaken ? "Taken" : "Passed over", Spell(rule)));
  if (!config.areas.empty()) add("What is for no area, or cannot be read for certain, is taken.");
  if (config.publish) add(fmt::format("Products are published at {}.", Spell(*config.publish)));
  return text;
}

}  // namespace ostrel
