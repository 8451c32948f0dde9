// Files that are to go and cannot be deleted at the moment, as on a disk that has turned read-only.
// They are named in a small file of their own, so that a restart deletes them too. Where that file
// cannot be written either, this run alone knows them.
#pragma once

#include <map>
#include <string>

#include "platform/files.h"

namespace ostrel {

class UndeletedFiles {
 public:
  /// `listPath` is the hidden file that names them.
  UndeletedFiles(Files& files, std::string listPath)
      : files_(files), listPath_(std::move(listPath)) {}

  /// At the start: reads what an earlier run could not delete, and deletes it. Another file of such
  /// a name, told by its size and time, stays.
  void Load();
  /// The file at `path` could not be deleted.
  void Add(const std::string& path);
  /// Tries to delete them all.
  void Retry();

 private:
  bool IsGone(const std::string& path, const FileStatus& status);
  void Write();

  Files& files_;
  std::string listPath_;
  std::map<std::string, FileStatus> entries_;  // by path
  bool isWritten_ = true;                      // the list on the disk says what `entries_` does
};

}  // namespace ostrel
