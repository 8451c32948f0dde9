#include "intake/queue_intake.h"

#include <array>
#include <fmt/format.h>

#include "base/names.h"
#include "base/text.h"
#include "intake/match_pattern.h"

namespace ostrel {

namespace {

constexpr const char* kProcedure = "CheckForNewPriFiles";
constexpr int kMostRetries = 20;
constexpr milliseconds kRetryWait{100};

bool IsArchive(const std::string& name) {
  return MatchPattern(name, "*.ZIP*");
}

/// Holds nothing: of a file that nobody can open.
class PlainHold : public FileHold {
 public:
  PlainHold(Files& files, std::string path) : files_(files), path_(std::move(path)) {}
  bool Delete() override {
    files_.Delete(path_);
    return true;
  }

 private:
  Files& files_;
  std::string path_;
};

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
        refused_ = Refused{file, failure.text()};
        return false;
      }
    }
    ++retries_;
    parts_.clock.Sleep(kRetryWait);
  }
}

void QueueIntake::CheckForNewPriFiles() {
  retries_ = 0;
  for (const Priority p : AllPriorities()) {
    refused_.reset();
    TakeOne(p);
    NoteRefusal(p);
  }
}

void QueueIntake::NoteRefusal(Priority p) {
  const auto folder = parts_.values.HoldingFolder(p.number());
  if (!refused_) return parts_.obstacles.Accept(JoinPath(folder, ""));
  const auto place = JoinPath(folder, refused_->file);
  parts_.obstacles.Refuse(place, refused_->why, steppedOver_.NextTry(place));
}

void QueueIntake::TakeOne(Priority p) {
  const auto file = NextFile(p);
  if (!file) return;
  const auto source = JoinPath(parts_.values.HoldingFolder(p.number()), *file);
  if (!parts_.files.IsReady(source, parts_.values.TransmitFolder(), Means::kPlace)) {
    underway_.insert(source);
    return;
  }
  underway_.erase(source);
  bool isDone = false;
  RunRetried(*file, [&] { isDone = placed_.Contains(source) || IsSuperseded(p, *file); });
  if (isDone) parts_.history.EndAt(source, Fate::kReplaced);
  std::unique_ptr<FileHold> hold;
  std::optional<std::string> queuedAs;
  if (RunRetried(*file, [&] { hold = Hold(source); }) && !isDone) queuedAs = Queue(p, source);
  if (!hold || (!isDone && !queuedAs)) {
    // It stays for a later call: its own trouble must not hold up the others. A full disk passes.
    if (!hold)
      steppedOver_.StepOver(source, SteppedOverFiles::Versions::kAll);
    else if (!CanBeRead(source))
      steppedOver_.StepOver(source);
    return;
  }
  bool isGone = false;
  const bool isTried = RunRetried(*file, [&] { isGone = placed_.Delete(source, *hold); });
  if (isGone) return parts_.handedBack.Taken(p, *file);
  if (queuedAs) parts_.queue.Detach(p, *queuedAs);
  if (!isTried) steppedOver_.StepOver(source);
}

/// Lasts until the file is deleted: who writes into it waits for that. A file that cannot be opened
/// is met by the step that reads it.
std::unique_ptr<FileHold> QueueIntake::Hold(const std::string& source) {
  try {
    return parts_.files.HoldAlone(source, WhenUnknown::kTake);
  } catch (const Failure&) {
    if (CanBeRead(source)) throw;
    return std::make_unique<PlainHold>(parts_.files, source);
  }
}

std::optional<std::string> QueueIntake::NextFile(Priority p) {
  const auto folder = parts_.values.HoldingFolder(p.number());
  std::optional<std::string> file;
  RunRetried("", [&] {
    file = parts_.files.FirstFile(
        folder, [&](const std::string& name) { return IsPassedOver(folder, name); });
  });
  if (file && IsOverwritten(p)) TryStep([&] { file = OldestOfProduct(p, *file); });
  return file;
}

/// After a failure, or while a large file is brought to its place beside the station.
bool QueueIntake::IsPassedOver(const std::string& folder, const std::string& name) {
  if (steppedOver_.IsPassedOver(folder, name)) return true;
  const auto path = JoinPath(folder, name);
  return underway_.contains(path) &&
         !parts_.files.IsReady(path, parts_.values.TransmitFolder(), Means::kPlace);
}

/// Returns the name in the queue.
std::optional<std::string> QueueIntake::Queue(Priority p, const std::string& source) {
  const std::string file(FileNameOf(source));
  const auto name = ToUpper(file);
  const auto position = IsOverwritten(p) ? parts_.queue.PositionOfProduct(p, name) : std::nullopt;
  if (position) MakeRoom(p, *position, name);
  std::optional<TransmitQueue::Placed> placed;
  RunRetried(file, [&] { placed = Place(p, source, name); });
  if (!placed || !RunRetried(file, [&] { Enter(p, position, *placed, source); })) return {};
  return placed->name;
}

/// A folder is not listed by age, and of a product the last one taken is the one that stays.
std::string QueueIntake::OldestOfProduct(Priority p, const std::string& file) {
  const auto folder = parts_.values.HoldingFolder(p.number());
  const auto age = [&](const std::string& name) {
    return std::pair(!parts_.handedBack.Contains(p, name),
                     parts_.files.Status(JoinPath(folder, name)).written);
  };
  auto oldest = std::pair(age(file), file);
  for (const auto& other : products_.FilesLike(folder, file)) {
    if (parts_.files.Exists(JoinPath(folder, other)) && !IsPassedOver(folder, other))
      oldest = std::min(oldest, std::pair(age(other), other));
  }
  products_.Forget(folder, oldest.second);
  return oldest.second;
}

bool QueueIntake::CanBeRead(const std::string& path) const {
  return TryStep([&] {
    std::array<char, 1> byte;
    parts_.files.ReadBlock(path, 0, byte);
  });
}

/// A file that came back can do so behind a newer one.
bool QueueIntake::IsSuperseded(Priority p, const std::string& file) const {
  return IsOverwritten(p) && parts_.handedBack.Contains(p, file) &&
         parts_.queue.HoldsProduct(p, ToUpper(file));
}

/// While the newer file cannot be placed this is asked for again at each try.
void QueueIntake::MakeRoom(Priority p, std::size_t position, const std::string& name) {
  if (parts_.queue.MakeRoom(p, position)) {
    parts_.reporting.WriteLog(
        fmt::format("Priority {}", p.number()),
        fmt::format("Overwrite {}, newer file received", StripDupSuffix(name)));
  }
}

std::optional<TransmitQueue::Placed> QueueIntake::Place(Priority p, const std::string& source,
                                                        const std::string& name) {
  // An archive that came back is not zipped a second time.
  const bool isBackAsArchive =
      parts_.handedBack.Contains(p, std::string(FileNameOf(source))) && IsArchive(name);
  if (IsChecked(parts_.setup.chkSendComp[p]) && !isBackAsArchive)
    return parts_.compression.CompressFile(source, name);
  return parts_.queue.Place(source, name);
}

void QueueIntake::Enter(Priority p, std::optional<std::size_t> position,
                        const TransmitQueue::Placed& placed, const std::string& source) {
  if (position) {
    parts_.queue.Replace(p, *position, placed, source);
  } else {
    parts_.queue.Add(p, placed, source);
  }
}

}  // namespace ostrel
