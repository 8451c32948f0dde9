#include "programs/repeat/repeater.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

#include "base/names.h"
#include "base/station_files.h"
#include "base/text.h"
#include "platform/linux/linux_clock.h"
#include "platform/linux/linux_files.h"
#include "programs/queue/operations.h"

namespace ostrel {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::chrono::hours kShareOf{1};

void Say(const std::string& text) {
  fmt::print("{}\n", Printable(text));
  std::fflush(stdout);
}

std::string Spelled(const std::optional<UtcTime>& time) {
  return time ? fmt::format("{:%Y-%m-%d %H:%M} UTC", fmt::gmtime(*time)) : "never";
}

Json InJson(const std::optional<UtcTime>& time) {
  return time ? Json(fmt::format("{:%Y-%m-%dT%H:%M:%SZ}",
                                 fmt::gmtime(std::chrono::floor<seconds>(*time))))
              : Json();
}

std::vector<std::string> IdentitiesOf(const Repetition& repetition) {
  std::vector<std::string> identities;
  for (const auto& event : repetition.events)
    if (std::ranges::find(identities, event.identity) == identities.end())
      identities.push_back(event.identity);
  return identities;
}

std::vector<std::string> AreasOf(const Repetition& repetition) {
  std::vector<std::string> areas;
  for (const auto& event : repetition.events)
    areas.insert(areas.end(), event.areas.begin(), event.areas.end());
  std::ranges::sort(areas);
  areas.erase(std::unique(areas.begin(), areas.end()), areas.end());
  return areas;
}

Json RowOf(const KnownProduct& product, const Repetition& repetition) {
  return {{"id", product.id},
          {"name", product.name},
          {"events", IdentitiesOf(repetition)},
          {"areas", AreasOf(repetition)},
          {"since", InJson(repetition.since)},
          {"until", InJson(repetition.until)},
          {"lastOut", InJson(product.lastOut)},
          {"next", InJson(repetition.next)},
          {"whyNot", repetition.whyNot.empty() ? Json() : Json(repetition.whyNot)}};
}

std::string InOneLine(const Json& json) {
  return json.dump(-1, ' ', true, Json::error_handler_t::replace) + "\n";
}

}  // namespace

void Repeater::Look(UtcTime now) {
  const auto known = products_.Read(now);
  const auto repetitions = FindRepetitions(known.products, config_, now);
  Publish(known, repetitions, now);
  if (config_.obsolete == Obsolete::kDelete) DeleteObsolete(known.products, now);
  Repeat(known, repetitions, now);
}

/// The list is good until the next looks should have come.
void Repeater::Publish(const StationProducts::Known& known,
                       const std::vector<Repetition>& repetitions, UtcTime now) const {
  auto rows = Json::array();
  for (const auto& repetition : repetitions)
    rows.push_back(RowOf(known.products[repetition.product], repetition));
  const Json list = {{"goodUntil", InJson(now + 3 * config_.interval + std::chrono::minutes(1))},
                     {"inForce", std::move(rows)}};
  LinuxClock clock;
  LinuxFiles(clock).WriteAll(JoinPath(station_, kInForceFile), InOneLine(list));
}

void Repeater::Repeat(const StationProducts::Known& known,
                      const std::vector<Repetition>& repetitions, UtcTime now) {
  std::int64_t used = 0;
  for (const auto& repetition : known.repetitions)
    if (repetition.asked > now - kShareOf) used += OnTheLine(repetition.bytes);
  for (const auto& repetition : repetitions) {
    const auto& product = known.products[repetition.product];
    if (!repetition.next || *repetition.next > now) continue;
    const int rate = Ask(station_, {{"ask", "status"}})["rate"];
    const auto needed = OnTheLine(product.bytes);
    if (used + needed > HourlyShare(config_, rate)) continue;
    used += needed;
    Say(fmt::format("{} In force until {}.",
                    Resend(station_, std::to_string(product.id), config_.priority),
                    Spelled(repetition.until)));
  }
}

/// The station refuses what is on the air, and what has gone out meanwhile is not there any more.
void Repeater::DeleteObsolete(const std::vector<KnownProduct>& products, UtcTime now) {
  const auto obsolete = FindObsolete(products, now);
  if (obsolete.empty()) return;
  const auto entries = AskForAll(station_, "list", "entries");
  for (const auto index : obsolete) {
    const auto entry = std::ranges::find_if(
        entries, [&](const Json& each) { return each["id"] == products[index].id; });
    if (entry == entries.end() || (*entry)["onAir"].get<bool>()) continue;
    const auto answer =
        Ask(station_,
            {{"ask", "delete"}, {"name", (*entry)["name"]}, {"priority", (*entry)["priority"]}});
    Say(fmt::format("{} Its event is over.", answer["done"].get<std::string>()));
  }
}

std::string Repeater::List(UtcTime now) {
  const auto known = products_.Read(now);
  std::string text;
  for (const auto& repetition : FindRepetitions(known.products, config_, now)) {
    const auto& product = known.products[repetition.product];
    text += fmt::format("{}: {}, for {}\n  since {}, until {}; last out {}; {}\n",
                        Printable(product.name), fmt::join(IdentitiesOf(repetition), ", "),
                        fmt::join(AreasOf(repetition), " "), Spelled(repetition.since),
                        Spelled(repetition.until), Spelled(product.lastOut),
                        repetition.next ? "next " + Spelled(repetition.next) + "."
                                        : "not repeated: " + repetition.whyNot);
  }
  return text.empty() ? "Nothing is in force.\n" : text;
}

std::string Repeater::ListAsJson(UtcTime now) {
  const auto known = products_.Read(now);
  std::string text;
  for (const auto& repetition : FindRepetitions(known.products, config_, now))
    text += InOneLine(RowOf(known.products[repetition.product], repetition));
  return text;
}

}  // namespace ostrel
