#include "station/lifecycle.h"

#include <fmt/format.h>
#include <functional>

#include "base/about.h"
#include "base/numbers.h"
#include "intake/old_files.h"
#include "settings/settings_table.h"
#include "settings/window_placement.h"
#include "station/program_log.h"

namespace ostrel {

namespace {
constexpr const char* kCategory = "Ostrel";
constexpr const char* kStartProcedure = "FormLoad";
}  // namespace

bool Lifecycle::IsFirstInstance() {
  std::string refusal = " The Retransmission Engine Is Already Running";
  try {
    if (parts_.instance.TryLock()) return true;
  } catch (const std::exception& error) {
    // Mostly an account that may not write to the station's folder.
    refusal = fmt::format("{}: {}", kStartProcedure, DescribeFailure(AsFailure(error)));
  }
  parts_.dialogs.ShowMessage({kProgramName, refusal, MessageIcon::kStop},
                             [this](MessageAnswer) { parts_.dialogs.EndProgram(); });
  return false;
}

bool Lifecycle::StartUp() {
  hasBegun_ = true;
  parts_.status.started = parts_.clock.UtcNow();
  try {
    parts_.care.Prepare();
    parts_.settings.LoadProgramValues();
    parts_.care.KeepCopy();
    CreateFolders();
    RemoveTemporaries();
    PlaceMainWindow();
    parts_.reporting.WriteLog(kCategory, fmt::format("{}{}.{} build {}", kStartText, kVersionMajor,
                                                     kVersionMinor, kVersionBuild));
    parts_.transmitter.SetMayOpen(true);
    parts_.settings.LoadSettings();
    parts_.values.purgeAge = PurgeAge(parts_.setup);
    parts_.dialogs.ShowMainWindow();
    parts_.ingest.StartIngest(parts_.values.ingestEngine);
    ShowStartFigures();
    parts_.status.TxStart = parts_.clock.Now();
    parts_.history.Begin();
    parts_.queue.GiveBack();
    parts_.history.Settle();
    StartPurge();
    parts_.outputs.Begin();
    parts_.transmitter.StartCycle();
    return true;
  } catch (const std::exception& error) {
    parts_.transmitter.SetMayOpen(parts_.settings.IsLoaded());
    const auto report = DescribeFailure(AsFailure(error));
    parts_.reporting.WriteLog(kStartProcedure, report);
    if (!placementIsKnown_) CentreMainWindow(parts_.dialogs);
    parts_.dialogs.ShowMainWindow();
    parts_.dialogs.ShowMessage(
        {kProgramName, fmt::format("{}: {}", kStartProcedure, report), MessageIcon::kStop});
    return false;
  }
}

void Lifecycle::CreateFolders() {
  const auto create = [this](const std::string& path) {
    if (!parts_.files.Exists(path)) parts_.files.CreateFolder(path);
  };
  const auto& values = parts_.values;
  create(values.dataRoot);
  for (int n = 1; n <= kCompressFolder; ++n) create(values.HoldingFolder(n));
  create(values.TransmitFolder());
  create(values.SentFolder());
}

/// What an interrupted copy left behind is nobody's. A folder that cannot be cleaned of it is no
/// reason to stay off the air.
void Lifecycle::RemoveTemporaries() {
  const auto clean = [this](const std::string& folder) {
    TryStep([&] { parts_.files.RemoveTemporaries(folder); });
  };
  const auto& values = parts_.values;
  for (int n = 1; n <= kCompressFolder; ++n) clean(values.HoldingFolder(n));
  for (const Priority p : AllPriorities()) clean(values.HeldFolder(p));
  for (const auto& folder : {values.programFolder, values.ingestPath, values.TransmitFolder(),
                             values.SentFolder(), values.KeptFolder(), values.QuarantineFolder()})
    clean(folder);
}

void Lifecycle::PlaceMainWindow() {
  CentreMainWindow(parts_.dialogs);
  const auto store = OpenAtRoot(parts_.stores);
  placementIsKnown_ = true;  // a damaged value of it is put right at the end
  RestorePlacement(*store, parts_.dialogs);
}

void Lifecycle::ShowStartFigures() {
  parts_.status.compression = {};
  parts_.mainFields.imgActivityToolTip.Set("Station " + parts_.values.Name());
  parts_.mainFields.lblCompressionRatio.Set("Compression = 1:1");
  parts_.mainFields.lblThroughput.Set(fmt::format(
      "Throughput = {} BPS", FormatPlain(LeadingNumber(parts_.setup.lblOutBaud.Get()))));
}

void Lifecycle::StartPurge() {
  auto& purge = parts_.purge;
  for (const auto& folder :
       {parts_.values.TransmitFolder() + "/", parts_.values.SentFolder() + "/"}) {
    purge.SetPurgeFolder(folder);
    purge.SetPurgeAge(parts_.values.purgeAge);
    purge.AddPurgeFolder();
  }
  purge.StartPurge();
}

void Lifecycle::ShutDown() {
  auto& dialogs = parts_.dialogs;
  if (!hasBegun_) return dialogs.EndProgram();
  const std::function<void()> steps[] = {
      [&] { parts_.transmitter.Release(); },
      [&] { parts_.outputs.End(); },
      [&] { parts_.purge.StopPurge(); },
      // Only what an earlier save failed to store, and the operator was told would be tried again.
      [&] { parts_.settings.SaveUnsaved(); },
      [&] { dialogs.UnloadSetup(); },
      [&] { dialogs.CloseErrorWindow(); },
      [&] { parts_.ingest.ShowIngest(); },
      [&] { parts_.reporting.WriteLog(kCategory, "Program Stopped"); },
      [&] { SavePlacement(); },
      [&] { parts_.history.End(); },
      [&] { dialogs.EndProgram(); },
  };
  for (const auto& step : steps) RunStep(parts_.reporting, "Shutdown", step);
}

void Lifecycle::SavePlacement() {
  if (!placementIsKnown_) return;  // the window stands where nobody put it
  parts_.care.Change(
      [&](SettingsStore& store) { StorePlacement(store, parts_.dialogs.Placement()); });
}

}  // namespace ostrel
