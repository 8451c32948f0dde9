// A file system in memory, for simulated days that nobody needs on a disk. It keeps the promises of
// Files: whole files, hard links, failures by number. It has no permissions, no other processes and
// no end of room.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"
#include "platform/files.h"

namespace ostrel {

class MemoryFiles : public Files {
 public:
  /// Files get their times from `clock`, which must outlive them. At first there is the root folder
  /// alone.
  explicit MemoryFiles(const Clock& clock) : clock_(clock) { folders_[""]; }

  /// Lays a file from outside the station; makes the folders around it.
  void Lay(const std::string& path, std::string_view content);

  /// The oldest name of the folder comes first.
  std::optional<std::string> FirstFile(const std::string& folder,
                                       const NameTest& passedOver) override;
  std::vector<std::string> ListFiles(const std::string& folder) override;
  bool Exists(const std::string& path) override;
  std::string ActualPath(const std::string& path) override;
  /// There are no links here.
  std::string RealPath(const std::string& path) override { return path; }
  FileStatus Status(const std::string& path) override;
  void SetLastWriteTime(const std::string& path, UtcTime time) override;
  /// Nobody but the station has anything open here.
  std::unique_ptr<FileHold> HoldAlone(const std::string& path, WhenUnknown whenUnknown) override;
  int Copy(const std::string& source, const std::string& destination, Links links,
           Flush flush) override;
  int Place(const std::string& source, const std::string& destination) override;
  /// Nothing takes time here.
  bool IsReady(const std::string& /*source*/, const std::string& /*folder*/,
               Means /*means*/) override {
    return true;
  }
  /// No power fails here.
  void Secure(const std::string& /*made*/, const std::string& /*source*/) override {}
  void Delete(const std::string& path) override;
  void Rename(const std::string& source, const std::string& destination) override;
  void Link(const std::string& existing, const std::string& link) override;
  void CreateFolder(const std::string& path) override;
  std::uint64_t FolderId(const std::string& path) override;
  int NameCount(const std::string& path) override;
  std::int64_t FreeBytes(const std::string& /*folder*/) override { return INT64_MAX; }
  /// Nothing is ever left half done.
  void RemoveTemporaries(const std::string& /*folder*/) override {}
  std::size_t ReadBlock(const std::string& path, std::int64_t offset,
                        std::span<char> buffer) override;
  std::string ReadAll(const std::string& path) override;
  void WriteAll(const std::string& path, std::string_view content) override;
  void Append(const std::string& path, std::string_view content) override;

 private:
  struct File {
    std::string content;
    UtcTime written;
  };
  using FilePointer = std::shared_ptr<File>;

  /// The names of one folder, in the order in which they came.
  class Folder {
   public:
    const FilePointer* Find(std::string_view name) const;
    void Put(const std::string& name, FilePointer file);
    void Erase(const std::string& name);
    template <typename See>
    void ForEachPlain(See&& see) const;

   private:
    struct Entry {
      std::uint64_t order;
      FilePointer file;
    };
    std::map<std::uint64_t, std::string> names_;
    std::map<std::string, Entry, std::less<>> entries_;
    std::uint64_t next_ = 0;
  };

  Folder* FindFolder(std::string_view path);
  Folder& FolderAround(const std::string& path);
  File& FileAt(const std::string& path);
  FilePointer Take(const std::string& path);

  const Clock& clock_;
  std::map<std::string, Folder, std::less<>> folders_;  // by path without a separator at its end
};

}  // namespace ostrel
