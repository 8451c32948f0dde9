// What keeps a station, or what it receives, off the air until somebody helps, for who tells the
// operator at a desktop.
#pragma once

#include <string>

#include "intake/obstacles.h"
#include "platform/clock.h"
#include "radio/transmitter.h"
#include "state/program_values.h"
#include "state/transmit_status.h"

namespace ostrel {

/// In the operator's words; empty while there is nothing, and before start-up has begun.
std::string Standstill(const Transmitter& transmitter, const ProgramValues& values,
                       const TransmitStatus& status, const Obstacles& obstacles,
                       const Clock& clock);

}  // namespace ostrel
