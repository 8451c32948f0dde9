#include "config/settings_transfer.h"

#include "base/reporting.h"
#include "config/about.h"

namespace ostrel {

void SettingsTransfer::Export() {
  TryStep([this] { StartTool("export"); });
  Say("Your Corvain registry entries have been saved.", MessageIcon::kInformation);
}

void SettingsTransfer::Import() {
  const auto answer = dialogs_.ShowMessage(
      {kMainCaption, "Do you really want to import the backup registry entries?",
       MessageIcon::kQuestion, MessageButtons::kYesNo});
  if (answer != MessageAnswer::kYes) return;
  if (!files_.Exists(ExportPath()))
    return Say("The Corvain registry file could not be found.", MessageIcon::kExclamation);
  TryStep([this] { StartTool("import"); });
  Say("Your backup registry file was successfully imported.", MessageIcon::kInformation);
}

void SettingsTransfer::StartTool(const std::string& action) {
  desktop_.Start(
      {programFolder_ + "/ostrel-settings", "--station", programFolder_, action, ExportPath()});
}

void SettingsTransfer::Say(const std::string& text, MessageIcon icon) {
  dialogs_.ShowMessage({kMainCaption, text, icon});
}

}  // namespace ostrel
