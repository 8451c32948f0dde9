#include "repeat/repeat_config.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/text.h"
#include "config/toml_reading.h"

namespace ostrel {
namespace {

constexpr int kLongestMinutes = 24 * 60;

bool IsKind(const std::string& kind) {
  const bool isName = kind.size() == 3 && std::ranges::all_of(kind, [](unsigned char sign) {
                        return (sign >= 'A' && sign <= 'Z') || (sign >= '0' && sign <= '9');
                      });
  return isName || kind == "*";
}

RepeatRule RuleIn(const toml::table& table) {
  CheckKeys(table, {"kinds", "minutes"});
  RepeatRule rule;
  for (const auto& kind : GetTexts(table, "kinds")) {
    rule.kinds.push_back(ToUpper(kind));
    if (!IsKind(rule.kinds.back()))
      Refuse(*table.get("kinds"),
             fmt::format("\"{}\" is no kind: three letters, as in \"TOR\", or \"*\".", kind));
  }
  if (rule.kinds.empty()) Refuse(table, "\"kinds\" is missing.");
  if (!table.contains("minutes")) Refuse(table, "\"minutes\" is missing.");
  rule.every = std::chrono::minutes(GetNumber(table, "minutes", 0, 1, kLongestMinutes));
  return rule;
}

Obsolete ObsoleteIn(const toml::table& file) {
  const auto word = Get<std::string>(file, "expired", "leave");
  if (word != "leave" && word != "delete")
    Refuse(*file.get("expired"), "\"expired\" is \"leave\" or \"delete\".");
  return word == "delete" ? Obsolete::kDelete : Obsolete::kLeave;
}

}  // namespace

RepeatConfig ReadRepeatConfig(const std::string& path) {
  return ReadTomlFile(path, [](const toml::table& file) {
    CheckKeys(file, {"priority", "share", "interval", "expired", "repeat"});
    RepeatConfig config;
    config.priority = GetNumber(file, "priority", config.priority, 1, 10);
    config.share = GetNumber(file, "share", config.share, 1, 100);
    config.interval = seconds(GetNumber(file, "interval", 30, 1, 3600));
    config.obsolete = ObsoleteIn(file);
    for (const auto* const table : GetTables(file, "repeat"))
      config.rules.push_back(RuleIn(*table));
    return config;
  });
}

std::string Explain(const RepeatConfig& config) {
  std::string text;
  for (const auto& rule : config.rules) {
    const bool isEvery = std::ranges::find(rule.kinds, "*") != rule.kinds.end();
    text += fmt::format(
        "While it is in force, {} is sent again every {} min.\n",
        isEvery ? "every other product" : fmt::format("{}", fmt::join(rule.kinds, ", ")),
        rule.every.count());
  }
  if (config.rules.empty()) text += "Nothing is repeated: there is no [[repeat]].\n";
  text += fmt::format("It goes into queue {}, and gets at most {} % of the air.\n", config.priority,
                      config.share);
  text += config.obsolete == Obsolete::kDelete ? "What waits while its event is over is deleted.\n"
                                               : "What waits while its event is over is left.\n";
  return text;
}

}  // namespace ostrel
