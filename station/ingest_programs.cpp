#include "station/ingest_programs.h"

#include "base/failure.h"

namespace ostrel {

namespace {
constexpr const char* kTitles[] = {"Brask", "Tiltor"};
}

void IngestPrograms::StartIngest(int engine) {
  if (engine < 1 || engine > 2) return;
  const std::string title = kTitles[engine - 1];
  TryStep([&] {
    if (!desktop_.WindowExists(title)) Start(title);
  });
}

void IngestPrograms::Start(const std::string& title) {
  try {
    desktop_.StartMinimized({programFolder_ + "/" + title + ".exe", "KvStart"});
  } catch (const Failure& failure) {
    if (failure.number() == failure_number::kPermissionDenied)
      reporting_.WriteLog("Ingest", title + " was not started. " + failure.text());
  }
}

void IngestPrograms::ShowIngest() {
  for (const auto* title : kTitles) TryStep([&] { desktop_.RestoreWindowAbove(title); });
}

}  // namespace ostrel
