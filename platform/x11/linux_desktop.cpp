#include "platform/x11/linux_desktop.h"

#include <QDeadlineTimer>
#include <QProcess>

#include "base/time.h"
#include "platform/qt/other_programs.h"
#include "platform/x11/x_windows.h"

namespace ostrel {
namespace {

constexpr const char* kOpener = "xdg-open";
constexpr milliseconds kOpenerPatience{10000};
constexpr milliseconds kMinimizeInterval{250};
constexpr int kMinimizeTries = 40;

}  // namespace

LinuxDesktop::LinuxDesktop() {
  QObject::connect(&minimizeTimer_, &QTimer::timeout, &minimizeTimer_,
                   [this] { MinimizeWhenShown(); });
}

bool LinuxDesktop::WindowExists(const std::string& title) {
  const XWindows windows;
  return windows.IsConnected() ? windows.Find(title).has_value() : ProgramRuns(title);
}

void LinuxDesktop::RestoreWindowAbove(const std::string& title) {
  const XWindows windows;
  if (!windows.IsConnected()) return;
  const auto window = windows.Find(title);
  if (!window) return;
  const auto above = windows.Above(*window);
  const bool isOfThatProgram = above && windows.AreOfOneProcess(*above, *window);
  windows.Restore(isOfThatProgram ? *above : *window);
}

void LinuxDesktop::StartMinimized(const std::vector<std::string>& command) {
  // A start that no key or click stands behind (time 0) is not given the focus.
  auto environment = QProcessEnvironment::systemEnvironment();
  environment.insert("DESKTOP_STARTUP_ID", "ostrel_TIME0");
  minimizeTitle_ = StartIngestProgram(command, environment);
  minimizeTries_ = 0;
  minimizeTimer_.start(kMinimizeInterval);
}

// No window system has a way to start a program minimized; its window is minimized once it is
// there. A window manager may not yet know a window that it is told to minimize.
void LinuxDesktop::MinimizeWhenShown() {
  const XWindows windows;
  const auto window = windows.IsConnected() ? windows.Find(minimizeTitle_) : std::nullopt;
  const bool isDone = window && windows.IsIconic(*window);
  if (window && !isDone) windows.Minimize(*window);
  if (isDone || !windows.IsConnected() || ++minimizeTries_ == kMinimizeTries) minimizeTimer_.stop();
}

void LinuxDesktop::Start(const std::vector<std::string>& command) {
  StartProgram(command);
}

void LinuxDesktop::OpenAddress(const std::string& address) {
  Start({kOpener, address});
}

void LinuxDesktop::OpenText(const std::string& path, std::function<void()> failed) {
  auto* const opener = new QProcess;  // lives as long as the editor does, whoever ends first
  opener->setStandardInputFile(QProcess::nullDevice());
  opener->setStandardOutputFile(QProcess::nullDevice());
  opener->setStandardErrorFile(QProcess::nullDevice());
  // An editor that was at work and then fails is no concern of the station's.
  const QDeadlineTimer patience(kOpenerPatience);
  QObject::connect(opener, &QProcess::errorOccurred, opener, [=](QProcess::ProcessError error) {
    if (error != QProcess::FailedToStart) return;  // whatever did start finishes
    opener->deleteLater();
    failed();
  });
  QObject::connect(opener, &QProcess::finished, opener, [=](int code) {
    opener->deleteLater();
    if (code != 0 && !patience.hasExpired()) failed();
  });
  opener->start(kOpener, {QString::fromStdString(path)});
}

}  // namespace ostrel
