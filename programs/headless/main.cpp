// The station without windows: no display, no toolkit of windows, nothing that waits for a hand.
#include <QCoreApplication>
#include <fmt/format.h>

#include "platform/linux/sharing.h"
#include "platform/linux/standard_streams.h"
#include "platform/qt/plain_desktop.h"
#include "programs/headless/plain_dialogs.h"
#include "programs/real_machine.h"

int main(int count, char* arguments[]) {
  using namespace ostrel;
  FillStandardStreams();
  if (count > 1) {  // who asks for help wants no station on the air
    fmt::print(
        stderr,
        "usage: {}\nRuns the station of its folder, until SIGTERM. See docs/installing.md.\n",
        arguments[0]);
    return 2;
  }
  ShareWithGroupOf(ProgramFolder());
  QCoreApplication application(count, arguments);

  RealMachine<PlainDialogs, PlainDesktop> machine;
  Station station(machine.AsPlatform());
  return RunStation(machine, station, false, &QCoreApplication::exec);
}
