// The file system. Names are bytes. Every failure is a Failure with the number that the station's
// logic knows: 53 missing, 70 held by another process or not permitted, 75 path errors, 61 disk
// full, 76 folder missing, else the system's own number.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/time.h"

namespace ostrel {

/// The codes of a whole-file copy; 0 is success. CopyFile's reports carry them.
namespace copy_code {
inline constexpr int kDone = 0;
inline constexpr int kFileNotFound = 2;
inline constexpr int kPathNotFound = 3;
inline constexpr int kAccessDenied = 5;
inline constexpr int kWriteProtected = 19;
inline constexpr int kInUse = 32;
inline constexpr int kDiskFull = 112;
inline constexpr int kNameTooLong = 206;
inline constexpr int kDeviceError = 1117;
}  // namespace copy_code

struct FileStatus {
  std::int64_t size = 0;  // bytes
  UtcTime written;        // last-write time
  friend bool operator==(const FileStatus&, const FileStatus&) = default;
};

class Files {
 public:
  virtual ~Files() = default;

  /// The first regular file of the folder's own order, read no further than needed. Hidden files
  /// (leading dot), folders and links to them are passed over. A folder that does not exist is
  /// empty.
  virtual std::optional<std::string> FirstFile(const std::string& folder) = 0;
  /// All of them, in the folder's own order.
  virtual std::vector<std::string> ListFiles(const std::string& folder) = 0;

  /// True when anything of that name exists.
  virtual bool Exists(const std::string& path) = 0;
  /// The path as it stands on disk: each component as given if it exists, else the one that differs
  /// in ASCII case alone; what does not exist stays as given. Schedule entries are kept in lower
  /// case.
  virtual std::string ActualPath(const std::string& path) = 0;
  virtual FileStatus Status(const std::string& path) = 0;
  /// Sets the last-write time alone.
  virtual void SetLastWriteTime(const std::string& path, UtcTime time) = 0;

  /// Throws Failure 70 while another process has the file open, 53 when it is gone.
  virtual void TestExclusive(const std::string& path) = 0;

  /// Copies whole through a hidden file and a rename: nobody ever sees half of it, an existing
  /// destination is replaced. Its last-write time is the moment of the copy. Returns a copy_code or
  /// the system's own number.
  virtual int Copy(const std::string& source, const std::string& destination) = 0;
  virtual void Delete(const std::string& path) = 0;
  /// Moves within a file system; an existing destination is replaced.
  virtual void Rename(const std::string& source, const std::string& destination) = 0;
  /// A second name for the same file; an existing one is replaced. Throws where the file system has
  /// no hard links.
  virtual void Link(const std::string& existing, const std::string& link) = 0;
  virtual void CreateFolder(const std::string& path) = 0;
  /// Removes the hidden files that an interrupted copy left in the folder; content that was being
  /// written over another account's file is written there first.
  virtual void RemoveTemporaries(const std::string& folder) = 0;

  /// Reads into `buffer` from byte `offset` on; returns how many bytes were there. Opens and closes
  /// the file.
  virtual std::size_t ReadBlock(const std::string& path, std::int64_t offset,
                                std::span<char> buffer) = 0;
  virtual std::string ReadAll(const std::string& path) = 0;
  /// Replaces the file's content whole, through a hidden file and a rename; where the folder keeps
  /// another account's file from that, through the hidden file alone.
  virtual void WriteAll(const std::string& path, std::string_view content) = 0;
  /// Adds to the end, creating the file when missing. Never through a link: one in
  /// its place is removed. The bytes are the system's when it returns; they are not flushed.
  virtual void Append(const std::string& path, std::string_view content) = 0;
};

/// The system's text for a copy code; empty when it has none.
std::string_view CopyCodeText(int code);

}  // namespace ostrel
