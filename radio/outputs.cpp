#include "radio/outputs.h"

namespace ostrel {

void Outputs::Send(const std::string& packet) {
  for (Output& output : outputs_) RunStep(reporting_, "Timer", [&] { output.Send(packet); });
}

void Outputs::Begin() {
  for (Output& output : outputs_) output.Begin();
}

void Outputs::End() {
  for (Output& output : outputs_) RunStep(reporting_, "Shutdown", [&] { output.End(); });
}

}  // namespace ostrel
