#include "platform/linux/line_rate.h"

#include <asm/termbits.h>
#include <cstdlib>
#include <sys/ioctl.h>

namespace ostrel {

bool SetLineRate(int descriptor, std::int32_t rate) {
  termios2 line = {};
  if (ioctl(descriptor, TCGETS2, &line) != 0) return false;
  line.c_cflag &= ~static_cast<tcflag_t>(CBAUD | CIBAUD);
  line.c_cflag |= BOTHER | (BOTHER << IBSHIFT);
  line.c_ispeed = line.c_ospeed = static_cast<speed_t>(rate);
  // Setting succeeds when any part of it did.
  return ioctl(descriptor, TCSETS2, &line) == 0 &&
         std::abs(LineRate(descriptor) - rate) <= rate / 50;
}

std::int64_t LineRate(int descriptor) {
  termios2 line = {};
  return ioctl(descriptor, TCGETS2, &line) == 0 ? line.c_ospeed : 0;
}

}  // namespace ostrel
