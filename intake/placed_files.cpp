#include "intake/placed_files.h"

#include "base/failure.h"

namespace ostrel {

void PlacedFiles::Delete(const std::string& path) {
  const auto deletePlain = [&] {
    files_.Delete(path);
    return true;
  };
  DeleteBy(deletePlain, path);
}

bool PlacedFiles::Delete(const std::string& path, FileHold& hold) {
  return DeleteBy([&] { return hold.Delete(); }, path);
}

bool PlacedFiles::DeleteBy(const std::function<bool()>& step, const std::string& path) {
  try {
    const bool isGone = step();
    if (isGone) marks_.erase(path);
    return isGone;
  } catch (const Failure& failure) {
    if (failure.number() == failure_number::kFileNotFound) {  // gone all the same
      marks_.erase(path);
      return true;
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
