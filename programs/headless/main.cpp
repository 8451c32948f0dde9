// The station without windows: no display, no toolkit of windows, nothing that waits for a hand.
#include <QCoreApplication>

#include "platform/linux/sharing.h"
#include "platform/linux/standard_streams.h"
#include "platform/qt/plain_desktop.h"
#include "programs/headless/plain_dialogs.h"
#include "programs/plain_arguments.h"
#include "programs/real_machine.h"

int main(int count, char* arguments[]) {
  using namespace ostrel;
  FillStandardStreams();
  const PlainHelp help{"ostrel-headless",
                       "Runs the station of its folder without windows, until SIGTERM."};
  if (const auto status = AnswerArguments(help, count, arguments)) return *status;
  ShareWithGroupOf(ProgramFolder());
  QCoreApplication application(count, arguments);

  RealMachine<PlainDialogs, PlainDesktop> machine;
  Station station(machine.AsPlatform());
  return RunStation(machine, station, false, &QCoreApplication::exec);
}
