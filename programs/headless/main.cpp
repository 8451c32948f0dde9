// The station without windows: no display, no toolkit of windows, nothing that waits for a hand.
#include <QCoreApplication>
#include <cstdlib>
#include <optional>

#include "platform/linux/sharing.h"
#include "platform/linux/standard_streams.h"
#include "platform/qt/plain_desktop.h"
#include "programs/headless/plain_dialogs.h"
#include "programs/real_machine.h"
#include "seam/seam.h"

int main(int count, char* arguments[]) {
  using namespace ostrel;
  FillStandardStreams();
  ShareWithGroupOf(ProgramFolder());
  QCoreApplication application(count, arguments);

  RealMachine<PlainDialogs, PlainDesktop> machine;
  Station station(machine.AsPlatform());
  const StopNotifier stopNotifier(machine.stop, station);
  std::optional<Seam> seam;
  const bool started = station.Start();
  if (started) {
    // Not before: what stopped the start is in the log, and a second instance leaves no line there.
    machine.dialogs.LogMessagesTo(station.reporting());
    seam.emplace(station, machine.socket);
  } else {
    station.Stop();  // no operator reads the message and closes the window
  }
  QCoreApplication::exec();
  return started ? EXIT_SUCCESS : EXIT_FAILURE;
}
