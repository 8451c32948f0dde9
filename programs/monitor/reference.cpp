#include "programs/monitor/reference.h"

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <stdexcept>

#include "programs/monitor/receiver.h"
#include "programs/monitor/reception_figures.h"
#include "receive/datagram_reader.h"

namespace ostrel {

namespace {

constexpr const char* kAlarm = "not heard";

double Now() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

/// Standard output is for the figures.
void Say(const std::string& text) {
  ShowLine(text, stderr);
}

/// Whoever reads the file meanwhile sees all of the old text or all of the new.
void Put(const std::string& file, const std::string& text) {
  if (file.empty()) return;
  if (file == "-") {
    fmt::print("{}", text);
    std::fflush(stdout);
    return;
  }
  const auto fresh = file + ".new";
  if (!(std::ofstream(fresh) << text).flush())
    throw std::runtime_error(fmt::format("cannot write {}", fresh));
  std::filesystem::rename(fresh, file);
}

}  // namespace

ReferenceListener::ReferenceListener(const ReferenceOptions& options)
    : options_(options), station_(options.station), comparison_([](const auto& name) {
        Say(fmt::format("{:<12}  sent, and not heard whole", name));
      }) {
  std::signal(SIGCHLD, SIG_IGN);  // the alarm's command is not waited for
}

void ReferenceListener::Take(const std::vector<StreamEvent>& events) {
  HearStation();
  for (const auto& event : events) {
    if (const auto* const packet = std::get_if<ReceivedPacket>(&event))
      comparison_.Heard(*packet, Now());
  }
  const double now = Now();
  comparison_.Look(now);
  Watch();
  if (now < nextFigures_) return;
  nextFigures_ = now + options_.interval;
  TellFigures();
}

void ReferenceListener::HearStation() {
  std::array<char, 4096> buffer{};
  while (const auto datagram = station_.Next(buffer)) {
    const auto event = ReadDatagram(datagram->bytes);
    if (!event) comparison_.Ended();
    if (const auto* const packet = event ? std::get_if<ReceivedPacket>(&*event) : nullptr)
      comparison_.Sent(*packet, Now());
  }
}

void ReferenceListener::TellFigures() {
  const auto figures = FiguresOf(comparison_, Now());
  Put(options_.json,
      figures.dump(-1, ' ', true, nlohmann::ordered_json::error_handler_t::replace) + "\n");
  Put(options_.metrics, MetricsOf(figures));
}

void ReferenceListener::Watch() {
  if (options_.alarmAfter <= 0) return;
  const auto since = comparison_.unheardSince();
  const bool isUnheard = since && Now() - *since > options_.alarmAfter;
  if (isUnheard == isAlarmed_) return;
  isAlarmed_ = isUnheard;
  const AlarmNews news{kAlarm, options_.alarmCommand, isUnheard,
                       isUnheard ? fmt::format("{}: the station sends, and for {:.0f} s nothing "
                                               "of it was heard",
                                               kAlarm, Now() - *since)
                                 : fmt::format("{}: it is over", kAlarm)};
  Say(fmt::format("{} {}", news.Event(), news.text));
  RunAlarmCommand(news, FiguresOf(comparison_, Now()));
}

bool ReferenceListener::Finish() {
  TellFigures();
  const auto& all = comparison_.all();
  Say(fmt::format("end: {} packets heard, {} lost, {:.2f} %; {} of {} products not whole",
                  all.heard, all.lost, all.LossPercent(), comparison_.brokenProducts(),
                  comparison_.products()));
  return all.lost == 0;
}

}  // namespace ostrel
