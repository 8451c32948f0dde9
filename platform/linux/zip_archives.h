// Zip archives over libzip. Whatever is read or written passes through Files, the archive that is
// unpacked aside: so members and new archives appear whole or not at all.
#pragma once

#include "platform/archives.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace ostrel {

/// A member, and a new archive with what it is made of, is held in memory as a whole while it is
/// worked on. Making one ends with StopRequested when the program is asked to end.
class ZipArchives : public Archives {
 public:
  ZipArchives(Files& files, Clock& clock) : files_(files), clock_(clock) {}

  ExtractResult Extract(const std::string& archive, const std::string& folder,
                        const ExtractLimits& limits) override;
  CreateResult Create(const std::string& path) override;

 private:
  Files& files_;
  Clock& clock_;
};

}  // namespace ostrel
