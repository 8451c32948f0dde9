#include "config/file_purge.h"

namespace ostrel {

namespace {
constexpr milliseconds kInterval{60'000};
}

FilePurge::FilePurge(const Parts& parts,
                     std::function<void(const std::string&, const std::string&)> onDeleted)
    : parts_(parts), onDeleted_(std::move(onDeleted)) {
  parts_.timer.OnTick([this] { Purge(); });
}

void FilePurge::StartPurge() {
  Purge();
  parts_.timer.Start(kInterval);
}

void FilePurge::Purge() {
  for (const auto& folder : folders_) {
    if (folder.age > milliseconds(0))
      RunStep(parts_.reporting, "Purge", [&] { PurgeFolder(folder); });
  }
}

void FilePurge::PurgeFolder(const Registration& registration) {
  const auto limit = parts_.clock.UtcNow() - registration.age;
  for (const auto& name : parts_.files.ListFiles(registration.folder)) {
    const auto path = registration.folder + name;
    // A file that goes away under the purge, or cannot be deleted now, is none of its concern.
    TryStep([&] {
      if (parts_.files.Status(path).written >= limit) return;
      parts_.files.Delete(path);
      onDeleted_(registration.folder, name);
    });
  }
}

}  // namespace ostrel
