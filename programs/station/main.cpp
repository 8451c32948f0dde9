// The windowed program: the real machine, the station built out of it, and the windows that show
// it.
#include <QApplication>
#include <QSocketNotifier>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>

#include "base/names.h"
#include "platform/linux/linux_clock.h"
#include "platform/linux/linux_files.h"
#include "platform/linux/linux_instance_lock.h"
#include "platform/linux/linux_serial_port.h"
#include "platform/linux/program_folder.h"
#include "platform/linux/sharing.h"
#include "platform/linux/sqlite_settings_store.h"
#include "platform/linux/standard_streams.h"
#include "platform/linux/stop_signal.h"
#include "platform/linux/zip_archives.h"
#include "platform/qt/linux_desktop.h"
#include "platform/qt/qt_event_loop.h"
#include "platform/qt/qt_timer.h"
#include "platform/qt/udp_channel.h"
#include "platform/qt/x_windows.h"
#include "station/station.h"
#include "ui/looks.h"
#include "ui/main_window.h"
#include "ui/setup_dialog.h"
#include "ui/window_dialogs.h"

namespace {

using namespace ostrel;

constexpr int kNoAnswer = 2;  // exit status: a display is named and cannot be reached

bool IsSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

bool HasDisplay() {
  return IsSet("DISPLAY") || IsSet("WAYLAND_DISPLAY") || IsSet("QT_QPA_PLATFORM");
}

/// The toolkit aborts where only an X server is named and that one does not answer.
bool DisplayIsDead() {
  const bool isOnlyX = IsSet("DISPLAY") && !IsSet("WAYLAND_DISPLAY") && !IsSet("QT_QPA_PLATFORM");
  return isOnlyX && !XWindows().IsConnected();
}

/// What the toolkit is started with: the program takes no arguments, and a station without a
/// display runs without showing its windows.
struct ToolkitArguments {
  explicit ToolkitArguments(char* program)
      : values{program, platform.data(), offscreen.data(), nullptr}, count(HasDisplay() ? 1 : 3) {
    values[static_cast<std::size_t>(count)] = nullptr;
  }

  std::string platform = "-platform";
  std::string offscreen = "offscreen";
  std::array<char*, 4> values;
  int count;
};

/// The adapters, in the order in which they need each other.
struct Machine {
  std::string folder = ProgramFolder();
  StopSignal stop;
  LinuxClock clock{stop};
  QtEventLoop events{stop};
  QtTimer cycleTimer;
  QtTimer purgeTimer;
  LinuxSerialPort port{clock, JoinPath(folder, "ports"), &stop};
  UdpChannel datagrams;
  LinuxFiles files{clock};
  ZipArchives archives{files};
  SqliteSettingsStores stores{JoinPath(folder, "KvRegistry.db")};
  ui::WindowDialogs dialogs{clock};
  LinuxDesktop desktop;
  LinuxInstanceLock instance{folder};

  Platform AsPlatform() {
    return {.programFolder = folder,
            .clock = clock,
            .events = events,
            .cycleTimer = cycleTimer,
            .purgeTimer = purgeTimer,
            .port = port,
            .datagrams = datagrams,
            .files = files,
            .archives = archives,
            .stores = stores,
            .dialogs = dialogs,
            .desktop = desktop,
            .instance = instance};
  }
};

}  // namespace

int main(int /*count*/, char* arguments[]) {
  FillStandardStreams();
  ShareWithGroupOf(ProgramFolder());
  if (DisplayIsDead()) {
    fmt::print(stderr, "ostrel: the display {} does not answer.\n", std::getenv("DISPLAY"));
    return kNoAnswer;
  }
  ToolkitArguments toolkit(arguments[0]);
  QApplication application(toolkit.count, toolkit.values.data());
  QApplication::setQuitOnLastWindowClosed(false);
  QGuiApplication::setDesktopFileName("ostrel");
  QApplication::setWindowIcon(ui::ProgramIcon());

  Machine machine;
  Station station(machine.AsPlatform());
  ui::MainWindow mainWindow(station.mainFields(), station.status(), station.actions());
  auto* const setup = new ui::SetupDialog(station.setup(), station.actions(), &mainWindow);
  machine.dialogs.Attach(mainWindow, *setup, station.setup(), station.actions());
  const bool isSeen = QGuiApplication::platformName() != QLatin1String("offscreen");
  if (!isSeen) machine.dialogs.GoWithoutDisplay();

  QSocketNotifier stopNotifier(machine.stop.Descriptor(), QSocketNotifier::Read);
  QObject::connect(&stopNotifier, &QSocketNotifier::activated, &stopNotifier, [&] {
    stopNotifier.setEnabled(false);
    station.Stop();
  });

  const bool started = station.Start();
  if (started) {
    // Not before: what stopped the start is in the log, and a second instance leaves no line there.
    machine.dialogs.LogMessagesTo(station.reporting());
  } else if (!isSeen) {
    station.Stop();  // no operator reads the message and closes the window
  }
  QApplication::exec();
  return started ? EXIT_SUCCESS : EXIT_FAILURE;
}
