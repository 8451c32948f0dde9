#include "station/lifecycle.h"

#include <fmt/format.h>
#include <functional>

#include "base/about.h"
#include "base/numbers.h"
#include "intake/old_files.h"
#include "settings/settings_table.h"
#include "settings/window_placement.h"

namespace ostrel {

namespace {
constexpr const char* kCategory = "Ostrel";
constexpr const char* kStartProcedure = "FormLoad";
}  // namespace

bool Lifecycle::IsFirstInstance() {
  std::string refusal = " The Retransmission Engine Is Already Running";
  try {
    if (parts_.platform.instance.TryLock()) return true;
  } catch (const std::exception& error) {
    // Mostly an account that may not write to the station's folder.
    refusal = fmt::format("{}: {}", kStartProcedure, DescribeFailure(AsFailure(error)));
  }
  parts_.platform.dialogs.ShowMessage(
      {kProgramName, refusal, MessageIcon::kStop},
      [this](MessageAnswer) { parts_.platform.dialogs.EndProgram(); });
  return false;
}

bool Lifecycle::StartUp() {
  hasBegun_ = true;
  try {
    parts_.settings.LoadProgramValues();
    CreateFolders();
    RemoveTemporaries();
    PlaceMainWindow();
    parts_.reporting.WriteLog(kCategory, fmt::format("Program Started - {}.{} build {}",
                                                     kVersionMajor, kVersionMinor, kVersionBuild));
    parts_.transmitter.SetMayOpen(true);
    parts_.settings.LoadSettings();
    parts_.platform.dialogs.ShowMainWindow();
    parts_.ingest.StartIngest(parts_.values.engine);
    ShowStartFigures();
    parts_.engine.TxStart = parts_.platform.clock.Now();
    parts_.queue.GiveBack();
    StartPurge();
    parts_.outputs.Begin();
    parts_.transmitter.StartCycle();
    return true;
  } catch (const std::exception& error) {
    parts_.transmitter.SetMayOpen(parts_.settings.IsLoaded());
    const auto report = DescribeFailure(AsFailure(error));
    parts_.reporting.WriteLog(kStartProcedure, report);
    parts_.platform.dialogs.ShowMainWindow();
    parts_.platform.dialogs.ShowMessage(
        {kProgramName, fmt::format("{}: {}", kStartProcedure, report), MessageIcon::kStop});
    return false;
  }
}

void Lifecycle::CreateFolders() {
  const auto create = [this](const std::string& path) {
    if (!parts_.platform.files.Exists(path)) parts_.platform.files.CreateFolder(path);
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
    TryStep([&] { parts_.platform.files.RemoveTemporaries(folder); });
  };
  const auto& values = parts_.values;
  for (int n = 1; n <= kCompressFolder; ++n) clean(values.HoldingFolder(n));
  for (const auto& folder : {values.programFolder, values.ingestPath, values.TransmitFolder(),
                             values.SentFolder(), values.KeptFolder()})
    clean(folder);
}

void Lifecycle::PlaceMainWindow() {
  CentreMainWindow(parts_.platform.dialogs);
  const auto store = OpenAtRoot(parts_.platform.stores);
  placementIsKnown_ = true;  // a damaged value of it is put right at the end
  RestorePlacement(*store, parts_.platform.dialogs);
}

void Lifecycle::ShowStartFigures() {
  parts_.engine.compression.ratio = 1;
  parts_.mainWindow.lblCompressionRatio.Set("Compression = 1:1");
  parts_.mainWindow.lblThroughput.Set(fmt::format(
      "Throughput = {} BPS", FormatPlain(LeadingNumber(parts_.setup.lblOutBaud.Get()))));
}

void Lifecycle::StartPurge() {
  purge_.emplace(FilePurge::Parts{parts_.platform.files, parts_.platform.clock,
                                  parts_.platform.purgeTimer, parts_.queue, parts_.reporting,
                                  parts_.values});
  for (const auto& folder :
       {parts_.values.TransmitFolder() + "/", parts_.values.SentFolder() + "/"}) {
    purge_->SetPurgeFolder(folder);
    purge_->SetPurgeAge(PurgeAge(parts_.setup));
    purge_->AddPurgeFolder();
  }
  purge_->StartPurge();
}

void Lifecycle::ShutDown() {
  auto& platform = parts_.platform;
  if (!hasBegun_) return platform.dialogs.EndProgram();
  platform.events.BeginShutdown();
  const std::function<void()> steps[] = {
      [&] { parts_.transmitter.Release(); },
      [&] { parts_.outputs.End(); },
      [&] { purge_.reset(); },
      [&] { parts_.settings.SaveUnsaved(); },
      [&] { platform.dialogs.UnloadSetup(); },
      [&] { platform.dialogs.CloseErrorWindow(); },
      [&] { parts_.ingest.ShowIngest(); },
      [&] { parts_.reporting.WriteLog(kCategory, "Program Stopped"); },
      [&] { SavePlacement(); },
      [&] { platform.dialogs.EndProgram(); },
  };
  for (const auto& step : steps) RunStep(parts_.reporting, "Shutdown", step);
}

void Lifecycle::SavePlacement() {
  if (!placementIsKnown_) return;  // the window stands where nobody put it
  const auto store = OpenAtRoot(parts_.platform.stores);
  StorePlacement(*store, parts_.platform.dialogs.Placement());
}

}  // namespace ostrel
