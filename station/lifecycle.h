// The program's life: everything that start-up does in its order, and the orderly stop that
// releases the transmitter.
#pragma once

#include "base/reporting.h"
#include "intake/transmit_queue.h"
#include "platform/clock.h"
#include "platform/dialogs.h"
#include "platform/files.h"
#include "platform/instance_lock.h"
#include "platform/settings_store.h"
#include "radio/outputs.h"
#include "radio/transmitter.h"
#include "state/program_values.h"
#include "state/transmit_status.h"
#include "station/file_purge.h"
#include "station/ingest_programs.h"
#include "station/settings_care.h"
#include "station/settings_io.h"

namespace ostrel {

class Lifecycle {
 public:
  struct Parts {
    Clock& clock;
    Files& files;
    SettingsStores& stores;
    Dialogs& dialogs;
    InstanceLock& instance;
    Reporting& reporting;
    SettingsCare& care;
    SettingsIo& settings;
    Transmitter& transmitter;
    Outputs& outputs;
    TransmitQueue& queue;
    ProductHistory& history;
    FilePurge& purge;
    IngestPrograms& ingest;
    MainFields& mainFields;
    SetupFields& setup;
    TransmitStatus& status;
    ProgramValues& values;
  };
  explicit Lifecycle(const Parts& parts) : parts_(parts) {}

  /// False when another instance runs, or that cannot be told because the station's folder cannot
  /// be written: a message says so, and the program ends when it has been read.
  bool IsFirstInstance();
  /// All of start-up. A failure at any step stops it there, with a log line and a message; the main
  /// window stays and can be closed. False then.
  bool StartUp();
  /// All of shutdown, each step whatever becomes of the one before it: the lines drop in any case.
  /// A program that is asked to end before start-up has begun only ends: the log, the store and the
  /// ingest program are not its own, but perhaps those of a first instance.
  void ShutDown();

 private:
  void CreateFolders();
  void RemoveTemporaries();
  void PlaceMainWindow();
  void ShowStartFigures();
  void StartPurge();
  void SavePlacement();

  Parts parts_;
  bool hasBegun_ = false;
  bool placementIsKnown_ = false;
};

}  // namespace ostrel
