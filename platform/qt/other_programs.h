// Programs that are started and not waited for, and those that run.
#pragma once

#include <QProcessEnvironment>
#include <string>
#include <vector>

namespace ostrel {

/// True when a process of that name is alive, with or without the ending ".exe".
bool ProgramRuns(const std::string& name);

/// Starts a program. Throws Failure 53 when it cannot be started, and 70 when somebody other than
/// root and the running account could have put it where it lies.
void StartProgram(
    const std::vector<std::string>& command,
    const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());

/// The same for a program file named with ".exe", which is taken without the ending where only that
/// one is there. Returns its name without the ending.
std::string StartIngestProgram(
    std::vector<std::string> command,
    const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());

}  // namespace ostrel
