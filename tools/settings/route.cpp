#include <fmt/format.h>
#include <iostream>

#include "base/numbers.h"
#include "base/text.h"
#include "config/settings_table.h"
#include "intake/ingest_scan.h"
#include "intake/routing_rules.h"
#include "platform/virtual/virtual_desk.h"
#include "tools/settings/commands.h"

namespace ostrel {

namespace {

/// Says on the terminal what the station would write to its log.
class TerminalReporting : public Reporting {
 public:
  void WriteLog(std::string_view category, std::string_view message) override {
    fmt::print(stderr, "{}: {}\n", category, message);
  }
  void ReportError(const Failure& failure, std::string_view procedure,
                   const AdditionalText& additional) override {
    WriteLog(procedure, DescribeFailure(failure) + additional.Shown());
  }
};

std::string TargetText(const Target& target) {
  return target.list == kCompressList ? "compress" : fmt::format("priority {}", target.folder());
}

std::string CopiesText(const std::vector<CopiesEntry>& entries) {
  std::string text;
  for (const auto& entry : entries)
    text += fmt::format("\tcopies {} by {}", entry.count, entry.keyword);
  return text;
}

std::string RouteOf(const RoutingRules& rules, const std::string& name, bool unZip) {
  if (unZip && IsReceivedArchive(name)) return "unpacked";
  if (const auto keyword = rules.DiscardedBy(name)) return "discarded\t" + *keyword;
  const auto copies = CopiesText(rules.CopiesOf(name));
  const auto target = rules.TargetOf(name);
  if (!target) return (rules.AllAreKnown() ? "no rule, thrown away" : "no rule, kept") + copies;
  return fmt::format("{}\t{}{}", TargetText(*target), target->keyword, copies);
}

}  // namespace

void RouteNames(StationFolder& station, const std::vector<std::string>& names) {
  Setup setup;
  VirtualDialogs dialogs;
  TerminalReporting reporting;
  RoutingRules rules({station.files(), dialogs, reporting, setup, station.path()});
  rules.LoadRuleLists();
  const bool unZip = StrictBoolean(
      station.OpenStore()->ReadSetting(KeyPath(Section::kSettings), "UnZipFiles", "0"));
  const auto route = [&](const std::string& name) {
    fmt::print("{}\t{}\n", name, RouteOf(rules, ToUpper(name), unZip));
  };
  for (const auto& name : names) {
    if (name != "-") {
      route(name);
      continue;
    }
    for (std::string line; std::getline(std::cin, line);) {
      if (!line.empty()) route(line);
    }
  }
}

}  // namespace ostrel
