// The windowed program: the real machine, the station built out of it, and the windows that show
// it.
#include <QApplication>
#include <QTimer>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>

#include "base/about.h"
#include "platform/linux/program_folder.h"
#include "platform/linux/sharing.h"
#include "platform/linux/standard_streams.h"
#include "platform/x11/desktop_notices.h"
#include "platform/x11/linux_desktop.h"
#include "platform/x11/x_windows.h"
#include "programs/plain_arguments.h"
#include "programs/real_machine.h"
#include "station/station.h"
#include "ui/bindings.h"
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

/// Tells an operator whose windows are out of sight what keeps the station off the air: once when
/// it begins, or becomes something else. Looked for between the ticks, so that a port that is just
/// being reopened is no news.
class StandstillNotices {
 public:
  explicit StandstillNotices(const Station& station) : station_(station) {
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { Look(); });
    timer_.start(kInterval);
  }

 private:
  static constexpr seconds kInterval{1};

  void Look() {
    const auto standstill = station_.standstill();
    if (standstill == std::exchange(told_, standstill) || standstill.empty()) return;
    notices_.Show(kMainCaption, ui::Shown(standstill));
  }

  const Station& station_;
  DesktopNotices notices_;
  QTimer timer_;
  std::string told_;
};

}  // namespace

int main(int count, char* arguments[]) {
  FillStandardStreams();
  const PlainHelp help{"ostrel", "Runs the station of its folder, in its windows."};
  if (const auto status = AnswerArguments(help, count, arguments)) return *status;
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

  RealMachine<ui::WindowDialogs, LinuxDesktop> machine;
  Station station(machine.AsPlatform());
  ui::MainWindow mainWindow(
      station.mainFields(), station.status(), [&station] { return station.figures(); },
      station.actions());
  auto* const setup = new ui::SetupDialog(station.setup(), station.actions(), &mainWindow);
  machine.dialogs.Attach(mainWindow, *setup, station.setup(), station.actions());
  const bool isSeen = QGuiApplication::platformName() != QLatin1String("offscreen");
  if (!isSeen) machine.dialogs.GoWithoutDisplay();
  std::optional<StandstillNotices> notices;
  if (isSeen) notices.emplace(station);

  return RunStation(machine, station, isSeen, &QApplication::exec);
}
