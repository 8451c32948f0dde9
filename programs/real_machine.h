// The real machine, as the windowed and the headless station have it in common.
#pragma once

#include <QSocketNotifier>
#include <cstdlib>
#include <optional>
#include <string>

#include "base/names.h"
#include "base/station_files.h"
#include "platform/linux/host_name.h"
#include "platform/linux/linux_clock.h"
#include "platform/linux/linux_files.h"
#include "platform/linux/linux_instance_lock.h"
#include "platform/linux/linux_serial_port.h"
#include "platform/linux/program_folder.h"
#include "platform/linux/sqlite_settings_store.h"
#include "platform/linux/stop_signal.h"
#include "platform/linux/zip_archives.h"
#include "platform/platform.h"
#include "platform/qt/qt_event_loop.h"
#include "platform/qt/qt_local_socket.h"
#include "platform/qt/qt_timer.h"
#include "platform/qt/sqlite_history.h"
#include "platform/qt/udp_channel.h"
#include "profile/station_profile.h"
#include "seam/seam.h"
#include "station/station.h"

namespace ostrel {

/// The adapters, in the order in which they need each other. `Windows` are the station's dialogs,
/// `OtherPrograms` its desktop.
template <typename Windows, typename OtherPrograms>
struct RealMachine {
  std::string folder = ProgramFolder();
  StopSignal stop;
  LinuxClock clock{stop};
  QtEventLoop events{stop};
  QtTimer cycleTimer;
  QtTimer purgeTimer;
  LinuxSerialPort port{clock, JoinPath(folder, "ports"), &stop};
  UdpChannel datagrams;
  QtLocalSocket socket;
  LinuxFiles files{clock};
  ZipArchives archives{files, clock};
  SqliteSettingsStores stores{JoinPath(folder, kSettingsFile)};
  SqliteHistory history{JoinPath(folder, kHistoryFile)};
  Windows dialogs{clock};
  OtherPrograms desktop;
  LinuxInstanceLock instance{folder};

  Platform AsPlatform() {
    return {.programFolder = folder,
            .hostName = HostName(),
            .clock = clock,
            .events = events,
            .cycleTimer = cycleTimer,
            .purgeTimer = purgeTimer,
            .port = port,
            .datagrams = datagrams,
            .files = files,
            .archives = archives,
            .stores = stores,
            .history = history,
            .dialogs = dialogs,
            .desktop = desktop,
            .instance = instance};
  }
};

/// Stops `station` when the signal comes, once.
class StopNotifier {
 public:
  StopNotifier(const StopSignal& stop, Station& station)
      : notifier_(stop.Descriptor(), QSocketNotifier::Read) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [&] {
      notifier_.setEnabled(false);
      station.Stop();
    });
  }

 private:
  QSocketNotifier notifier_;
};

/// A start may come upon a station half made of a text: the power failed while it was applied. That
/// is taken back; what cannot be is given up, or a later start would write it over what was set
/// since.
template <typename Machine>
void FinishApplying(Machine& machine, Station& station) {
  StationProfile profile(machine.files, machine.stores, machine.folder);
  if (!profile.IsUnfinished()) return;
  bool isFirst = false;
  TryStep([&] { isFirst = machine.instance.TryLock(); });
  if (!isFirst) return;
  if (RunStep(station.reporting(), "Settings", [&] { profile.Finish(); })) {
    station.reporting().WriteLog("Settings", kTakenBack);
  } else {
    RunStep(station.reporting(), "Settings", [&] { profile.GiveUp(); });
  }
}

/// Runs `station` on `machine` from start to end, open to programs beside it. `loop` is the
/// application's; where nobody sees a window, a start that failed ends at once. Returns the
/// program's exit status.
template <typename Machine>
int RunStation(Machine& machine, Station& station, bool isSeen, int (*loop)()) {
  const StopNotifier stopNotifier(machine.stop, station);
  std::optional<Seam> seam;
  FinishApplying(machine, station);
  const bool started = station.Start();
  if (started) {
    // Not before: what stopped the start is in the log, and a second instance leaves no line there.
    machine.dialogs.LogMessagesTo(station.reporting());
    seam.emplace(station, machine.socket);
  } else if (!isSeen) {
    station.Stop();  // no operator reads the message and closes the window
  }
  loop();
  return started ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace ostrel
