#include "platform/qt/linux_desktop.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <filesystem>
#include <fstream>

#include "base/failure.h"
#include "base/names.h"
#include "base/time.h"
#include "platform/linux/trusted_program.h"
#include "platform/qt/x_windows.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kEnding = ".exe";
constexpr const char* kOpener = "xdg-open";
constexpr milliseconds kOpenerPatience{10000};
constexpr milliseconds kMinimizeInterval{250};
constexpr int kMinimizeTries = 40;

std::string WithoutEnding(std::string path) {
  if (path.ends_with(kEnding)) path.resize(path.size() - kEnding.size());
  return path;
}

std::string ProgramFile(const std::string& path) {
  std::error_code error;
  return fs::exists(path, error) ? path : WithoutEnding(path);
}

/// True when a process of that name is alive; `entry` is a process folder of /proc.
bool IsProcess(const fs::path& entry, const std::string& name) {
  std::ifstream file(entry / "stat");
  std::string line;
  std::getline(file, line);  // 123 (name) S ...
  const auto open = line.find('(');
  const auto close = line.rfind(") ");
  if (open == std::string::npos || close == std::string::npos) return false;
  const bool ended = line.compare(close + 2, 1, "Z") == 0;
  return !ended && WithoutEnding(line.substr(open + 1, close - open - 1)) == name;
}

bool ProcessExists(const std::string& name) {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator("/proc", error)) {
    if (IsProcess(entry.path(), name)) return true;
  }
  return false;
}

void Launch(const std::vector<std::string>& command, const QProcessEnvironment& environment) {
  if (!FolderOf(command.front()).empty()) CheckTrusted(command.front());
  QProcess process;
  process.setProgram(QString::fromStdString(command.front()));
  QStringList arguments;
  for (auto it = command.begin() + 1; it != command.end(); ++it) {
    arguments << QString::fromStdString(*it);
  }
  process.setArguments(arguments);
  process.setProcessEnvironment(environment);
  if (!process.startDetached()) {
    throw Failure(failure_number::kFileNotFound, "File not found: " + command.front());
  }
}

}  // namespace

LinuxDesktop::LinuxDesktop() {
  QObject::connect(&minimizeTimer_, &QTimer::timeout, &minimizeTimer_,
                   [this] { MinimizeWhenShown(); });
}

bool LinuxDesktop::WindowExists(const std::string& title) {
  const XWindows windows;
  return windows.IsConnected() ? windows.Find(title).has_value() : ProcessExists(title);
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
  auto found = command;
  found.front() = ProgramFile(found.front());
  // A start that no key or click stands behind (time 0) is not given the focus.
  auto environment = QProcessEnvironment::systemEnvironment();
  environment.insert("DESKTOP_STARTUP_ID", "ostrel_TIME0");
  Launch(found, environment);
  minimizeTitle_ = WithoutEnding(std::string(FileNameOf(command.front())));
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
  Launch(command, QProcessEnvironment::systemEnvironment());
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
