#include "programs/monitor/warning_watch.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fstream>

#include "programs/monitor/receiver.h"

namespace ostrel {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kName = "warning";

Json StampOf(const std::optional<UtcTime>& time) {
  if (!time) return {};
  return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}",
                     fmt::gmtime(std::chrono::system_clock::to_time_t(*time)));
}

std::string Dump(const Json& json) {
  return json.dump(-1, ' ', true, Json::error_handler_t::replace);
}

}  // namespace

Json JsonOf(const ShownEvent& event) {
  return {{"identity", event.identity},
          {"title", event.title},
          {"significance", std::string(1, event.significance)},
          {"areas", event.areas},
          {"headline", event.headline},
          {"since", StampOf(event.since)},
          {"begins", StampOf(event.begins)},
          {"until", StampOf(event.until)},
          {"certain", event.isCertain},
          {"product", event.product}};
}

WarningWatch::WarningWatch(std::string command, std::filesystem::path file, Tell tell)
    : command_(std::move(command)), file_(std::move(file)), tell_(std::move(tell)) {
  std::ifstream stream(file_);
  const auto told = Json::parse(stream, nullptr, false);
  if (!told.is_array()) return;
  for (const auto& event : told) {
    const bool isEvent = event.is_object() && event.contains("identity") &&
                         event["identity"].is_string() && event.contains("title") &&
                         event["title"].is_string();
    if (isEvent) told_[event["identity"]] = event;
  }
}

void WarningWatch::Take(const std::vector<ShownEvent>& atHome) {
  std::map<std::string, Json> now;
  for (const auto& event : atHome) now.try_emplace(event.identity, JsonOf(event));
  std::vector<Json> ended, begun;
  for (const auto& [identity, event] : told_)
    if (!now.contains(identity)) ended.push_back(event);
  for (const auto& [identity, event] : now)
    if (!told_.contains(identity)) begun.push_back(event);
  if (ended.empty() && begun.empty()) return;
  told_ = std::move(now);
  // First of all: one that is told twice would be worse than one that a power failure swallows.
  Remember();
  for (const auto& event : ended) TellOf(event, false);
  for (const auto& event : begun) TellOf(event, true);
}

void WarningWatch::TellOf(const Json& event, bool begins) const {
  const auto title = event["title"].get<std::string>();
  ShowLine(fmt::format("{} at home: {}", begins ? "in force" : "no longer in force", title));
  tell_({kName, command_, begins, title}, event);
}

void WarningWatch::Remember() const {
  Json all = Json::array();
  for (const auto& [identity, event] : told_) all.push_back(event);
  const auto fresh = std::filesystem::path(file_.string() + ".new");
  std::error_code error;
  if ((std::ofstream(fresh) << Dump(all) << "\n").flush())
    std::filesystem::rename(fresh, file_, error);
  else
    ShowLine(fmt::format("cannot write {}: after a restart events are told again", file_.string()));
}

}  // namespace ostrel
