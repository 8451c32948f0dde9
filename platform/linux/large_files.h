// Brings large files to their next place beside the station's thread: flushes those that will get a
// second name, and copies those that need a copy. A tick never waits for either.
#pragma once

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <thread>

#include "platform/files.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/file_placing.h"
#include "platform/linux/temporary_file.h"

namespace ostrel {

/// What is smaller takes no time worth mentioning, on a memory card either. Bytes.
inline constexpr std::int64_t kLargeFile = 1024 * 1024;

class LargeFiles {
 public:
  LargeFiles() = default;
  /// Stops what is at work within a piece of a megabyte; what it made so far is removed.
  ~LargeFiles();
  LargeFiles(const LargeFiles&) = delete;
  LargeFiles& operator=(const LargeFiles&) = delete;

  /// True once `source`, as it stands, is ready for `folder`; begins the work otherwise. What
  /// failed counts as ready for ten seconds, so that its failure is reported, and is tried anew
  /// then. `now` is monotonic.
  bool IsReady(const PlacedSource& source, const std::string& folder, Means means,
               milliseconds now);

  /// The outcome of a copy that was prepared for `folder`.
  struct Copied {
    int code = 0;                         // a copy code
    std::unique_ptr<TemporaryFile> copy;  // where it is kDone
  };
  /// Hands the copy over; nothing where none was prepared.
  std::optional<Copied> Take(const PlacedSource& source, const std::string& folder);

 private:
  struct Job {
    struct stat status;  // of its source
    std::string path, folder;
    Means means;
    Descriptor file;
    std::unique_ptr<TemporaryFile> copy;
    milliseconds asked;  // when somebody asked for it last, or it failed
    bool isDone = false;
    int code = 0;
  };
  bool IsFor(const Job& job, const PlacedSource& source, const std::string& folder) const;
  void Forget(milliseconds now);
  void Begin(const PlacedSource& source, const std::string& folder, Means means, milliseconds now);
  void Work();
  int Do(Job& job);

  std::mutex mutex_;
  std::condition_variable wake_;
  std::list<Job> jobs_;  // in the order in which they were asked for
  const Job* atWork_ = nullptr;
  bool isEnding_ = false;
  std::thread thread_;  // from the first large file on
};

}  // namespace ostrel
