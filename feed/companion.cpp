#include "feed/companion.h"

#include <cstdlib>
#include <unistd.h>

#include "base/names.h"
#include "platform/linux/program_folder.h"

namespace ostrel {

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
  execv(JoinPath(ProgramFolder(), "ostrel-ingest").c_str(), arguments);
}

}  // namespace ostrel
