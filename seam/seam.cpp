#include "seam/seam.h"

#include <array>
#include <chrono>
#include <fmt/format.h>
#include <utility>

#include "seam/requests.h"

namespace ostrel {

namespace {

constexpr int kDeepestQuestion = 4;  // braces within braces: a question needs one
constexpr std::array kStates = {"sending",     "idle",        "paused",       "identifying",
                                "port closed", "port failed", "port vanished"};

std::string Stamp(UtcTime time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(std::chrono::floor<seconds>(time - day));
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                     clock.hours().count(), clock.minutes().count(), clock.seconds().count());
}

Json DayOf(const DayFigures& day) {
  const auto& counts = day.counts;
  return {{"files", day.files},
          {"packets", counts.packets},
          {"fills", day.fills},
          {"discarded", counts.discarded},
          {"unmatched", counts.unmatched},
          {"purged", counts.purged},
          {"replaced", counts.replaced},
          {"errors", counts.errors}};
}

Json QueuesOf(const Figures& figures) {
  auto queues = Json::array();
  for (const Priority p : AllPriorities()) {
    const auto& queue = figures.queues[p];
    queues.push_back({{"priority", p.number()},
                      {"files", queue.files},
                      {"bytes", queue.bytes},
                      {"outIn", Seconds(queue.outIn)},
                      {"oldest", Seconds(queue.oldest)}});
  }
  return queues;
}

Json OnAirOf(const Figures& figures) {
  const auto& block = figures.onAir;
  if (!block) return nullptr;
  return {{"priority", block->priority.number()},
          {"file", block->file},
          {"block", block->number},
          {"blocks", block->count},
          {"outIn", Seconds(figures.onAirOutIn)}};
}

Json RestoredIn(const Figures& figures) {
  if (!figures.restored) return nullptr;
  return {{"at", Stamp(figures.restored->at)}, {"text", figures.restored->text}};
}

Json UnusableOf(const Figures& figures) {
  auto files = Json::array();
  for (const auto& [name, why] : figures.unusable) files.push_back({{"name", name}, {"why", why}});
  return files;
}

Json FolderOf(const FolderFigures& folder) {
  return {{"files", folder.files},
          {"more", folder.isMore},
          {"oldest", Seconds(folder.oldest)},
          {"trouble", folder.trouble.empty() ? Json() : Json(folder.trouble)}};
}

Json ObstacleOf(const ObstacleFigures& obstacle) {
  return {{"folder", obstacle.folder},
          {"name", obstacle.name.empty() ? Json() : Json(obstacle.name)},
          {"reason", obstacle.reason},
          {"for", Seconds(obstacle.lasts)},
          {"nextTry", Seconds(obstacle.nextTry)}};
}

Json IntakeOf(const IntakeFigures& intake) {
  auto refused = Json::array();
  for (const auto& obstacle : intake.refused) refused.push_back(ObstacleOf(obstacle));
  return {{"ingest", FolderOf(intake.ingest)},
          {"holding", FolderOf(intake.holding)},
          {"compression", FolderOf(intake.compression)},
          {"kept", FolderOf(intake.kept)},
          {"quarantine", FolderOf(intake.quarantine)},
          {"blocked", intake.blocking ? ObstacleOf(*intake.blocking) : Json()},
          {"refused", std::move(refused)},
          {"refusedCount", intake.refusedCount}};
}

/// Names are bytes: what is no UTF-8 in them is replaced.
std::string LineOf(const Json& answer) {
  return answer.dump(-1, ' ', true, Json::error_handler_t::replace);
}

std::string Refusal(const std::string& why) {
  return LineOf({{"error", why}});
}

/// Stops at too many braces within each other, which cost memory before they mean anything.
bool IsShallow(int depth, Json::parse_event_t /*event*/, Json& /*parsed*/) {
  if (depth > kDeepestQuestion) throw std::invalid_argument("The question is nested too deep.");
  return true;
}

Json QuestionIn(std::string_view line) {
  auto question = Json::parse(line, IsShallow);
  if (!question.is_object() || !question.contains("ask") || !question["ask"].is_string())
    throw std::invalid_argument("A question is an object with \"ask\".");
  return question;
}

}  // namespace

std::string SocketPath(const std::string& programFolder) {
  return programFolder + "/station.sock";
}

std::string StatusLine(const Figures& figures) {
  const auto state = kStates[static_cast<std::size_t>(figures.state)];
  return LineOf(
      {{"name", figures.name},
       {"version", figures.version},
       {"now", Stamp(figures.now)},
       {"started", Stamp(figures.started)},
       {"state", state},
       {"endsIn", Seconds(figures.endsIn)},
       {"keyed", figures.isKeyed},
       {"port", figures.port},
       {"rate", figures.rate},
       {"sincePacket", Seconds(figures.sincePacket)},
       {"sinceArrival", Seconds(figures.sinceArrival)},
       {"queues", QueuesOf(figures)},
       {"onAir", OnAirOf(figures)},
       {"sinceMidnight", DayOf(figures.sinceMidnight)},
       {"sinceStart", DayOf(figures.sinceStart)},
       {"compressionRatio", figures.compressionRatio},
       {"nextIdentification", Seconds(figures.nextIdentification)},
       {"freeBytes", figures.freeBytes ? Json(*figures.freeBytes) : Json()},
       {"intakePaused", figures.intakeIsPaused},
       {"restored", RestoredIn(figures)},
       {"intake", IntakeOf(figures.intake)},
       {"silentFor", Seconds(figures.silentFor)},
       {"silentBecause", figures.silentBecause},
       {"history", figures.historyTrouble.empty() ? Json() : Json(figures.historyTrouble)},
       {"unusable", UnusableOf(figures)}});
}

Seam::Seam(Station& station, LocalSocket& socket) : station_(station), socket_(socket) {
  socket_.OnLine([this](Asker asker, std::string_view line) { Answer(asker, line); });
  try {
    socket_.Open(SocketPath(station_.values().programFolder));
  } catch (const Failure& failure) {
    station_.reporting().WriteLog("Socket", failure.text());
  }
  watched_ = station_.status().onTheAir.OnChange([this](OnTheAir use) {
    if (use == OnTheAir::kIdentification) TellOfSilence();
  });
}

void Seam::Answer(Asker asker, std::string_view line) {
  try {
    const auto question = QuestionIn(line);
    if (question["ask"] == "silence") return AskForSilence(asker);
    socket_.Send(asker, AnswerTo(asker, question));
  } catch (const std::exception& error) {
    socket_.Send(asker, Refusal(error.what()));
  }
}

std::string Seam::AnswerTo(Asker asker, const Json& question) {
  const std::string asked = question["ask"];
  if (asked == "status") return StatusLine(station_.figures());
  if (asked == "list") return LineOf(ListOf(station_, question));
  if (asked == "held") return LineOf(HeldOf(station_, question));
  if (asked == "day") return LineOf(LastDayOf(station_));
  if (asked == "quarantine") return LineOf(QuarantineOf(station_, question));
  const auto done = DoAsAsked(station_, socket_.AccountOf(asker), question);
  return done.is_null() ? Refusal("There is no such question.") : LineOf(done);
}

void Seam::AskForSilence(Asker asker) {
  std::erase(wantToKnow_, asker);
  wantToKnow_.push_back(asker);
  if (wantToKnow_.size() > kMostAskers) wantToKnow_.erase(wantToKnow_.begin());
}

/// An identification blocks the station's one thread: nobody is answered until it is over.
void Seam::TellOfSilence() {
  const auto line = LineOf({{"silent", Seconds(station_.figures().endsIn)}});
  for (const auto asker : std::exchange(wantToKnow_, {})) socket_.Send(asker, line);
}

}  // namespace ostrel
