// Does beside the station's thread what may wait for the disk: copies files, and flushes what
// moved. A tick never waits longer than a moment for either.
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

class FileWorker : public std::enable_shared_from_this<FileWorker> {
 public:
  FileWorker() = default;
  ~FileWorker() = default;
  FileWorker(const FileWorker&) = delete;
  FileWorker& operator=(const FileWorker&) = delete;

  /// Ends its work, within a piece of a megabyte; what it made so far is removed. A disk that gives
  /// no answer is waited for a second: then the work ends when the answer comes.
  void End();

  /// True once a copy of `source`, as it stands, is ready for `folder`; begins one otherwise, and
  /// waits for it for `patience` at most. What failed counts as ready for ten seconds, so that its
  /// failure is reported, and is tried anew then. `now` is monotonic.
  bool IsReady(const PlacedSource& source, const std::string& folder, milliseconds now,
               milliseconds patience);

  /// The outcome of a copy that was prepared for `folder`.
  struct Copied {
    int code = 0;                         // a copy code
    std::unique_ptr<TemporaryFile> copy;  // where it is kDone, flushed
  };
  /// Hands the copy over; nothing where none was prepared.
  std::optional<Copied> Take(const PlacedSource& source, const std::string& folder);

  /// Flushes the file system that `folder` lies on, soon.
  void Flush(const std::string& folder);

 private:
  struct Job {
    struct stat status;  // of its source
    std::string path, folder;
    Descriptor file;
    std::unique_ptr<TemporaryFile> copy;
    milliseconds asked;  // when somebody asked for it last, or it failed
    bool isDone = false;
    int code = 0;
  };
  bool IsFor(const Job& job, const PlacedSource& source, const std::string& folder) const;
  void Forget(milliseconds now);
  Job& Begin(const PlacedSource& source, const std::string& folder, milliseconds now);
  void Start();
  void Work();
  int Do(Job& job);

  std::mutex mutex_;
  std::condition_variable wake_, done_;
  std::list<Job> jobs_;  // in the order in which they were asked for
  const Job* atWork_ = nullptr;
  std::string unflushed_;  // a folder of the file system that is to be flushed; empty: none
  bool isEnding_ = false, hasEnded_ = false;
  std::thread thread_;  // from the first work on
};

}  // namespace ostrel
