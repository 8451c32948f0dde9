// The whole station: builds the core out of one machine, once, and wires its parts. The windowed
// program gives it the real machine; a test or a simulation gives it a virtual one.
#pragma once

#include <vector>

#include "engine/packet_builder.h"
#include "engine/queue_service.h"
#include "engine/transmit_cycle.h"
#include "ident/morse_identification.h"
#include "ident/schedule.h"
#include "intake/compression.h"
#include "intake/entry_records.h"
#include "intake/file_copy.h"
#include "intake/handed_back_files.h"
#include "intake/held_files.h"
#include "intake/ingest_scan.h"
#include "intake/kept_files.h"
#include "intake/obstacles.h"
#include "intake/product_history.h"
#include "intake/quarantine.h"
#include "intake/queue_intake.h"
#include "intake/rule_lists.h"
#include "intake/rule_matcher.h"
#include "intake/transmit_queue.h"
#include "platform/platform.h"
#include "radio/outputs.h"
#include "radio/packet_host.h"
#include "radio/transmitter.h"
#include "settings/settings_transfer.h"
#include "state/main_fields.h"
#include "state/program_values.h"
#include "state/setup_fields.h"
#include "state/transmit_status.h"
#include "station/actions.h"
#include "station/activity.h"
#include "station/figures.h"
#include "station/ingest_programs.h"
#include "station/last_day.h"
#include "station/lifecycle.h"
#include "station/program_log.h"
#include "station/queue_operations.h"
#include "station/settings_care.h"
#include "station/settings_io.h"
#include "station/standstill.h"

namespace ostrel {

class Station {
 public:
  /// Builds everything; nothing runs before Start. `platform` must outlive the station.
  explicit Station(const Platform& platform);
  Station(const Station&) = delete;
  Station& operator=(const Station&) = delete;

  /// Start-up. False when it was refused or failed, which a message says.
  bool Start();
  /// Asks the program to end: waits end, what runs unwinds, the shutdown runs.
  void Stop() { activity_.RequestStop(); }

  MainFields& mainFields() { return mainFields_; }
  SetupFields& setup() { return setup_; }
  TransmitStatus& status() { return status_; }
  ProgramValues& values() { return values_; }
  TransmitQueue& queue() { return queue_; }
  Actions& actions() { return actions_; }
  QueueOperations& operations() { return operations_; }
  const HeldFiles& held() const { return held_; }
  Quarantine& quarantine() { return quarantine_; }
  Reporting& reporting() { return log_; }
  const Clock& clock() const { return clock_; }
  /// How the station stands at this moment, from memory.
  Figures figures() { return FiguresOf(FigureParts()); }
  /// What keeps it off the air until somebody helps; empty while there is nothing.
  std::string standstill() const {
    return Standstill(transmitter_, values_, status_, obstacles_, clock_);
  }
  /// The last 24 hours up to this moment.
  const LastDay& lastDay();
  /// What waits, in the order in which it is sent.
  void ForEachEntry(const EntryCall& call) { ostrel::ForEachEntry(FigureParts(), call); }

 private:
  FigureSources FigureParts() {
    return {clock_, transmitter_, queue_, setup_, status_, morse_, intakeCount_, values_};
  }
  void HangRulesOnFields();

  Clock& clock_;
  MainFields mainFields_;
  SetupFields setup_;
  TransmitStatus status_;
  ProgramValues values_;

  Activity activity_;
  ProgramLog log_;
  FileCopy copy_;
  Transmitter transmitter_;
  PacketHost packetHost_;
  Outputs outputs_;
  RuleLists rules_;
  RuleMatcher matcher_;
  ProductHistory history_;
  EntryRecords records_;
  HandedBackFiles handedBack_;
  HeldFiles held_;
  Quarantine quarantine_;
  Obstacles obstacles_;
  IntakeCount intakeCount_;
  TransmitQueue queue_;
  Compression compression_;
  KeptFiles kept_;
  IngestScan scan_;
  QueueIntake intake_;
  MorseIdentification morse_;
  Schedule schedule_;
  PacketBuilder builder_;
  QueueService service_;
  SilenceWatch silence_;
  TransmitCycle cycle_;
  IngestPrograms ingest_;
  SettingsTransfer transfer_;
  SettingsCare care_;
  SettingsIo settings_;
  FilePurge purge_;
  LastDay lastDay_;
  Lifecycle lifecycle_;
  Actions actions_;
  QueueOperations operations_;
  std::vector<Subscription> fieldRules_;
};

}  // namespace ostrel
