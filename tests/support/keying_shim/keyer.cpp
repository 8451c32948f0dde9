// Opens a port on a pseudo-terminal, linked in the folder given, keys it as a station does, and
// ends as told: "close"; "exit" at once; "kill"; or "replug": the device goes and comes back while
// the first line is down.
#include <signal.h>
#include <stdlib.h>
#include <string>

#include "platform/linux/linux_serial_port.h"
#include "platform/virtual/virtual_clock.h"
#include "tests/support/pseudo_terminal.h"

int main(int, char** arguments) {
  const std::string folder = arguments[1], ending = arguments[2];
  ostrel::PseudoTerminal terminal, replugged;
  terminal.LinkAt(folder + "/COM1");
  ostrel::VirtualClock clock{ostrel::UtcTime{}};
  ostrel::LinuxSerialPort port(clock, folder);
  port.Open(1, "1200,N,8,2");
  port.SetKeyLine2(true);
  port.SetKeyLine1(true);
  if (ending == "exit") exit(0);  // the port's own closing is passed over
  if (ending == "kill") raise(SIGKILL);
  port.SetKeyLine1(false);
  if (ending == "replug") {
    terminal.Pull();
    port.BytesWaiting();
    replugged.LinkAt(folder + "/COM1");
    clock.Advance(ostrel::seconds(2));
    port.BytesWaiting();
  }
  port.SetKeyLine1(true);
  port.Close();
  return 0;
}
