#include "station/standstill.h"

namespace ostrel {

std::string Standstill(const Transmitter& transmitter, const ProgramValues& values,
                       const TransmitStatus& status) {
  if (status.started == UtcTime{}) return {};
  switch (transmitter.state()) {
    case Transmitter::State::kOpen:
      if (values.ingestPath.empty())
        return "The ingest path is empty. Nothing is taken and nothing is sent.";
      if (status.intakeIsPaused)
        return "An operator has paused the intake. Received files wait in their folder.";
      return {};
    case Transmitter::State::kVanished:
      return transmitter.PortText() + " Nothing goes on the air until it is back.";
    case Transmitter::State::kClosed:
    case Transmitter::State::kFailed:
      break;
  }
  return transmitter.PortText() + " Nothing goes on the air.";
}

}  // namespace ostrel
