#include "intake/old_files.h"

#include <algorithm>

#include "base/names.h"
#include "base/numbers.h"
#include "base/reporting.h"

namespace ostrel {

milliseconds PurgeAge(const SetupFields& setup) {
  constexpr double kMillisecondsPerHour = 3'600'000;
  constexpr double kLongest = 24.0 * 366 * 1000;  // hours
  const double hours = std::clamp(LeadingNumber(setup.txtPurgeTime.Get()), 0.0, kLongest);
  return milliseconds(static_cast<long long>(hours * kMillisecondsPerHour));
}

std::vector<std::string> DeleteOlder(Files& files, const std::string& folder, UtcTime limit,
                                     const std::function<bool(const std::string& name)>& isInUse) {
  auto names = files.ListFiles(folder);
  std::erase_if(names, [&](const std::string& name) {
    const auto path = JoinPath(folder, name);
    bool isDeleted = false;
    TryStep([&] {
      if (files.Status(path).written >= limit || (isInUse && isInUse(name))) return;
      files.Delete(path);
      isDeleted = true;
    });
    return !isDeleted;
  });
  return names;
}

}  // namespace ostrel
