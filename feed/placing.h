// Files laid into a folder for others to take: written under a hidden name, flushed, renamed. Who
// looks into the folder sees whole files only.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "feed/feed_memory.h"

namespace ostrel {

/// Writes `content` to a hidden file in `folder` and flushes it; a file `name` is to become of it.
/// Throws Failure, and leaves nothing then.
Placement WriteHidden(const std::string& folder, const std::string& name, std::string_view content);

/// Gives a hidden file its path, or where that is taken the first free name after it, never over
/// another file. Returns the path. One that is placed already, its hidden file gone, stays so and
/// returns nothing. Throws Failure.
std::string Place(const Placement& placement);

/// Removes the hidden files in `folder` that an ended program left, but for those of `kept`.
void RemoveLeftovers(const std::string& folder, const std::vector<Placement>& kept);

/// More than any product has; what is larger is read up to here.
inline constexpr std::size_t kLargestContent = 64 * 1024 * 1024;

/// The content of a file that is no link. Throws Failure.
std::string ReadWhole(const std::string& path);

/// Removes the oldest files of `folder` until there are `most`, and so many `bytes`, at most.
/// Returns how many went.
std::size_t KeepNewest(const std::string& folder, std::size_t most, std::uintmax_t bytes);

/// Makes `folder` and what is above it, below a folder that is there. Throws Failure.
void MakeFolders(const std::string& folder);

}  // namespace ostrel
