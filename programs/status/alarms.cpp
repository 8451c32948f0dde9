#include "programs/status/alarms.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "base/time.h"

namespace ostrel {

namespace {

std::string Spell(double seconds) {
  return SpellDuration(std::chrono::duration<double>(seconds));
}

std::optional<std::string> OlderThan(const Status& seconds, double limit, std::string_view what) {
  if (seconds.is_null() || seconds.get<double>() <= limit) return std::nullopt;
  return fmt::format("{} for {}", what, Spell(seconds.get<double>()));
}

bool IsOffTheAir(const Status& status) {
  return status["state"].get<std::string>().starts_with("port");
}

std::optional<std::string> Waiting(const Alarm& alarm, const Status& status) {
  for (const auto& queue : status["queues"]) {
    const int priority = queue["priority"];
    if (priority > alarm.priority) break;
    if (auto text = OlderThan(queue["oldest"], alarm.seconds,
                              fmt::format("a file of priority {} waits", priority)))
      return text;
  }
  return std::nullopt;
}

std::optional<std::string> Silent(const Alarm& alarm, const Status& status) {
  auto text = OlderThan(status["silentFor"], alarm.seconds, "keyed, and nothing was sent");
  const std::string because = status["silentBecause"];
  if (text && !because.empty()) *text += ". " + Printable(because);
  return text;
}

/// The one that was refused first, of those that still are; null when none is.
Status Longest(const Status& status) {
  const auto& refused = status["intake"]["refused"];
  return refused.empty() ? Status() : refused[0];
}

std::optional<std::string> Obstructed(const Alarm& alarm, const Status& obstacle,
                                      std::string_view what) {
  if (obstacle.is_null()) return std::nullopt;
  auto text =
      OlderThan(obstacle["for"], alarm.seconds, fmt::format("{} {}", PlaceOf(obstacle), what));
  if (text) *text += ". " + Printable(obstacle["reason"].get<std::string>());
  return text;
}

/// Another one is another trouble: the first is over then, and it begins anew.
std::string SubjectOf(const Alarm& alarm, const Status& status) {
  if (alarm.kind == AlarmKind::kBlocked) return PlaceOf(status["intake"]["blocked"]);
  if (alarm.kind == AlarmKind::kRefused) return PlaceOf(Longest(status));
  return {};
}

std::optional<std::string> NoArrivals(const Alarm& alarm, const Status& status, double running) {
  if (!status["sinceArrival"].is_null())
    return OlderThan(status["sinceArrival"], alarm.seconds, "no file came");
  if (running <= alarm.seconds) return std::nullopt;
  return fmt::format("no file came for {}", Spell(running));
}

std::optional<std::string> Restored(const Status& status) {
  const auto restored = status.value("restored", Status());
  if (restored.is_null()) return std::nullopt;
  return restored["text"].get<std::string>();
}

std::optional<std::string> DiskFull(const Alarm& alarm, const Status& status) {
  const auto& free = status["freeBytes"];
  if (free.is_null() || free.get<double>() >= alarm.megabytes * 1e6) return std::nullopt;
  return fmt::format("{:.0f} MB are free", free.get<double>() / 1e6);
}

}  // namespace

void AlarmWatch::Look(const Status& status, double now) {
  if (!firstLook_) firstLook_ = lastAnswer_ = now;
  if (!status.is_null()) {
    lastAnswer_ = now;
    station_ = status.value("name", "");
    NotePurges(status, now);
  }
  for (const auto& alarm : config_.alarms) {
    // What cannot be told while the station does not answer stays as it was.
    if (status.is_null() && alarm.kind != AlarmKind::kNoAnswer) continue;
    const auto trouble = Trouble(alarm, status, now);
    const auto subject = trouble ? std::optional(SubjectOf(alarm, status)) : std::nullopt;
    const auto before = std::exchange(on_[&alarm], subject);
    if (before == subject) continue;
    const auto tell = [&](bool begins, const std::string& text) {
      tell_({alarm.name, alarm.command, begins, fmt::format("{}: {}", alarm.name, text), station_});
    };
    if (before) tell(false, "it is over");
    if (trouble) tell(true, *trouble);
  }
}

bool AlarmWatch::Lasts(const Alarm& alarm, bool isTrouble, double now) {
  if (!isTrouble) since_.erase(&alarm);
  return isTrouble && now - since_.try_emplace(&alarm, now).first->second >= alarm.seconds;
}

void AlarmWatch::NotePurges(const Status& status, double now) {
  const int purged = status["sinceStart"]["purged"];
  if (purged_ && purged > *purged_) lastPurge_ = now;
  purged_ = purged;  // fewer after a new start of the station
}

std::optional<std::string> AlarmWatch::Trouble(const Alarm& alarm, const Status& status,
                                               double now) {
  switch (alarm.kind) {
    case AlarmKind::kNoArrivals:
      return NoArrivals(alarm, status, now - *firstLook_);
    case AlarmKind::kSilent:
      return Silent(alarm, status);
    case AlarmKind::kPort:
      if (!Lasts(alarm, IsOffTheAir(status), now)) return std::nullopt;
      return status["port"].get<std::string>();
    case AlarmKind::kBlocked:
      return Obstructed(alarm, status["intake"]["blocked"], "holds up the ingest folder");
    case AlarmKind::kRefused:
      return Obstructed(alarm, Longest(status), "is refused and tried again");
    case AlarmKind::kIntake:
      if (!Lasts(alarm, status["intakePaused"] == true, now)) return std::nullopt;
      return "an operator has paused the intake, and received files wait in their folder";
    case AlarmKind::kWaiting:
      return Waiting(alarm, status);
    case AlarmKind::kPurged:
      if (!lastPurge_ || now - *lastPurge_ > alarm.seconds) return std::nullopt;
      return "products were too old before their turn and are deleted";
    case AlarmKind::kDisk:
      return DiskFull(alarm, status);
    case AlarmKind::kRestored:
      return Restored(status);
    case AlarmKind::kNoAnswer:
      return OlderThan(now - *lastAnswer_, alarm.seconds, "the station has not answered");
  }
  return std::nullopt;
}

}  // namespace ostrel
