#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <prometheus/metric_family.h>
#include <prometheus/text_serializer.h>

#include "base/text.h"
#include "programs/status/reports.h"

namespace ostrel {

namespace {

using Family = prometheus::MetricFamily;
using Labels = std::vector<prometheus::ClientMetric::Label>;

constexpr const char* kStates[] = {"sending",     "idle",        "paused",       "identifying",
                                   "port closed", "port failed", "port vanished"};

Family Gauges(const std::string& name, const std::string& help) {
  return {"ostrel_" + name, help, prometheus::MetricType::Gauge, {}};
}

void Add(Family& family, double value, Labels labels = {}) {
  prometheus::ClientMetric metric;
  metric.label = std::move(labels);
  metric.gauge.value = metric.counter.value = value;
  family.metric.push_back(std::move(metric));
}

Family Gauge(const std::string& name, const std::string& help, double value) {
  auto family = Gauges(name, help);
  Add(family, value);
  return family;
}

class Collection {
 public:
  explicit Collection(const Status& status) : status_(status) {
    auto station = Gauges("station_info", "1, with what the station is called and its version");
    Add(station, 1,
        {{"name", Printable(status.value("name", ""))},
         {"version", status["version"].get<std::string>()}});
    families_.push_back(std::move(station));
    auto state = Gauges("state", "1 for what the station is doing");
    for (const auto* name : kStates) Add(state, status["state"] == name, {{"state", name}});
    families_.push_back(std::move(state));
    AddPlain();
    AddQueues();
    AddFolders();
    AddCounts();
  }
  std::vector<Family> Take() { return std::move(families_); }

 private:
  void AddPlain() {
    families_.push_back(
        Gauge("keyed", "1 while the transmitter is keyed", status_["keyed"] == true));
    families_.push_back(Gauge("intake_paused", "1 while an operator pauses the intake",
                              status_["intakePaused"] == true));
    families_.push_back(Gauge("history_trouble",
                              "1 when its store was damaged or cannot be written",
                              !status_.value("history", Status()).is_null()));
    families_.push_back(Gauge("settings_restored", "1 when a copy took the place of the settings",
                              !status_.value("restored", Status()).is_null()));
    families_.push_back(
        Gauge("unusable_files", "Lists, tables and texts that cannot be used",
              static_cast<double>(status_.value("unusable", Status::array()).size())));
    families_.push_back(
        Gauge("line_rate_baud", "The rate that is set for the line", status_["rate"]));
    families_.push_back(
        Gauge("compression_ratio", "Uncompressed to compressed", status_["compressionRatio"]));
    for (const auto& [field, name, help] :
         {std::tuple{"sincePacket", "last_packet_age_seconds", "Since a packet went to the port"},
          {"sinceArrival", "last_arrival_age_seconds", "Since a file came"},
          {"silentFor", "silent_seconds", "Keyed, and nothing is sent"},
          {"nextIdentification", "next_identification_seconds", "Until it is due"},
          {"freeBytes", "free_bytes", "Free on the disk of the queues"}}) {
      if (!status_[field].is_null()) families_.push_back(Gauge(name, help, status_[field]));
    }
  }

  void AddQueues() {
    auto files = Gauges("queue_files", "Files that wait");
    auto bytes = Gauges("queue_bytes", "Bytes that wait");
    auto oldest = Gauges("queue_oldest_seconds", "How long the oldest file has waited");
    for (const auto& queue : status_["queues"]) {
      const Labels priority = {{"priority", fmt::format("{}", queue["priority"].get<int>())}};
      Add(files, queue["files"], priority);
      Add(bytes, queue["bytes"], priority);
      Add(oldest, queue["oldest"].is_null() ? 0 : queue["oldest"].get<double>(), priority);
    }
    for (auto* family : {&files, &bytes, &oldest}) families_.push_back(std::move(*family));
  }

  void AddFolders() {
    const auto& intake = status_["intake"];
    auto files = Gauges("folder_files", "Files outside the queues, 10000 at most");
    auto oldest = Gauges("folder_oldest_seconds", "Since the last write to the oldest of them");
    for (const auto* folder : {"ingest", "holding", "compression", "kept", "quarantine"}) {
      const auto& age = intake[folder]["oldest"];
      Add(files, intake[folder]["files"], {{"folder", folder}});
      Add(oldest, age.is_null() ? 0 : age.get<double>(), {{"folder", folder}});
    }
    families_.push_back(std::move(files));
    families_.push_back(std::move(oldest));
    const auto& blocked = intake["blocked"];
    families_.push_back(Gauge("ingest_blocked_seconds", "How long a file has held up the others",
                              blocked.is_null() ? 0 : blocked["for"].get<double>()));
    families_.push_back(
        Gauge("refused_files", "Files that are refused and tried again", intake["refusedCount"]));
  }

  /// Since the start: a counter that began anew at midnight would be none.
  void AddCounts() {
    const auto& counts = status_["sinceStart"];
    const auto counter = [this](const std::string& name, const std::string& help) -> Family& {
      families_.push_back({"ostrel_" + name + "_total", help, prometheus::MetricType::Counter, {}});
      return families_.back();
    };
    for (const auto& [field, help] : {std::pair{"files", "Files begun on the air"},
                                      {"packets", "Packets written to the port"},
                                      {"fills", "Insertions of the fill file"},
                                      {"discarded", "Files that the rules discard"},
                                      {"unmatched", "Files that no rule names"},
                                      {"purged", "Files that were too old before their turn"},
                                      {"replaced", "Files that a newer one replaced"}})
      Add(counter(field, help), counts[field]);
    auto& errors = counter("errors", "Reported failures");
    for (const auto& [procedure, count] : counts["errors"].items())
      Add(errors, count, {{"procedure", procedure}});
  }

  const Status& status_;
  std::vector<Family> families_;
};

}  // namespace

std::string MetricsOf(const Status& status) {
  std::vector<Family> families;
  if (!status.is_null()) families = Collection(status).Take();
  families.push_back(Gauge("up", "1 when the station answers", status.is_null() ? 0 : 1));
  return prometheus::TextSerializer().Serialize(families);
}

}  // namespace ostrel
