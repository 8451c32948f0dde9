#include "station/intake_figures.h"

#include <algorithm>

#include "base/names.h"
#include "base/reporting.h"

namespace ostrel {

namespace {

/// A full folder must not cost the station its ticks.
constexpr int kMostCounted = 10'000;
constexpr int kMostAges = 1'000;
constexpr milliseconds kFresh{250};
constexpr int kShare = 100;  // of the time that counting takes at most
constexpr std::size_t kMostShown = 10;

}  // namespace

IntakeFigures IntakeCount::Look() {
  const auto begin = parts_.clock.Monotonic();
  if (begin >= nextCount_) {
    Count();
    const auto end = parts_.clock.Monotonic();
    nextCount_ = end + std::max(kFresh, (end - begin) * kShare);
  }
  auto figures = counted_;
  if (const auto blocking = parts_.obstacles.blocking()) figures.blocking = FiguresOf(*blocking);
  const auto refused = parts_.obstacles.refused();
  figures.refusedCount = static_cast<int>(refused.size());
  for (std::size_t i = 0; i < std::min(refused.size(), kMostShown); ++i)
    figures.refused.push_back(FiguresOf(refused[i]));
  return figures;
}

void IntakeCount::Count() {
  const auto& values = parts_.values;
  counted_ = {};
  if (!values.ingestPath.empty()) counted_.ingest = CountIn(values.ingestPath);
  for (const Priority p : AllPriorities())
    CountIn(values.HoldingFolder(p.number()), counted_.holding);
  counted_.compression = CountIn(values.HoldingFolder(kCompressFolder));
  counted_.kept = CountIn(values.KeptFolder());
  for (const auto& folder : parts_.quarantine.Folders()) CountIn(folder, counted_.quarantine);
}

FolderFigures IntakeCount::CountIn(const std::string& folder) {
  FolderFigures figures;
  CountIn(folder, figures);
  return figures;
}

void IntakeCount::CountIn(const std::string& folder, FolderFigures& figures) {
  const auto count = [&](const std::string& name) {
    if (figures.files == kMostCounted) {
      figures.isMore = true;
      return false;
    }
    if (figures.files++ < kMostAges) NoteAge(JoinPath(folder, name), figures);
    return true;
  };
  const auto failure = FailureIn([&] { parts_.files.FirstFile(folder, count); });
  if (failure) figures.trouble = WithoutPlace(failure->text(), folder);
}

void IntakeCount::NoteAge(const std::string& path, FolderFigures& figures) {
  TryStep([&] {
    const auto age = parts_.clock.UtcNow() - parts_.files.Status(path).written;
    figures.oldest = std::max({figures.oldest.value_or(age), age, milliseconds(0)});
  });
}

ObstacleFigures IntakeCount::FiguresOf(const Obstacles::Placed& place) {
  const auto now = parts_.clock.Monotonic();
  const auto& [path, obstacle] = place;
  ObstacleFigures figures{.folder = std::string(FileNameOf(FolderOf(path))),
                          .name = std::string(FileNameOf(path)),
                          .reason = obstacle.reason,
                          .lasts = now - obstacle.since,
                          .nextTry = {}};
  if (obstacle.nextTry) figures.nextTry = std::max(*obstacle.nextTry - now, milliseconds(0));
  return figures;
}

}  // namespace ostrel
