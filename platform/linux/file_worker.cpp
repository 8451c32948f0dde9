#include "platform/linux/file_worker.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

#include "platform/linux/file_io.h"
#include "platform/linux/system_error.h"

namespace ostrel {
namespace {

constexpr std::size_t kMostJobs = 8;
constexpr milliseconds kUnwanted{60'000};  // nobody asked for so long: the file is gone
constexpr milliseconds kFailureLasts{10'000};
constexpr seconds kPatienceAtEnd{1};

struct EndOfWork {};

/// What fails here shows where the file is read.
void FlushFileSystem(const std::string& folder) {
  const Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened) syncfs(opened.Get());
}

}  // namespace

void FileWorker::End() {
  std::unique_lock lock(mutex_);
  isEnding_ = true;
  wake_.notify_all();
  if (!thread_.joinable()) return;
  const bool hasEnded = done_.wait_for(lock, kPatienceAtEnd, [this] { return hasEnded_; });
  lock.unlock();
  hasEnded ? thread_.join() : thread_.detach();
}

bool FileWorker::IsFor(const Job& job, const PlacedSource& source,
                       const std::string& folder) const {
  return job.status.st_dev == source.status.st_dev && job.status.st_ino == source.status.st_ino &&
         IsSameContent(job.status, source.status) && job.folder == folder;
}

bool FileWorker::IsReady(const PlacedSource& source, const std::string& folder, milliseconds now,
                         milliseconds patience) {
  std::unique_lock lock(mutex_);
  Forget(now);
  const auto known =
      std::ranges::find_if(jobs_, [&](const Job& each) { return IsFor(each, source, folder); });
  if (known == jobs_.end() && jobs_.size() >= kMostJobs) return false;
  auto& job = known != jobs_.end() ? *known : Begin(source, folder, now);
  if (known == jobs_.end() && patience > milliseconds(0))
    done_.wait_for(lock, patience, [&] { return job.isDone; });
  const bool hasFailed = job.isDone && job.code != copy_code::kDone;
  if (!hasFailed) job.asked = now;
  return job.isDone;
}

void FileWorker::Forget(milliseconds now) {
  jobs_.remove_if([&](const Job& job) {
    const bool hasFailed = job.isDone && job.code != copy_code::kDone;
    return &job != atWork_ && now - job.asked > (hasFailed ? kFailureLasts : kUnwanted);
  });
}

FileWorker::Job& FileWorker::Begin(const PlacedSource& source, const std::string& folder,
                                   milliseconds now) {
  Descriptor file = OpenToRead(source.path, Links::kFollowed);
  jobs_.push_back({source.status, source.path, folder, std::move(file), nullptr, now});
  Start();
  return jobs_.back();
}

void FileWorker::Start() {
  // The thread owns the worker too, since it may end after it.
  if (!thread_.joinable()) thread_ = std::thread([self = shared_from_this()] { self->Work(); });
  wake_.notify_all();
}

void FileWorker::Flush(const std::string& folder) {
  const std::lock_guard lock(mutex_);
  unflushed_ = folder;
  Start();
}

std::optional<FileWorker::Copied> FileWorker::Take(const PlacedSource& source,
                                                   const std::string& folder) {
  const std::lock_guard lock(mutex_);
  const auto job = std::ranges::find_if(
      jobs_, [&](const Job& each) { return each.isDone && IsFor(each, source, folder); });
  if (job == jobs_.end()) return std::nullopt;
  Copied copied{job->code, std::move(job->copy)};
  if (copied.code == copy_code::kDone) jobs_.erase(job);
  return copied;
}

void FileWorker::Work() {
  std::unique_lock lock(mutex_);
  while (!isEnding_) {
    const auto job = std::ranges::find_if(jobs_, [](const Job& each) { return !each.isDone; });
    if (job == jobs_.end() && unflushed_.empty()) {
      wake_.wait(lock);
      continue;
    }
    if (job == jobs_.end()) {
      const auto folder = std::exchange(unflushed_, {});
      lock.unlock();
      FlushFileSystem(folder);
      lock.lock();
      continue;
    }
    atWork_ = &*job;
    lock.unlock();
    int code = 0;
    try {
      code = Do(*job);
    } catch (const EndOfWork&) {
      code = copy_code::kInUse;
    }
    lock.lock();
    job->file.Reset();  // an open descriptor passes for somebody who uses the file
    job->code = code;
    if (code != copy_code::kDone) job->copy.reset();
    job->isDone = true;
    atWork_ = nullptr;
    done_.notify_all();
  }
  hasEnded_ = true;
  done_.notify_all();
}

int FileWorker::Do(Job& job) {
  if (!job.file || !IsUnchanged(job.file.Get(), job.status)) return copy_code::kInUse;
  const PlacedSource source{job.file, job.status, job.path};
  job.copy = std::make_unique<TemporaryFile>(job.folder);
  if (job.copy->Error() != 0) return DestinationCopyCode(job.copy->Error());
  const int code = CopyContent(source, *job.copy, [this] {
    const std::lock_guard lock(mutex_);
    if (isEnding_) throw EndOfWork{};
  });
  return code != copy_code::kDone ? code : DestinationCopyCode(job.copy->FlushContent());
}

}  // namespace ostrel
