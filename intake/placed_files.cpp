#include "intake/placed_files.h"

#include "base/failure.h"

namespace ostrel {

void PlacedFiles::Delete(const std::string& path) {
  try {
    files_.Delete(path);
    marks_.erase(path);
  } catch (const Failure& failure) {
    if (failure.number() == failure_number::kFileNotFound) {  // gone all the same
      marks_.erase(path);
      return;
    }
    marks_.insert_or_assign(path, files_.Status(path));
    throw;
  }
}

bool PlacedFiles::Contains(const std::string& path) {
  const auto mark = marks_.find(path);
  return mark != marks_.end() && mark->second == files_.Status(path);
}

}  // namespace ostrel
