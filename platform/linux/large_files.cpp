#include "platform/linux/large_files.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

#include "platform/linux/file_io.h"
#include "platform/linux/system_error.h"

namespace ostrel {
namespace {

constexpr std::size_t kMostJobs = 8;
constexpr milliseconds kUnwanted{60'000};  // nobody asked for so long: the file is gone
constexpr milliseconds kFailureLasts{10'000};

struct EndOfWork {};

}  // namespace

LargeFiles::~LargeFiles() {
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  wake_.notify_all();
  if (thread_.joinable()) thread_.join();
}

bool LargeFiles::IsFor(const Job& job, const PlacedSource& source,
                       const std::string& folder) const {
  return job.status.st_dev == source.status.st_dev && job.status.st_ino == source.status.st_ino &&
         IsSameContent(job.status, source.status) && job.folder == folder;
}

bool LargeFiles::IsReady(const PlacedSource& source, const std::string& folder, Means means,
                         milliseconds now) {
  const std::lock_guard lock(mutex_);
  Forget(now);
  const auto job = std::ranges::find_if(
      jobs_, [&](const Job& each) { return IsFor(each, source, folder) && each.means == means; });
  if (job == jobs_.end()) {
    if (jobs_.size() < kMostJobs) Begin(source, folder, means, now);
    return false;
  }
  const bool hasFailed = job->isDone && job->code != copy_code::kDone;
  if (!hasFailed) job->asked = now;
  return job->isDone;
}

void LargeFiles::Forget(milliseconds now) {
  jobs_.remove_if([&](const Job& job) {
    const bool hasFailed = job.isDone && job.code != copy_code::kDone;
    return &job != atWork_ && now - job.asked > (hasFailed ? kFailureLasts : kUnwanted);
  });
}

void LargeFiles::Begin(const PlacedSource& source, const std::string& folder, Means means,
                       milliseconds now) {
  Descriptor file = OpenToRead(source.path, Links::kFollowed);
  jobs_.push_back({source.status, source.path, folder, means, std::move(file), nullptr, now});
  if (!thread_.joinable()) thread_ = std::thread([this] { Work(); });
  wake_.notify_all();
}

std::optional<LargeFiles::Copied> LargeFiles::Take(const PlacedSource& source,
                                                   const std::string& folder) {
  const std::lock_guard lock(mutex_);
  const auto job = std::ranges::find_if(jobs_, [&](const Job& each) {
    const bool isCopy = each.copy != nullptr || each.code != copy_code::kDone;
    return each.isDone && isCopy && IsFor(each, source, folder);
  });
  if (job == jobs_.end()) return std::nullopt;
  Copied copied{job->code, std::move(job->copy)};
  if (copied.code == copy_code::kDone) jobs_.erase(job);
  return copied;
}

void LargeFiles::Work() {
  std::unique_lock lock(mutex_);
  while (!isEnding_) {
    const auto job = std::ranges::find_if(jobs_, [](const Job& each) { return !each.isDone; });
    if (job == jobs_.end()) {
      wake_.wait(lock);
      continue;
    }
    atWork_ = &*job;
    lock.unlock();
    int code = 0;
    try {
      code = Do(*job);
    } catch (const EndOfWork&) {
      return;
    }
    lock.lock();
    job->file.Reset();  // an open descriptor passes for somebody who uses the file
    job->code = code;
    if (code != copy_code::kDone) job->copy.reset();
    job->isDone = true;
    atWork_ = nullptr;
  }
}

int LargeFiles::Do(Job& job) {
  if (!job.file || !IsUnchanged(job.file.Get(), job.status)) return copy_code::kInUse;
  const PlacedSource source{job.file, job.status, job.path};
  if (job.means == Means::kPlace && MayHaveSecondName(source, job.folder))
    return fdatasync(job.file.Get()) == 0 ? copy_code::kDone : SourceCopyCode(errno);
  job.copy = std::make_unique<TemporaryFile>(job.folder);
  if (job.copy->Error() != 0) return DestinationCopyCode(job.copy->Error());
  const int code = CopyContent(source, *job.copy, [this] {
    const std::lock_guard lock(mutex_);
    if (isEnding_) throw EndOfWork{};
  });
  return code != copy_code::kDone ? code : DestinationCopyCode(job.copy->Flush());
}

}  // namespace ostrel
