// Files laid into a folder for others to take: written under a hidden name, flushed, renamed. Who
// looks into the folder sees whole files only.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "feed/feed_memory.h"
#include "platform/linux/descriptor.h"

namespace ostrel {

/// A hidden file that is being written; gone with its object unless it was released.
class HiddenFile {
 public:
  /// Makes it in `folder`; a file `name` is to become of it. Throws Failure, as everything here
  /// does.
  HiddenFile(const std::string& folder, const std::string& name);
  ~HiddenFile();
  HiddenFile(const HiddenFile&) = delete;
  HiddenFile& operator=(const HiddenFile&) = delete;

  void Write(std::string_view bytes);
  /// What was written so far is on the disk afterwards.
  void Flush();
  const Placement& placement() const { return placement_; }
  /// Leaves it to whoever places it.
  void Release() { isReleased_ = true; }

 private:
  Placement placement_;
  Descriptor file_;
  bool isReleased_ = false;
};

/// A flushed hidden file with that content. Throws Failure.
std::unique_ptr<HiddenFile> WriteHidden(const std::string& folder, const std::string& name,
                                        std::string_view content);

/// Gives a hidden file its path, or where that is taken the first free name after it, never over
/// another file. Returns the path. One that is placed already, its hidden file gone, stays so and
/// returns nothing. Throws Failure.
std::string Place(const Placement& placement);

/// Removes the hidden files in `folder` that an ended program left, but for those of `kept`.
void RemoveLeftovers(const std::string& folder, const std::vector<Placement>& kept);

/// The content of an open file. Throws Failure that names `path`.
std::string ReadOpened(int descriptor, const std::string& path);
/// The content of a file that is no link. Throws Failure.
std::string ReadWhole(const std::string& path);

/// Removes the oldest files of `folder` until there are `most`, and so many `bytes`, at most.
/// Returns how many went. Hidden ones, and what cannot be looked at, stay and do not count.
std::size_t KeepNewest(const std::string& folder, std::size_t most, std::uintmax_t bytes);

/// Makes `folder` and what is above it, below a folder that is there. Throws Failure.
void MakeFolders(const std::string& folder);

}  // namespace ostrel
