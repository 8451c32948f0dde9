// A hidden file in which content is made before it gets its name: nobody sees half of it, and what
// fails leaves nothing. Its own name is short whatever the final one is, for a name of 255 bytes
// has no room for a suffix.
#pragma once

#include <string>
#include <string_view>

#include "base/time.h"
#include "platform/files.h"
#include "platform/linux/descriptor.h"

namespace ostrel {

class TemporaryFile {
 public:
  /// Makes it in `folder`. Check Error().
  explicit TemporaryFile(const std::string& folder);
  ~TemporaryFile();  // without Commit: nothing is left behind
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  /// The system's error of making it; 0 when it stands.
  int Error() const { return error_; }
  /// Its descriptor, open for reading and writing; what is written goes to the end.
  int Get() const { return file_.Get(); }

  // Each returns 0 or the system's error.
  int Write(std::string_view bytes);
  int SetMode(unsigned mode);
  int FlushContent();
  /// Flushes the content to the disk if told, stamps it with `time`, and gives it its name.
  /// Where the file of that name is kept from being replaced but may be written, its content is
  /// overwritten; it bears the system's time then.
  int Commit(const std::string& path, UtcTime time, Flush flush = Flush::kFirst);

  /// Where it lies until then.
  const std::string& Path() const { return path_; }

 private:
  int CommitInPlace(const std::string& path);

  std::string path_;
  Descriptor file_;
  int error_ = 0;
};

/// True for the names that temporary files have.
bool IsTemporaryName(std::string_view name);

/// Removes the temporary file at `path` unless a process is still at work on it.
void RemoveAbandoned(const std::string& path);

/// A name for a temporary file in `folder` that no other call of this process gives.
std::string TemporaryPath(const std::string& folder);

}  // namespace ostrel
