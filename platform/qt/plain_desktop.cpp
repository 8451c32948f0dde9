#include "platform/qt/plain_desktop.h"

#include "base/failure.h"
#include "platform/qt/other_programs.h"

namespace ostrel {

bool PlainDesktop::WindowExists(const std::string& title) {
  return ProgramRuns(title);
}

void PlainDesktop::StartMinimized(const std::vector<std::string>& command) {
  StartIngestProgram(command);
}

void PlainDesktop::Start(const std::vector<std::string>& command) {
  StartProgram(command);
}

void PlainDesktop::OpenAddress(const std::string& address) {
  throw Failure(failure_number::kFileNotFound, "There is no desktop to open " + address);
}

}  // namespace ostrel
