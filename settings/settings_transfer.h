// Export and import of the family's settings: the work is the settings tool's, which is started and
// not waited for.
#pragma once

#include <functional>
#include <string>

#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/files.h"

namespace ostrel {

class SettingsTransfer {
 public:
  SettingsTransfer(Desktop& desktop, Dialogs& dialogs, Files& files,
                   const std::string& programFolder)
      : desktop_(desktop), dialogs_(dialogs), files_(files), programFolder_(programFolder) {}

  /// Starts the export to KvRegSet.txt and says at once that it is done; whether it is, is not
  /// known.
  void Export();
  /// Asks whether the stored settings are to be replaced; `answered` gets Yes or No.
  void AskAboutImport(std::function<void(MessageAnswer)> answered);
  /// Looks for the file, starts the import and says at once that it is done.
  void Import();

 private:
  void StartTool(const std::string& action);
  void Say(const std::string& text, MessageIcon icon);
  std::string ExportPath() const { return programFolder_ + "/KvRegSet.txt"; }

  Desktop& desktop_;
  Dialogs& dialogs_;
  Files& files_;
  const std::string& programFolder_;
};

}  // namespace ostrel
