#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "base/time.h"
#include "programs/status/reports.h"

namespace ostrel {

namespace {

std::string Spell(const Status& seconds) {
  return SpellDuration(std::chrono::duration<double>(seconds.get<double>()));
}

std::string Ago(const Status& seconds) {
  return seconds.is_null() ? "never" : Spell(seconds) + " ago";
}

std::string StateLine(const Status& status) {
  std::string line = status["state"];
  if (status["endsIn"] > 0) line += fmt::format(", {} more", Spell(status["endsIn"]));
  return line + (status["keyed"].get<bool>() ? ", keyed" : ", not keyed");
}

std::string OnAirLine(const Status& onAir) {
  if (onAir.is_null()) return "nothing";
  return fmt::format("{}, block {} of {}, priority {}", onAir["file"].get<std::string>(),
                     onAir["block"].get<int>(), onAir["blocks"].get<int>(),
                     onAir["priority"].get<int>());
}

std::string QueueLine(const Status& queue) {
  const bool isEmpty = queue["files"] == 0;
  return fmt::format("  {:>8} {:>7} {:>10} {:>12}\n", queue["priority"].get<int>(),
                     queue["files"].get<int>(), queue["bytes"].get<long long>(),
                     isEmpty ? "" : Spell(queue["oldest"]));
}

std::string CountsLine(const Status& counts) {
  int errors = 0;
  for (const auto& count : counts["errors"]) errors += count.get<int>();
  std::string line;
  for (const auto* what :
       {"files", "packets", "fills", "discarded", "unmatched", "purged", "replaced"})
    line += fmt::format("{} {}, ", counts[what].get<int>(), what);
  return line + fmt::format("{} errors", errors);
}

}  // namespace

std::string PageOf(const Status& status) {
  const auto& next = status["nextIdentification"];
  const auto& free = status["freeBytes"];
  std::string page;
  const auto add = [&page](std::string_view caption, const std::string& value) {
    page += fmt::format("{:<20} {}\n", caption, value);
  };
  add("Station", StateLine(status));
  add("Port", fmt::format("{} {} bits a second", status["port"].get<std::string>(),
                          status["rate"].get<int>()));
  add("On the air", OnAirLine(status["onAir"]));
  add("Last packet", Ago(status["sincePacket"]));
  const bool isPaused = status["intakePaused"].get<bool>();
  add("Last arrival",
      Ago(status["sinceArrival"]) + (isPaused ? ", intake paused by an operator" : ""));
  add("Next identification", next.is_null() ? "never" : "in " + Spell(next));
  add("Compression", fmt::format("{:.2f}:1", status["compressionRatio"].get<double>()));
  if (!free.is_null()) add("Free on the disk", fmt::format("{:.1f} GB", free.get<double>() / 1e9));
  const auto restored = status.value("restored", Status());
  if (!restored.is_null())
    add("Settings", fmt::format("{} ({})", Printable(restored["text"].get<std::string>()),
                                restored["at"].get<std::string>()));
  if (const auto history = status.value("history", Status()); !history.is_null())
    add("History", Printable(history.get<std::string>()));
  for (const auto& file : status.value("unusable", Status::array()))
    add("Cannot be used", fmt::format("{}: {}", Printable(file["name"].get<std::string>()),
                                      Printable(file["why"].get<std::string>())));
  add("Since midnight", CountsLine(status["sinceMidnight"]));
  add("Since the start", CountsLine(status["sinceStart"]));
  add("Started", fmt::format("{}, version {}", status["started"].get<std::string>(),
                             status["version"].get<std::string>()));
  page += fmt::format("\n  {:>8} {:>7} {:>10} {:>12}\n", "Priority", "Files", "Bytes", "Oldest");
  for (const auto& queue : status["queues"]) page += QueueLine(queue);
  return page;
}

}  // namespace ostrel
