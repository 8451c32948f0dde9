// Opens port 1 of the ports folder given, keys it as a station does, and ends: by closing (no
// further argument), or at once ("exit"), or by a kill ("kill").
#include <signal.h>
#include <stdlib.h>
#include <string>

#include "platform/linux/linux_clock.h"
#include "platform/linux/linux_serial_port.h"

int main(int count, char** arguments) {
  ostrel::StopSignal stop;
  ostrel::LinuxClock clock(stop);
  ostrel::LinuxSerialPort port(clock, arguments[1]);
  port.Open(1, "1200,N,8,2");
  port.SetKeyLine2(true);
  port.SetKeyLine1(true);
  const std::string end = count > 2 ? arguments[2] : "";
  if (end == "exit") exit(0);  // the port's own closing is passed over
  if (end == "kill") raise(SIGKILL);
  port.SetKeyLine1(false);
  port.SetKeyLine1(true);
  port.Close();
  return 0;
}
