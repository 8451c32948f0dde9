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
  const auto file = NextFile(p);
  if (!file) return;
  const auto source = JoinPath(parts_.values.HoldingFolder(p.number()), *file);
  bool isDone = false;
  RunRetried(*file, [&] { isDone = placed_.Contains(source) || IsSuperseded(p, *file); });
  if (isDone) parts_.history.EndAt(source, Fate::kReplaced);
  if (!isDone && !Queue(p, source)) {
    // It stays for the next call: a full disk passes. Its own trouble must not hold up the others.
    if (!CanBeRead(source)) steppedOver_.StepOver(source);
  } else if (RunRetried(*file, [&] { placed_.Delete(source); })) {
    parts_.handedBack.Taken(p, *file);
  } else {
    steppedOver_.StepOver(source);
  }
}

std::optional<std::string> QueueIntake::NextFile(Priority p) {
  const auto folder = parts_.values.HoldingFolder(p.number());
  std::optional<std::string> file;
  RunRetried("", [&] {
    file = parts_.files.FirstFile(
        folder, [&](const std::string& name) { return steppedOver_.IsPassedOver(folder, name); });
  });
  if (file && IsOverwritten(p)) TryStep([&] { file = OldestOfProduct(p, *file); });
  return file;
}

bool QueueIntake::Queue(Priority p, const std::string& source) {
  const std::string file(FileNameOf(source));
  const auto name = ToUpper(file);
  const auto position = IsOverwritten(p) ? parts_.queue.PositionOfProduct(p, name) : std::nullopt;
  if (position) MakeRoom(p, *position, name);
  std::optional<std::string> placedAs;
  RunRetried(file, [&] { placedAs = Place(p, source, name); });
  if (!placedAs) return false;
  return RunRetried(file, [&] { Enter(p, position, *placedAs, source); });
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
    if (parts_.files.Exists(JoinPath(folder, other)) && !steppedOver_.IsPassedOver(folder, other))
      oldest = std::min(oldest, std::pair(age(other), other));
  }
  products_.Forget(folder, oldest.second);
  return oldest.second;
}

bool QueueIntake::CanBeRead(const std::string& path) const {
  return TryStep([&] {
    std::array<char, 64 * 1024> part;
    std::int64_t offset = 0;
    for (std::size_t count = part.size(); count == part.size();
         offset += static_cast<std::int64_t>(count)) {
      count = parts_.files.ReadBlock(path, offset, part);
    }
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

std::optional<std::string> QueueIntake::Place(Priority p, const std::string& source,
                                              const std::string& name) {
  // An archive that came back is not zipped a second time.
  const bool isBackAsArchive =
      parts_.handedBack.Contains(p, std::string(FileNameOf(source))) && IsArchive(name);
  if (IsChecked(parts_.setup.chkSendComp[p]) && !isBackAsArchive)
    return parts_.compression.CompressFile(source, name);
  return parts_.queue.Place(source, name);
}

void QueueIntake::Enter(Priority p, std::optional<std::size_t> position, const std::string& name,
                        const std::string& source) {
  if (position) {
    parts_.queue.Replace(p, *position, name, source);
  } else {
    parts_.queue.Add(p, name, source);
  }
}

}  // namespace ostrel
