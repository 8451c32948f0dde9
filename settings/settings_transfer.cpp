#include "settings/settings_transfer.h"

#include <utility>

#include "base/about.h"
#include "base/reporting.h"

namespace ostrel {

void SettingsTransfer::Export() {
  TryStep([this] { StartTool("export"); });
  Say("Your Corvain registry entries have been saved.", MessageIcon::kInformation);
}

void SettingsTransfer::AskAboutImport(std::function<void(MessageAnswer)> answered) {
  dialogs_.ShowMessage({kMainCaption, "Do you really want to import the backup registry entries?",
                        MessageIcon::kQuestion, MessageButtons::kYesNo},
                       std::move(answered));
}

void SettingsTransfer::Import() {
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
