// Trees of folders into which a receiver writes its files, in place or not.
#pragma once

#include <QTimer>
#include <chrono>
#include <deque>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "feed/feed_config.h"
#include "feed/source.h"
#include "feed/tree_watch.h"
#include "platform/archives.h"

namespace ostrel {

class FolderSource : public Source {
 public:
  /// `workshop` is a folder of this source's own, to unpack archives in.
  FolderSource(const FolderSettings& settings, Archives& archives, std::string workshop,
               Delivery& delivery, FeedBook& book);

  /// Looks through the trees, and every ten seconds again; what the system tells is taken at once.
  void Start() override;

 private:
  using Time = std::chrono::steady_clock::time_point;

  /// A file as it was at the last look.
  struct Seen {
    std::string state = {};
    Time since = {};
    bool isClosed = false;  // its writer told
    bool isDone = false;
    bool isTold = false;  // that it cannot be read, or put away
    unsigned long long scan = 0;
  };

  void Scan();
  bool ScanTree(const std::string& folder, std::vector<std::string>& files);
  bool IsWanted(const std::string& path) const;
  void LookOn();
  bool Look(const std::string& path);
  bool IsFromBefore(const std::string& path) const;
  bool IsNew(const std::string& path, Seen& seen);
  bool IsWhole(const std::string& path, const Seen& seen) const;
  /// Throws Failure when it could not be taken; does nothing when the file changes meanwhile.
  void TakeFile(const std::string& path, Seen& seen);
  std::optional<std::string> ReadUnchanged(const std::string& path, Seen& seen);
  void TakeContent(const std::string& path, const std::string& content, const Seen& seen);
  bool TakeArchive(const std::string& path, const Seen& seen);
  void PutAway(const std::string& path, Seen& seen);

  FolderSettings settings_;
  Archives& archives_;
  std::string workshop_;
  TreeWatch watch_;
  QTimer interval_, soon_;
  std::unordered_map<std::string, Seen> seen_;
  std::unordered_map<std::string, Time> writing_;  // the last that was heard of who writes
  unsigned long long scan_ = 0;
  std::deque<std::string> toLook_;  // what the last scan found
  std::filesystem::file_time_type began_ = std::filesystem::file_time_type::clock::now();
};

}  // namespace ostrel
