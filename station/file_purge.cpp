#include "station/file_purge.h"

#include "intake/old_files.h"

namespace ostrel {

namespace {
constexpr milliseconds kInterval{60'000};
}

FilePurge::FilePurge(const Parts& parts) : parts_(parts) {
  parts_.timer.OnTick([this] { Purge(); });
}

void FilePurge::StartPurge() {
  Purge();
  parts_.timer.Start(kInterval);
}

void FilePurge::Purge() {
  alsoLook_();
  TryStep([this] { parts_.status.freeBytes = parts_.files.FreeBytes(parts_.values.dataRoot); });
  for (const auto& folder : folders_) {
    if (folder.age > milliseconds(0))
      RunStep(parts_.reporting, "Purge", [&] { PurgeFolder(folder); });
  }
}

void FilePurge::PurgeFolder(const Registration& registration) {
  const auto limit = parts_.clock.UtcNow() - registration.age;
  if (registration.folder == parts_.values.TransmitFolder() + "/") {
    parts_.queue.Purge(limit);
  } else {
    DeleteOlder(parts_.files, registration.folder, limit,
                [this](const std::string& name) { return parts_.queue.IsOnAir(name); });
  }
}

}  // namespace ostrel
