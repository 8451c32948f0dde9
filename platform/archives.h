// Zip archives: what is received in one, and what is sent in one.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

/// Bounds on what one received archive may unpack to, against bombs.
struct ExtractLimits {
  std::int64_t bytes = 64 * 1024 * 1024;
  int members = 10'000;
  int ratio = 1000;  // unpacked to packed, of one member; looked at above one megabyte
};

struct ExtractResult {
  bool opened = false;
  std::vector<std::string> files;  // the paths that the members have got
  /// Why the extraction stopped or left members out; empty when all went well.
  std::string remark;
};

/// An archive being made. It stands on disk only after Close.
class ArchiveWriter {
 public:
  virtual ~ArchiveWriter() = default;  // without Close: nothing is left behind
  /// Adds the file `name` of `folder` under its bare name, at level 9. Throws Failure when it
  /// cannot be read.
  virtual void Add(const std::string& folder, const std::string& name) = 0;
  /// Writes the archive to its path; without members a valid empty archive. Throws Failure, and
  /// then leaves nothing at the path.
  virtual void Close() = 0;
};

struct CreateResult {
  std::unique_ptr<ArchiveWriter> writer;  // null when the archive cannot be created
  int error = 0;                          // 0 on success, else the library's number
};

class Archives {
 public:
  virtual ~Archives() = default;

  /// Unpacks every member into `folder` under its bare upper-case name (both kinds of slash cut),
  /// at a free name, each whole or not at all. Folders, links, encrypted members and names that
  /// would be hidden are passed over. Throws Failure when the archive cannot be read or a member
  /// cannot be written for a reason that lies in this machine (disk full, read-only): then nothing
  /// of the archive is left in the folder, and it can be unpacked again later.
  virtual ExtractResult Extract(const std::string& archive, const std::string& folder,
                                const ExtractLimits& limits) = 0;
  /// Begins an archive at `path`.
  virtual CreateResult Create(const std::string& path) = 0;
};

}  // namespace ostrel
