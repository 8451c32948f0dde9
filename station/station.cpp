#include "station/station.h"

#include <algorithm>
#include <array>

namespace ostrel {

namespace {

ProgramValues ValuesFor(const Platform& platform) {
  ProgramValues values;
  values.programFolder = platform.programFolder;
  values.dataRoot = platform.programFolder + "/KvData";
  values.hostName = platform.hostName;
  return values;
}

template <std::size_t N>
bool IsOneOf(const std::string& text, const std::array<const char*, N>& choices) {
  return std::find(choices.begin(), choices.end(), text) != choices.end();
}

}  // namespace

Station::Station(const Platform& platform)
    : clock_(platform.clock),
      values_(ValuesFor(platform)),
      activity_(platform.events, [this] { lifecycle_.ShutDown(); }),
      log_({platform.files, platform.clock, platform.dialogs, setup_, values_, status_}),
      copy_(platform.files, platform.clock),
      transmitter_({platform.port, platform.cycleTimer, platform.clock, platform.events, log_,
                    mainFields_, setup_}),
      packetHost_(platform.datagrams, values_),
      outputs_(log_, {transmitter_, packetHost_}),
      rules_({platform.files, log_, setup_, status_, values_.programFolder}),
      matcher_(setup_.SetupPriList),
      history_({platform.history, platform.files, platform.clock, log_, setup_, status_, values_}),
      records_({platform.files, copy_, log_, values_}),
      handedBack_(
          {platform.files, platform.clock, copy_, records_, history_, log_, setup_, values_}),
      held_({platform.files, platform.clock, copy_, handedBack_, history_, values_}),
      quarantine_({platform.files, platform.clock, copy_, handedBack_, history_, log_, values_}),
      obstacles_(platform.files, platform.clock),
      intakeCount_({platform.files, platform.clock, obstacles_, quarantine_, values_}),
      queue_({platform.files, platform.clock, copy_, records_, handedBack_, held_, quarantine_,
              history_, log_, mainFields_, setup_, status_, values_}),
      compression_({platform.files, platform.archives, platform.clock, queue_, obstacles_, history_,
                    log_, setup_, status_, values_}),
      kept_({platform.files, platform.clock, copy_, rules_, obstacles_, history_, log_, values_}),
      scan_({platform.files, platform.archives, platform.clock, copy_, matcher_, kept_, obstacles_,
             history_, log_, status_, values_}),
      intake_({platform.files, platform.clock, compression_, queue_, handedBack_, obstacles_,
               history_, log_, setup_, values_}),
      morse_({platform.clock, transmitter_, platform.files, platform.dialogs, log_, mainFields_,
              setup_, status_, values_}),
      schedule_({platform.files, platform.clock, copy_, platform.dialogs, log_, setup_, status_,
                 values_.programFolder}),
      builder_({platform.files, platform.clock, log_, mainFields_, setup_, status_}),
      service_({platform.files, platform.clock, transmitter_, copy_, builder_, queue_, obstacles_,
                log_, mainFields_, setup_, status_, values_}),
      silence_({platform.clock, transmitter_, obstacles_, log_, status_}),
      cycle_({platform.clock, platform.events, transmitter_, morse_, schedule_, scan_, intake_,
              compression_, service_, silence_, outputs_, log_, mainFields_, setup_, status_,
              values_}),
      ingest_(platform.desktop, log_, values_.programFolder),
      transfer_(platform.desktop, platform.dialogs, platform.files, values_.programFolder),
      care_({platform.stores, platform.files, platform.clock, log_, status_, values_}),
      settings_({platform.stores, care_, platform.dialogs, setup_, values_, rules_, schedule_,
                 compression_, morse_, transmitter_, kept_, log_}),
      purge_({platform.files, platform.clock, platform.purgeTimer, queue_, log_, status_, values_}),
      lifecycle_({platform.clock, platform.files, platform.stores, platform.dialogs,
                  platform.instance, log_, care_, settings_, transmitter_, outputs_, queue_,
                  history_, purge_, ingest_, mainFields_, setup_, status_, values_}),
      actions_({platform.dialogs, platform.desktop, care_, activity_, setup_, status_, values_,
                morse_, schedule_, rules_, queue_, transmitter_, settings_, transfer_, ingest_}),
      operations_({activity_, platform.files, queue_, held_, quarantine_, obstacles_, handedBack_,
                   records_, history_, log_, setup_, status_, values_}) {
  platform.cycleTimer.OnTick([this] { activity_.Run([this] { cycle_.Tick(); }); });
  purge_.AlsoLook([this] {
    care_.KeepDailyCopy();
    lastDay();
  });
  HangRulesOnFields();
}

bool Station::Start() {
  bool succeeded = lifecycle_.IsFirstInstance();
  if (succeeded) activity_.Run([&] { succeeded = lifecycle_.StartUp(); });
  return succeeded;
}

const LastDay& Station::lastDay() {
  LastDay::Waiting waiting;
  for (const Priority p : AllPriorities()) {
    auto& bytes = p.number() <= LastDay::kUrgent.number() ? waiting.urgent : waiting.others;
    for (const auto& entry : queue_.Entries(p)) bytes += entry.bytes;
  }
  lastDay_.Note(clock_.Monotonic(), waiting,
                {status_.arrivedSinceStart, status_.sentSinceStart, transmitter_.OffAir()});
  return lastDay_;
}

/// The change rules hold wherever a change comes from, the load included.
void Station::HangRulesOnFields() {
  constexpr std::array kDataBits = {"8", "7"};
  constexpr std::array kParities = {"O", "E", "N"};
  fieldRules_.push_back(
      setup_.IDTime.OnChange([this](const std::string&) { morse_.RestartCountdown(); }));
  fieldRules_.push_back(setup_.lblOutData.OnChange([=, this](const std::string& text) {
    if (IsOneOf(text, kDataBits)) activity_.Run([this] { transmitter_.OpenComPort(); });
  }));
  fieldRules_.push_back(setup_.lblOutParity.OnChange([=, this](const std::string& text) {
    if (IsOneOf(text, kParities)) activity_.Run([this] { transmitter_.OpenComPort(); });
  }));
}

}  // namespace ostrel
