#include "feed/folder_source.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <fnmatch.h>
#include <optional>
#include <utility>

#include "base/failure.h"
#include "base/names.h"
#include "base/scope_guard.h"
#include "base/text.h"
#include "feed/placing.h"
#include "feed/put_away.h"
#include "platform/linux/file_io.h"
#include "platform/linux/free_name.h"
#include "platform/linux/quiet_files.h"
#include "platform/linux/system_error.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::steady_clock;
using Afterwards = FolderSettings::Afterwards;

// A little more than a file must stand still for: the second look at it finds that it did.
constexpr seconds kInterval = kQuietTime + seconds(1);
constexpr std::chrono::milliseconds kSoon{100}, kAgain{2000}, kSlice{100};
// Who has not written for so long, and not closed either, has been forgotten or has crashed.
constexpr minutes kLongestWriting{10};
constexpr minutes kUntilRoom{10};  // among what is kept apart
constexpr off_t kLargestArchive = 64 * 1024 * 1024;

/// True for a file from before `began`: its tree may be a share that was mounted later.
bool IsFromBefore(const struct stat& status, std::chrono::system_clock::time_point began) {
  return seconds(status.st_mtim.tv_sec) + std::chrono::nanoseconds(status.st_mtim.tv_nsec) <
         began.time_since_epoch();
}

bool IsArchiveName(const std::string& path) {
  const auto name = ToUpper(path);
  return name.ends_with(".ZIP") || name.ends_with(".ZIS");
}

}  // namespace

FolderSource::FolderSource(const FolderSettings& settings, Archives& archives, std::string workshop,
                           Delivery& delivery, FeedBook& book)
    : Source(NameOfSource(settings), delivery, book),
      settings_(settings),
      archives_(archives),
      workshop_(std::move(workshop)),
      watch_({.writing = [this](const auto& path) { Safely([&] { Writing(path); }); },
              .whole = [this](const auto& path) { Safely([&] { Closed(path); }); },
              .newFolder = [this] { soon_.start(kSoon); }}),
      large_(delivery, number(), [this](const auto& end) { Safely([&] { EndLarge(end); }); }) {
  soon_.setSingleShot(true);
  const auto safely = [this](QTimer& timer, auto step) {
    QObject::connect(&timer, &QTimer::timeout, &timer, [=, this] { Safely(step); });
  };
  safely(soon_, [this] { toLook_.empty() ? Scan() : LookOn(); });
  safely(interval_, [this] { Scan(); });
}

void FolderSource::Start() {
  interval_.start(kInterval);
  Safely([this] { Scan(); });
}

void FolderSource::Writing(const std::string& path) {
  writing_[path] = steady_clock::now();
  if (const auto seen = seen_.find(path); seen != seen_.end()) seen->second.isClosed = false;
}

void FolderSource::Closed(const std::string& path) {
  writing_.erase(path);
  seen_[path].isClosed = true;
  if (!Look(path)) soon_.start(kAgain);
}

void FolderSource::Scan() {
  ++scan_;
  std::vector<std::string> files;
  std::string unread;
  for (const auto& folder : settings_.paths) ScanFolder(folder, files, unread);
  SetState(unread.empty() ? "watched" : unread + " cannot be read", unread.empty());
  toLook_.assign(files.begin(), files.end());
  LookOn();
  std::erase_if(writing_, [](const auto& entry) {
    return steady_clock::now() - entry.second > kLongestWriting;
  });
}

/// Looks at what the scan found, a while at a time: what the system tells meanwhile, and other
/// sources, come in between.
void FolderSource::LookOn() {
  const auto end = steady_clock::now() + kSlice;
  while (!toLook_.empty()) {
    if (steady_clock::now() > end) return soon_.start(0);
    if (!Look(toLook_.front())) return soon_.start(kAgain);
    toLook_.pop_front();
  }
  std::erase_if(seen_, [this](const auto& entry) { return entry.second.scan != scan_; });
}

/// Adds the files of the tree, the oldest of a folder first: a newer one of its name comes after
/// it. What cannot be read hides nothing but itself; one such folder is named in `unread`.
void FolderSource::ScanFolder(const std::string& folder, std::vector<std::string>& files,
                              std::string& unread) {
  std::vector<std::pair<fs::file_time_type, std::string>> found;
  std::vector<std::string> folders, asides;
  std::error_code error, ignored;
  watch_.Watch(folder);
  fs::directory_iterator at(folder, error);
  for (; !error && at != fs::directory_iterator(); at.increment(error)) {
    auto path = at->path().string();
    const auto type = at->symlink_status(ignored).type();
    if (type == fs::file_type::directory) {
      folders.push_back(std::move(path));
    } else if (type == fs::file_type::regular) {
      if (PathOfAside(path)) {
        asides.push_back(std::move(path));
      } else {
        found.emplace_back(at->last_write_time(ignored), std::move(path));
      }
    }
  }
  if (error) unread = folder;
  for (const auto& aside : asides) Safely([&] { Recover(aside); });
  std::sort(found.begin(), found.end());
  for (auto& [time, path] : found) files.push_back(std::move(path));
  for (const auto& below : folders) ScanFolder(below, files, unread);
}

bool FolderSource::IsWanted(const std::string& path) const {
  const std::string name(FileNameOf(path));
  return !name.starts_with('.') &&
         std::none_of(settings_.passedOver.begin(), settings_.passedOver.end(),
                      [&](const std::string& pattern) {
                        return fnmatch(pattern.c_str(), name.c_str(), FNM_CASEFOLD) == 0;
                      });
}

/// False when nothing can be taken at present; the book has why.
bool FolderSource::Look(const std::string& path) {
  if (!IsWanted(path)) return true;
  auto& seen = seen_[path];
  seen.scan = scan_;
  try {
    const auto status = StatusOf(path);
    if (!status) return true;
    IsDone(path, *status, seen) ? PutAwayAgain(path, seen) : TakeFile(path, seen);
    return true;
  } catch (const std::exception& error) {
    book_.SetTrouble(error.what());
    return false;
  }
}

/// Notes how the file stands. True for one that is done with.
bool FolderSource::IsDone(const std::string& path, const struct stat& status, Seen& seen) {
  const auto state = StateOf(status);
  // Two versions may have one size and time. A changed number alone says nothing: some file systems
  // give another one whenever they are asked.
  const bool isAnother = seen.isDone && seen.inode != 0 && seen.inode != status.st_ino &&
                         (seen.isClosed || seen.isReplaced);
  if (seen.state == state && !isAnother) return seen.isDone;
  const Mark mark{.key = path, .state = state};
  bool isDone = !isAnother && delivery_.IsTaken(mark);
  if (!isDone && !settings_.takesOldFiles && !seen.isClosed && IsFromBefore(status, began_)) {
    delivery_.Leave(mark);
    isDone = true;
  }
  seen = {.state = state,
          .since = steady_clock::now(),
          .isClosed = seen.isClosed,
          .isDone = isDone,
          .scan = seen.scan};
  return isDone;
}

bool FolderSource::IsWhole(const std::string& path, const Seen& seen, LeaseAnswer lease) const {
  if (seen.isClosed || lease == LeaseAnswer::kGiven) return true;
  return writing_.count(path) == 0 && steady_clock::now() - seen.since >= kQuietTime;
}

/// One that cannot be read is told: the others must not wait for it.
void FolderSource::TakeFile(const std::string& path, Seen& seen) {
  try {
    auto opened = OpenFileOf(path);
    if (StateOf(opened.status) != seen.state) return;  // the next look sees it
    if (IsWhole(path, seen, opened.lease)) TakeOpened(path, std::move(opened), seen);
  } catch (const UnreadableFile& failure) {
    if (!failure.IsMissing())
      TellOnce(seen, fmt::format("{} cannot be read: {}", path, failure.text()));
  }
}

void FolderSource::TakeOpened(const std::string& path, OpenedFile opened, Seen& seen) {
  const auto size = static_cast<std::size_t>(opened.status.st_size);
  if (settings_.unpacks && IsArchiveName(path)) {
    if (!TakeArchive(path, opened.status, seen)) return;
  } else if (size > delivery_.largest()) {
    return BeginLarge(path, std::move(opened), seen);
  } else if (!TakeContent(path, opened, seen)) {
    return;
  }
  seen.isDone = true;
  PutAwayHeld(path, std::move(opened), seen);
}

/// False for one that changes meanwhile.
bool FolderSource::TakeContent(const std::string& path, const OpenedFile& opened, Seen& seen) {
  const auto content = ContentOf(opened, path);
  if (!IsUnchanged(opened.file.Get(), opened.status)) return false;
  Take({.given = std::string(FileNameOf(path)),
        .content = content,
        .mark = {.key = path, .state = seen.state}});
  return true;
}

/// False for what is no archive, or another one by now. Whether it was taken is remembered when all
/// of it was.
bool FolderSource::TakeArchive(const std::string& path, const struct stat& status, Seen& seen) {
  if (status.st_size > kLargestArchive) {
    TellOnce(seen, path + " is too large and is left");
    return false;
  }
  std::error_code ignored;
  fs::remove_all(workshop_, ignored);
  MakeFolders(workshop_);
  const ScopeGuard emptied([&] { fs::remove_all(workshop_, ignored); });
  const auto result = archives_.Extract(path, workshop_, {});
  const auto present = StatusOf(path);
  if (!present || present->st_ino != status.st_ino || !IsSameContent(*present, status))
    return false;
  if (!result.opened) {
    TellOnce(seen, path + " is no archive and is left");
    return false;
  }
  if (!result.remark.empty()) book_.Log(fmt::format("{}: {}", path, result.remark));
  for (const auto& file : result.files)
    Take({.given = std::string(FileNameOf(file)), .content = ReadWhole(file)});
  delivery_.Leave({.key = path, .state = seen.state});
  return true;
}

/// One at a time; others of its size wait for the next scan.
void FolderSource::BeginLarge(const std::string& path, OpenedFile opened, Seen& seen) {
  if (large_.IsBusy() || steady_clock::now() < seen.nextTry) return;
  try {
    large_.Begin(path, std::move(opened));
  } catch (const Failure& failure) {
    EndLarge({.path = path, .state = seen.state, .trouble = failure.text()});
  }
}

void FolderSource::EndLarge(const ApartFiles::End& end) {
  auto& seen = seen_[end.path];
  if (!end.trouble.empty()) {
    seen.nextTry = steady_clock::now() + kUntilRoom;
    TellOnce(seen, fmt::format("{} is too large and is left: {}", end.path, end.trouble));
  } else if (seen.state == end.state) {
    seen.isDone = true;
    PutAwayAgain(end.path, seen);
  }
}

/// What could not be put away before, or the very same file once more.
void FolderSource::PutAwayAgain(const std::string& path, Seen& seen) {
  if (settings_.afterwards == Afterwards::kLeave) return;
  try {
    auto opened = OpenFileOf(path);
    if (StateOf(opened.status) == seen.state) PutAwayHeld(path, std::move(opened), seen);
  } catch (const UnreadableFile&) {  // the next scan tries again
  }
}

void FolderSource::PutAwayHeld(const std::string& path, OpenedFile opened, Seen& seen) {
  seen.inode = opened.status.st_ino;
  seen.isClosed = false;
  if (settings_.afterwards == Afterwards::kLeave) return;
  LinuxFileHold hold(std::move(opened.file), path, opened.status, opened.lease);
  try {
    if (PutAway(settings_, path, hold)) return;
    seen.isReplaced = true;
    soon_.start(kSoon);
  } catch (const Failure& failure) {
    TellOnce(seen, fmt::format("{} was taken and stays where it is: {}", path, failure.text()));
  }
}

/// The last run ended between the two steps of a file's putting away.
void FolderSource::Recover(const std::string& aside) {
  const auto status = StatusOf(aside);
  if (!status) return;
  auto path = PathOfAside(aside).value_or(aside);
  const bool isTaken = delivery_.IsTaken({.key = path, .state = StateOf(*status)});
  if (isTaken && settings_.afterwards != Afterwards::kLeave)
    return FinishPuttingAway(settings_, aside);
  if (const int error = RenameToFree(aside, path); error != 0) ThrowFileFailure(error, path);
}

void FolderSource::TellOnce(Seen& seen, const std::string& text) {
  if (!std::exchange(seen.isTold, true)) book_.Log(text);
}

}  // namespace ostrel
