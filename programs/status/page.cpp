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

/// A file that keeps the air for longer than an hour is told how to be ended.
std::string OnAirLine(const Status& onAir) {
  if (onAir.is_null()) return "nothing";
  auto line = fmt::format("{}, block {} of {}, priority {}",
                          Printable(onAir["file"].get<std::string>()), onAir["block"].get<int>(),
                          onAir["blocks"].get<int>(), onAir["priority"].get<int>());
  const auto outIn = onAir.value("outIn", Status());
  if (outIn.is_null()) return line;
  line += ", out in " + Spell(outIn);
  return outIn > 3600 ? line + ". It keeps the air for long: ostrel-queue stop ends it" : line;
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

/// "6, the oldest 12 s"; empty when there is nothing to tell.
std::string FolderLine(const Status& folder) {
  const int files = folder["files"];
  std::string line;
  if (files > 0) line = fmt::format("{}{}", files, folder["more"] == true ? " or more" : "");
  if (!folder["oldest"].is_null()) line += ", the oldest " + Spell(folder["oldest"]);
  const auto& trouble = folder["trouble"];
  if (!trouble.is_null())
    line += (line.empty() ? "" : ", ") + Printable(trouble.get<std::string>());
  return line;
}

std::string ObstacleLine(const Status& obstacle) {
  auto line = fmt::format("{} for {}: {}", PlaceOf(obstacle), Spell(obstacle["for"]),
                          Printable(obstacle["reason"].get<std::string>()));
  const auto& next = obstacle["nextTry"];
  if (!next.is_null() && next > 0) line += fmt::format(" (tried again in {})", Spell(next));
  return line;
}

/// What lies in the folders before the queues; those that are as they should be are not told.
template <typename Add>
void AddIntake(const Status& intake, Add&& add) {
  for (const auto& [folder, caption] : {std::pair("ingest", "In the ingest folder"),
                                        {"holding", "In holding folders"},
                                        {"compression", "Awaiting a block"},
                                        {"kept", "Kept, a list is lost"},
                                        {"quarantine", "In the quarantine"}}) {
    if (const auto line = FolderLine(intake[folder]); !line.empty()) add(caption, line);
  }
  if (!intake["blocked"].is_null()) add("Held up by", ObstacleLine(intake["blocked"]));
  for (const auto& obstacle : intake["refused"]) add("Refused", ObstacleLine(obstacle));
  const int more = intake["refusedCount"].get<int>() - static_cast<int>(intake["refused"].size());
  if (more > 0) add("Refused", fmt::format("{} more", more));
}

}  // namespace

std::string PlaceOf(const Status& obstacle) {
  auto folder = Printable(obstacle["folder"].get<std::string>());
  if (obstacle["name"].is_null()) return folder;
  return folder + "/" + Printable(obstacle["name"].get<std::string>());
}

std::string JsonText(const Status& value) {
  return value.dump(-1, ' ', true, Status::error_handler_t::replace);
}

std::string PageOf(const Status& status) {
  const auto& next = status["nextIdentification"];
  const auto& free = status["freeBytes"];
  std::string page;
  const auto add = [&page](std::string_view caption, const std::string& value) {
    page += fmt::format("{:<20} {}\n", caption, value);
  };
  add("Station", Printable(status.value("name", "")));
  add("State", StateLine(status));
  add("Port", fmt::format("{} {} bits a second", Printable(status["port"].get<std::string>()),
                          status["rate"].get<int>()));
  add("On the air", OnAirLine(status["onAir"]));
  add("Last packet", Ago(status["sincePacket"]));
  const bool isPaused = status["intakePaused"].get<bool>();
  add("Last arrival",
      Ago(status["sinceArrival"]) + (isPaused ? ", intake paused by an operator" : ""));
  AddIntake(status["intake"], add);
  if (const std::string why = status["silentBecause"]; !why.empty())
    add("Silent because", Printable(why));
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
