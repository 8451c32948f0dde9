#include "intake/missing_folder.h"

#include <fmt/format.h>

namespace ostrel {

void RestoreFolder(Files& files, Reporting& reporting, const std::string& folder) {
  if (files.Exists(folder)) return;
  if (TryStep([&] { files.CreateFolder(folder); }))
    reporting.WriteLog("Folders", fmt::format("{} was missing and is made anew.", folder));
}

}  // namespace ostrel
