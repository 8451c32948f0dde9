#include "feed/companion.h"

#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/names.h"
#include "platform/linux/program_folder.h"

namespace ostrel {

namespace {

/// False when the program is not there, or its toolkit finds no display: it would end for that.
bool CanShow(const std::string& program) {
  std::string called = program, probe = kProbe;
  char* const arguments[] = {called.data(), probe.data(), nullptr};
  posix_spawn_file_actions_t quiet;
  posix_spawn_file_actions_init(&quiet);
  posix_spawn_file_actions_addopen(&quiet, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const int error = posix_spawn(&child, called.data(), &quiet, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&quiet);
  int status = 0;
  return error == 0 && waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace

void ShowWindowInstead(const std::string& name, char* arguments[]) {
  const auto isSet = [](const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
  };
  if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY")) return;
  // The station looks for the window among those of the X server.
  if (isSet("DISPLAY")) setenv("QT_QPA_PLATFORM", "xcb", 0);
  std::string called = name;
  arguments[0] = called.data();
  const auto program = JoinPath(ProgramFolder(), "ostrel-ingest");
  if (CanShow(program)) execv(program.c_str(), arguments);
}

}  // namespace ostrel
