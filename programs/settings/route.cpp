#include <fmt/format.h>
#include <iostream>

#include "base/numbers.h"
#include "base/text.h"
#include "intake/ingest_scan.h"
#include "intake/rule_lists.h"
#include "intake/rule_matcher.h"
#include "programs/settings/commands.h"
#include "settings/settings_table.h"

namespace ostrel {

namespace {

/// Says on the terminal what the station would write to its log.
class TerminalReporting : public Reporting {
 public:
  void WriteLog(std::string_view category, std::string_view message) override {
    fmt::print(stderr, "{}: {}\n", category, Printable(message));
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

/// What becomes of files, as the rules of a station stand.
struct Routes {
  const RuleMatcher& rules;
  bool allAreKnown;
  bool unZip;

  std::string Of(const std::string& name) const;
};

std::string Routes::Of(const std::string& name) const {
  if (unZip && IsReceivedArchive(name)) return "unpacked";
  if (const auto keyword = rules.DiscardedBy(name)) return "discarded\t" + *keyword;
  const auto copies = CopiesText(rules.CopiesOf(name));
  const auto target = rules.TargetOf(name);
  if (!target) return (allAreKnown ? "no rule, thrown away" : "no rule, kept") + copies;
  return fmt::format("{}\t{}{}", TargetText(*target), target->keyword, copies);
}

}  // namespace

void RouteNames(StationFolder& station, const std::vector<std::string>& names) {
  SetupFields setup;
  TransmitStatus status;
  TerminalReporting reporting;
  RuleLists lists({station.files(), reporting, setup, status, station.path()});
  lists.LoadRuleLists();
  const bool unZip = StrictBoolean(
      station.OpenStore()->ReadSetting(KeyPath(Section::kSettings), "UnZipFiles", "0"));
  const RuleMatcher rules(setup.SetupPriList);
  const Routes routes{rules, lists.AllAreKnown(), unZip};
  const auto route = [&](const std::string& name) {
    fmt::print("{}\n", Printable(name) + "\t" + routes.Of(ToUpper(name)));
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
