// Zip archives over libzip. Whatever is read or written passes through Files, the archive that is
// unpacked aside: so members and new archives appear whole or not at all.
#pragma once

#include "platform/archives.h"
#include "platform/files.h"

namespace ostrel {

/// A member, and a new archive, is held in memory as a whole while it is worked on.
class ZipArchives : public Archives {
 public:
  explicit ZipArchives(Files& files) : files_(files) {}

  ExtractResult Extract(const std::string& archive, const std::string& folder,
                        const ExtractLimits& limits) override;
  CreateResult Create(const std::string& path) override;

 private:
  Files& files_;
};

}  // namespace ostrel
