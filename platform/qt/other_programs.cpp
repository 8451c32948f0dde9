#include "platform/qt/other_programs.h"

#include <QProcess>
#include <filesystem>
#include <fstream>

#include "base/failure.h"
#include "base/names.h"
#include "platform/linux/trusted_program.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kEnding = ".exe";

std::string WithoutEnding(std::string path) {
  if (path.ends_with(kEnding)) path.resize(path.size() - kEnding.size());
  return path;
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

}  // namespace

bool ProgramRuns(const std::string& name) {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator("/proc", error)) {
    if (IsProcess(entry.path(), name)) return true;
  }
  return false;
}

void StartProgram(const std::vector<std::string>& command, const QProcessEnvironment& environment) {
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

std::string StartIngestProgram(std::vector<std::string> command,
                               const QProcessEnvironment& environment) {
  std::error_code error;
  if (!fs::exists(command.front(), error)) command.front() = WithoutEnding(command.front());
  StartProgram(command, environment);
  return WithoutEnding(std::string(FileNameOf(command.front())));
}

}  // namespace ostrel
