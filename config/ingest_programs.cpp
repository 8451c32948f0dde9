#include "config/ingest_programs.h"

#include "base/reporting.h"

namespace ostrel {

namespace {
constexpr const char* kTitles[] = {"Brask", "Tiltor"};
}

void IngestPrograms::StartIngest(int engine) {
  if (engine < 1 || engine > 2) return;
  const std::string title = kTitles[engine - 1];
  TryStep([&] {
    if (!desktop_.WindowExists(title))
      desktop_.StartMinimized({programFolder_ + "/" + title + ".exe", "KvStart"});
  });
}

void IngestPrograms::ShowIngest() {
  for (const auto* title : kTitles) TryStep([&] { desktop_.RestoreWindowAbove(title); });
}

}  // namespace ostrel
