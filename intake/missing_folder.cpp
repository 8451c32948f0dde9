#include "intake/missing_folder.h"

#include <fmt/format.h>

namespace ostrel {

bool RestoreFolder(Files& files, Reporting& reporting, const std::string& folder) {
  if (files.Exists(folder) || !TryStep([&] { files.CreateFolder(folder); })) return false;
  reporting.WriteLog("Folders", fmt::format("{} was missing and is made anew.", folder));
  return true;
}

}  // namespace ostrel
