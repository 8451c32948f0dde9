#include "intake/stepped_over_files.h"

#include <algorithm>

#include "base/names.h"
#include "base/reporting.h"

namespace ostrel {

namespace {

constexpr milliseconds kFirstWait{10'000};
constexpr milliseconds kLongestWait{640'000};

}  // namespace

void SteppedOverFiles::StepOver(const std::string& path, Versions versions) {
  const auto now = clock_.Monotonic();
  // Those that were due long ago and did not come again are gone.
  std::erase_if(waits_, [&](const auto& wait) { return now - wait.second.end > kLongestWait; });
  const auto status = StatusOf(path);
  const auto before = waits_.find(path);
  auto length = kFirstWait;
  if (before != waits_.end() && before->second.file == status)
    length = std::min(before->second.length * 2, kLongestWait);
  waits_.insert_or_assign(path, Wait{status, length, now + length, versions});
}

std::optional<milliseconds> SteppedOverFiles::NextTry(const std::string& path) const {
  const auto wait = waits_.find(path);
  if (wait == waits_.end()) return std::nullopt;
  return wait->second.end;
}

bool SteppedOverFiles::IsPassedOver(const std::string& folder, const std::string& name) const {
  if (waits_.empty()) return false;
  const auto wait = waits_.find(JoinPath(folder, name));
  return wait != waits_.end() && clock_.Monotonic() < wait->second.end &&
         (wait->second.versions == Versions::kAll || StatusOf(wait->first) == wait->second.file);
}

FileStatus SteppedOverFiles::StatusOf(const std::string& path) const {
  FileStatus status;
  TryStep([&] { status = files_.Status(path); });
  return status;
}

}  // namespace ostrel
