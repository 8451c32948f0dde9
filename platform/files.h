// The file system. Names are bytes. Every failure is a Failure with the number that the station's
// logic knows: 53 missing, 70 held by another process or not permitted, 75 path errors, 61 disk
// full, 76 folder missing, else the system's own number.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
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
inline constexpr int kMoved = -1;  // of Files::Place alone: done, and the source is gone
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

/// The most bytes that a text of the station may have: a list of rules, a schedule, a station as a
/// text. One that is larger is no such text.
inline constexpr std::int64_t kLargestText = 1 << 20;

/// Whether the last component of a path may be a symbolic link. Files of the station's folders are
/// not reached through one: it may lead to a file that is nobody else's business.
enum class Links { kRefused, kFollowed };

/// A file that nobody else had open when it was taken. While the hold lives, who wants to write
/// into the file waits where the file system can make him wait (for 45 seconds at most, as the
/// system is set); reading it disturbs nobody.
class FileHold {
 public:
  virtual ~FileHold() = default;

  /// Deletes the file. False, and the file stays, once somebody wants to write into it, has done
  /// so, or has put another file in its place. Throws Failure when it cannot be deleted.
  virtual bool Delete() = 0;
};

/// What HoldAlone does where the file system cannot tell who has a file open.
enum class WhenUnknown {
  kWait,  // the file counts as in use until it has stood still for a while
  kTake,  // the file is taken as it is: only the station and its operators lay files there, and who
          // reads one is in nobody's way
};

/// Whether a copy is safe on the disk before it takes its name.
enum class Flush {
  kFirst,  // after a power failure it is whole or not there
  kNever,  // it may be empty then; it never waits for what others write to the disk
};

/// How a file gets its next place.
enum class Means {
  kPlace,  // Files::Place
  kCopy,   // Files::Copy
};

class Files {
 public:
  virtual ~Files() = default;

  using NameTest = std::function<bool(const std::string& name)>;
  /// The first regular file of the folder's own order, read no further than needed. Hidden files
  /// (leading dot), folders, links and the names for which `passedOver` (if given) is true are
  /// passed over. A folder that does not exist is empty.
  virtual std::optional<std::string> FirstFile(const std::string& folder,
                                               const NameTest& passedOver) = 0;
  /// All regular files that are not hidden, in the folder's own order.
  virtual std::vector<std::string> ListFiles(const std::string& folder) = 0;

  /// True when anything of that name exists, false when certainly nothing does: it or its folder is
  /// missing. Throws Failure when that cannot be said, as on a disk that does not answer: a failed
  /// look is no absence.
  virtual bool Exists(const std::string& path) = 0;
  /// The path as it stands on disk: each component as given if it exists, else the one that differs
  /// in ASCII case alone; what does not exist stays as given. Schedule entries are kept in lower
  /// case.
  virtual std::string ActualPath(const std::string& path) = 0;
  /// Absolute, with links and what leads back and forth resolved as far as the path exists.
  virtual std::string RealPath(const std::string& path) = 0;
  virtual FileStatus Status(const std::string& path) = 0;
  /// Sets the last-write time alone.
  virtual void SetLastWriteTime(const std::string& path, UtcTime time) = 0;

  /// Throws Failure 70 while another process has the file open, or where that cannot be told and
  /// the file was written a moment ago; 53 when it is gone.
  virtual std::unique_ptr<FileHold> HoldAlone(const std::string& path, WhenUnknown whenUnknown) = 0;

  /// Copies a regular file whole through a hidden file and a rename: nobody ever sees half of it,
  /// an existing destination is replaced. Its last-write time is the moment of the copy. Returns a
  /// copy_code or the system's own number; kInUse when the source changed meanwhile.
  virtual int Copy(const std::string& source, const std::string& destination, Links links,
                   Flush flush) = 0;
  /// Gives a regular file its next place, before the caller deletes `source`. Within one file
  /// system `destination` becomes a second name of the file, and no byte is written; what its
  /// writer did not flush is flushed soon after. Elsewhere it is copied. A file system that has
  /// room for neither lets the file itself move: `source` is gone then, and kMoved is returned. In
  /// all else as Copy.
  virtual int Place(const std::string& source, const std::string& destination) = 0;
  /// True when Place or Copy of `source` into `folder` will not keep the station waiting. Where it
  /// takes a copy, that is begun beside the station, and the answer is false until it is done: ask
  /// again, at the next tick say. What cannot be prepared is ready, and its Place or Copy returns
  /// why.
  virtual bool IsReady(const std::string& source, const std::string& folder, Means means) = 0;
  /// Before `source` is deleted: what was made of it, the file `made`, survives a power failure
  /// from here on. On one file system the order of its changes sees to that and nothing is done;
  /// where the two folders lie on different ones, that of `made` is flushed.
  virtual void Secure(const std::string& made, const std::string& source) = 0;
  virtual void Delete(const std::string& path) = 0;
  /// Moves within a file system; an existing destination is replaced.
  virtual void Rename(const std::string& source, const std::string& destination) = 0;
  /// A second name for the same file; an existing one is replaced. Throws where the file system has
  /// no hard links.
  virtual void Link(const std::string& existing, const std::string& link) = 0;
  virtual void CreateFolder(const std::string& path) = 0;
  /// Which folder stands at `path`: another number once another one does, as when a volume was
  /// mounted there. Throws Failure when that cannot be said; 53 or 76 when there is none.
  virtual std::uint64_t FolderId(const std::string& path) = 0;
  /// How many names the file at `path` has. Throws Failure.
  virtual int NameCount(const std::string& path) = 0;
  /// What this account may still write to the file system of `folder`, in bytes.
  virtual std::int64_t FreeBytes(const std::string& folder) = 0;
  /// Removes the hidden files that an interrupted copy left in the folder; content that was being
  /// written over another account's file is written there first.
  virtual void RemoveTemporaries(const std::string& folder) = 0;

  /// Reads into `buffer` from byte `offset` on; returns how many bytes were there. Opens and closes
  /// the file, not through a link.
  virtual std::size_t ReadBlock(const std::string& path, std::int64_t offset,
                                std::span<char> buffer) = 0;
  /// A text of the station, perhaps through a link. Throws Failure 75 for anything but a regular
  /// file, which is not even opened, and 6 for one of more than kLargestText.
  virtual std::string ReadAll(const std::string& path) = 0;
  /// Replaces the file's content whole, through a hidden file and a rename; where the folder keeps
  /// another account's file from that, through the hidden file alone.
  virtual void WriteAll(const std::string& path, std::string_view content) = 0;
  /// Adds to the end, creating the file when missing. Never through a link: one in
  /// its place is removed. The bytes are the system's when it returns; they are not flushed.
  virtual void Append(const std::string& path, std::string_view content) = 0;
};

/// The lines of one of the station's lists, as ReadAll gives them. Throws Failure 13 for bytes that
/// are no text: a power failure may leave zeros.
std::string ReadList(Files& files, const std::string& path);

/// The system's text for a copy code; empty when it has none.
std::string_view CopyCodeText(int code);

}  // namespace ostrel
