#include "feed/folder_source.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <fnmatch.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "base/failure.h"
#include "base/names.h"
#include "base/scope_guard.h"
#include "base/text.h"
#include "feed/placing.h"
#include "platform/linux/file_io.h"
#include "platform/linux/held_alone.h"
#include "platform/linux/system_error.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::steady_clock;
using Afterwards = FolderSettings::Afterwards;

constexpr seconds kInterval{10};
constexpr std::chrono::milliseconds kSoon{100}, kAgain{2000}, kSlice{100};
// Who has not written for so long, and not closed either, has been forgotten or has crashed.
constexpr minutes kLongestWriting{10};

std::string StateOf(const struct stat& status) {
  return fmt::format("{}-{}.{:09}", status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
}

/// The state of a file that has something in it; nothing for all else, links too.
std::optional<std::string> StateAt(const std::string& path) {
  struct stat status;
  if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0)
    return std::nullopt;
  return StateOf(status);
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
      watch_({.writing =
                  [this](const auto& path) {
                    writing_[path] = steady_clock::now();
                    if (const auto seen = seen_.find(path); seen != seen_.end())
                      seen->second.isClosed = false;
                  },
              .whole =
                  [this](const auto& path) {
                    writing_.erase(path);
                    seen_[path].isClosed = true;
                    if (!Look(path)) soon_.start(kAgain);
                  },
              .newFolder = [this] { soon_.start(kSoon); }}) {
  soon_.setSingleShot(true);
  QObject::connect(&soon_, &QTimer::timeout, &soon_,
                   [this] { toLook_.empty() ? Scan() : LookOn(); });
  QObject::connect(&interval_, &QTimer::timeout, &interval_, [this] { Scan(); });
}

void FolderSource::Start() {
  Scan();
  interval_.start(kInterval);
}

void FolderSource::Scan() {
  ++scan_;
  std::vector<std::string> files;
  std::string missing;
  for (const auto& folder : settings_.paths) {
    if (!ScanTree(folder, files)) missing = folder;
  }
  SetState(missing.empty() ? "watched" : missing + " cannot be read", missing.empty());
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

/// Adds the wanted files, the oldest first: a newer one of its name comes after it.
bool FolderSource::ScanTree(const std::string& folder, std::vector<std::string>& files) {
  std::vector<std::pair<fs::file_time_type, std::string>> found;
  std::error_code error, ignored;
  watch_.Watch(folder);
  fs::recursive_directory_iterator at(folder, fs::directory_options::skip_permission_denied, error);
  for (; !error && at != fs::recursive_directory_iterator(); at.increment(error)) {
    const auto type = at->symlink_status(ignored).type();
    if (type == fs::file_type::directory) watch_.Watch(at->path().string());
    if (type == fs::file_type::regular)
      found.emplace_back(at->last_write_time(ignored), at->path().string());
  }
  std::sort(found.begin(), found.end());
  for (auto& [time, path] : found) files.push_back(std::move(path));
  return !error;
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
    if (IsNew(path, seen) && IsWhole(path, seen)) TakeFile(path, seen);
    return true;
  } catch (const std::exception& error) {
    book_.SetTrouble(error.what());
    return false;
  }
}

/// Notes how the file stands. False for one that is done with, or is none.
bool FolderSource::IsNew(const std::string& path, Seen& seen) {
  const auto state = StateAt(path);
  if (!state) return false;
  if (seen.state == *state) {
    if (seen.isDone) PutAway(path, seen);  // the same once more, or what could not be put away
    return !seen.isDone;
  }
  seen.state = *state;
  seen.isTold = false;
  seen.since = steady_clock::now();
  const Mark mark{.key = path, .state = *state};
  seen.isDone = delivery_.IsTaken(mark);
  if (seen.isDone) {
    PutAway(path, seen);  // the program may have ended between the two
  } else if (!settings_.takesOldFiles && !seen.isClosed && IsFromBefore(path)) {
    delivery_.Leave(mark);
    seen.isDone = true;
  }
  return !seen.isDone;
}

/// True for a file from before this began: its tree may be a share that was mounted later.
bool FolderSource::IsFromBefore(const std::string& path) const {
  std::error_code error;
  return fs::last_write_time(path, error) < began_;
}

bool FolderSource::IsWhole(const std::string& path, const Seen& seen) const {
  if (seen.isClosed) return true;
  const auto file = OpenToRead(path, Links::kRefused);
  if (file && TakeLease(file.Get()) == LeaseAnswer::kGiven) return true;
  return writing_.count(path) == 0 && steady_clock::now() - seen.since >= kInterval - seconds(1);
}

void FolderSource::TakeFile(const std::string& path, Seen& seen) {
  const auto content = ReadUnchanged(path, seen);
  if (!content) return;
  if (content->size() >= kLargestContent) {
    if (!std::exchange(seen.isTold, true)) book_.Log(path + " is too large and is left");
    return;
  }
  if (!settings_.unpacks || !IsArchiveName(path)) {
    TakeContent(path, *content, seen);
  } else if (!TakeArchive(path, seen)) {
    if (!std::exchange(seen.isTold, true)) book_.Log(path + " is no archive and is left");
    return;
  }
  seen.isDone = true;
  PutAway(path, seen);
}

/// Nothing for a file that changes meanwhile, or that cannot be read: the others must not wait for
/// it.
std::optional<std::string> FolderSource::ReadUnchanged(const std::string& path, Seen& seen) {
  try {
    auto content = ReadWhole(path);
    if (StateAt(path) == seen.state) return content;
  } catch (const Failure& failure) {
    if (!std::exchange(seen.isTold, true))
      book_.Log(fmt::format("{} cannot be read: {}", path, failure.text()));
  }
  return std::nullopt;
}

void FolderSource::TakeContent(const std::string& path, const std::string& content,
                               const Seen& seen) {
  Take({.given = std::string(FileNameOf(path)),
        .content = content,
        .mark = {.key = path, .state = seen.state}});
}

/// False for what is no archive. Whether it was taken is remembered when all of it was.
bool FolderSource::TakeArchive(const std::string& path, const Seen& seen) {
  std::error_code ignored;
  fs::remove_all(workshop_, ignored);
  MakeFolders(workshop_);
  const ScopeGuard emptied([&] { fs::remove_all(workshop_, ignored); });
  const auto result = archives_.Extract(path, workshop_, {});
  if (!result.opened) return false;
  if (!result.remark.empty()) book_.Log(fmt::format("{}: {}", path, result.remark));
  for (const auto& file : result.files) {
    const auto name = FileNameOf(file);  // two members of one name have got numbers
    Take({.given = std::string(IsNumberedCopy(name) ? StripDupSuffix(name) : name),
          .content = ReadWhole(file)});
  }
  delivery_.Leave({.key = path, .state = seen.state});
  return true;
}

void FolderSource::PutAway(const std::string& path, Seen& seen) {
  if (settings_.afterwards == Afterwards::kLeave || StateAt(path) != seen.state) return;
  try {
    if (access(std::string(FolderOf(path)).c_str(), W_OK) != 0) ThrowFileFailure(errno, path);
    if (settings_.afterwards == Afterwards::kMove) {
      MakeFolders(settings_.moveTo);
      Place(WriteHidden(settings_.moveTo, std::string(FileNameOf(path)), ReadWhole(path)));
    }
    if (unlink(path.c_str()) != 0) ThrowFileFailure(errno, path);
  } catch (const Failure& failure) {
    if (!std::exchange(seen.isTold, true))
      book_.Log(fmt::format("{} was taken and stays where it is: {}", path, failure.text()));
  }
}

}  // namespace ostrel
