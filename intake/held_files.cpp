#include "intake/held_files.h"

#include <algorithm>

#include "base/names.h"
#include "base/reporting.h"
#include "base/text.h"

namespace ostrel {

std::vector<HeldFiles::Held> HeldFiles::List() const {
  std::vector<Held> all;
  for (const Priority p : AllPriorities()) {
    auto names = parts_.files.ListFiles(parts_.values.HeldFolder(p));
    std::sort(names.begin(), names.end());
    for (auto& name : names) all.push_back({p, std::move(name)});
  }
  return all;
}

std::optional<HeldFiles::Held> HeldFiles::Find(const std::string& name) const {
  for (auto& held : List()) {
    if (ToUpper(held.name) == ToUpper(name)) return held;
  }
  return std::nullopt;
}

std::string HeldFiles::Take(const std::string& path, Priority p, const std::string& name) {
  const auto freeName =
      FirstFreeName(name, [this](const std::string& n) { return Find(n).has_value(); });
  auto held = PathOf({p, freeName});
  for (const auto& folder : {parts_.values.HeldRoot(), parts_.values.HeldFolder(p)}) {
    if (!parts_.files.Exists(folder)) parts_.files.CreateFolder(folder);
  }
  parts_.copy.MoveFile(path, held);
  return held;
}

void HeldFiles::Release(const Held& held) {
  // Its age begins anew, unless another account laid it there.
  TryStep([&] { parts_.files.SetLastWriteTime(PathOf(held), parts_.clock.UtcNow()); });
  parts_.handedBack.GiveBack(PathOf(held), held.p, held.name);
}

void HeldFiles::Delete(const Held& held) {
  parts_.files.Delete(PathOf(held));
  parts_.history.EndAt(PathOf(held), Fate::kRemoved);
}

std::string HeldFiles::PathOf(const Held& held) const {
  return JoinPath(parts_.values.HeldFolder(held.p), held.name);
}

}  // namespace ostrel
