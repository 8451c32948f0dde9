#include "intake/queue_intake.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/names.h"
#include "base/text.h"

namespace ostrel {

namespace {

constexpr const char* kProcedure = "CheckForNewPriFiles";
constexpr int kMostRetries = 20;
constexpr milliseconds kRetryWait{100};

}  // namespace

template <typename Step>
bool QueueIntake::RunRetried(const std::string& file, Step&& step) {
  for (;;) {
    try {
      step();
      return true;
    } catch (const std::exception& error) {
      const auto failure = AsFailure(error);
      if (!failure.IsInUse() || retries_ >= kMostRetries) {
        parts_.reporting.ReportError(failure, kProcedure, " File Name: " + file);
        return false;
      }
    }
    ++retries_;
    parts_.clock.Sleep(kRetryWait);
  }
}

void QueueIntake::CheckForNewPriFiles() {
  retries_ = 0;
  for (const Priority p : AllPriorities()) TakeOne(p);
}

void QueueIntake::TakeOne(Priority p) {
  const auto folder = parts_.values.HoldingFolder(p.number());
  std::optional<std::string> file;
  RunRetried("", [&] { file = parts_.files.FirstFile(folder); });
  if (!file) return;

  const auto source = JoinPath(folder, *file);
  bool alreadyQueued = false;
  RunRetried(*file, [&] { alreadyQueued = placed_.Contains(source); });
  if (!alreadyQueued) {
    const auto name = ToUpper(*file);
    const auto position = PositionToReplace(p, name);
    if (position) DiscardReplaced(p, *position, name);
    std::optional<std::string> placedAs;
    RunRetried(*file, [&] { placedAs = Place(p, source, name); });
    if (!placedAs) return;  // the file stays in its holding folder for the next call
    Enter(p, position, *placedAs);
  }
  RunRetried(*file, [&] { placed_.Delete(source); });
}

std::optional<std::size_t> QueueIntake::PositionToReplace(Priority p,
                                                          const std::string& name) const {
  if (!IsChecked(parts_.setup.chkOverWrite[p])) return std::nullopt;
  const auto& queue = parts_.mainWindow.PriorityList[p];
  const bool isIdle = parts_.mainWindow.lblSending[p].Get().starts_with('P');
  for (std::size_t i = isIdle ? 0 : 1; i < queue.size(); ++i) {
    if (StripExtension(queue[i]) == StripExtension(name)) return i;
  }
  return std::nullopt;
}

void QueueIntake::DiscardReplaced(Priority p, std::size_t position, const std::string& name) {
  const auto& replaced = parts_.mainWindow.PriorityList[p][position];
  TryStep([&] { parts_.files.Delete(InTransmitFolder(replaced)); });
  parts_.reporting.WriteLog(fmt::format("Priority {}", p.number()),
                            fmt::format("Overwrite {}, newer file received", StripDupSuffix(name)));
}

std::optional<std::string> QueueIntake::Place(Priority p, const std::string& source,
                                              const std::string& name) {
  if (IsChecked(parts_.setup.chkSendComp[p]) && !parts_.pending.IsHandedBackArchive(source))
    return parts_.compression.CompressFile(source, name);
  auto freeName = FirstFreeName(name, [this](const std::string& candidate) {
    return parts_.files.Exists(InTransmitFolder(candidate));
  });
  parts_.copy.CopyFile(source, InTransmitFolder(freeName));
  return freeName;
}

void QueueIntake::Enter(Priority p, std::optional<std::size_t> position, const std::string& name) {
  auto& queue = parts_.mainWindow.PriorityList[p];
  if (position) {
    parts_.pending.Drop(p, queue[*position]);
    parts_.pending.Add(p, name);
    queue.Replace(*position, name);
  } else {
    parts_.pending.Add(p, name);
    queue.Append(name);
  }
}

void QueueIntake::RemoveQueued(Priority p, std::vector<std::size_t> selected) {
  auto& queue = parts_.mainWindow.PriorityList[p];
  std::sort(selected.rbegin(), selected.rend());
  for (const auto position : selected) {
    if (position >= queue.size()) continue;
    if (position == 0 && parts_.mainWindow.lblSending[p].Get().starts_with("Send")) return;
    TryStep([&] { parts_.files.Delete(InTransmitFolder(queue[position])); });
    parts_.pending.Drop(p, queue[position]);
    queue.Remove(position);
  }
}

std::string QueueIntake::InTransmitFolder(const std::string& name) const {
  return JoinPath(parts_.values.TransmitFolder(), name);
}

}  // namespace ostrel
