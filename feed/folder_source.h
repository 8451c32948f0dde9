// Trees of folders into which a receiver writes its files, in place or not.
#pragma once

#include <QTimer>
#include <chrono>
#include <deque>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "feed/apart_files.h"
#include "feed/feed_config.h"
#include "feed/opened_file.h"
#include "feed/source.h"
#include "feed/tree_watch.h"
#include "platform/archives.h"

namespace ostrel {

class FolderSource : public Source {
 public:
  /// `workshop` is a folder of this source's own, to unpack archives in.
  FolderSource(const FolderSettings& settings, Archives& archives, std::string workshop,
               Delivery& delivery, FeedBook& book);

  /// Looks through the trees, and every eleven seconds again; what the system tells is taken at
  /// once.
  void Start() override;

 private:
  using Time = std::chrono::steady_clock::time_point;

  /// A file as it was at the last look.
  struct Seen {
    std::string state = {};
    ino_t inode = 0;  // of the one that was taken; 0 when this run has not seen it
    Time since = {};
    Time nextTry = {};      // of what cannot be kept apart at present
    bool isClosed = false;  // its writer told
    bool isDone = false;
    bool isReplaced = false;  // it was another one when it was to be put away
    bool isTold = false;      // that it cannot be read, or put away
    unsigned long long scan = 0;
  };

  void Writing(const std::string& path);
  void Closed(const std::string& path);
  void Scan();
  void ScanFolder(const std::string& folder, std::vector<std::string>& files, std::string& unread);
  bool IsWanted(const std::string& path) const;
  void LookOn();
  bool Look(const std::string& path);
  bool IsDone(const std::string& path, const struct stat& status, Seen& seen);
  bool IsWhole(const std::string& path, const Seen& seen, LeaseAnswer lease) const;
  /// Throws Failure when it could not be taken; does nothing when the file changes meanwhile.
  void TakeFile(const std::string& path, Seen& seen);
  void TakeOpened(const std::string& path, OpenedFile opened, Seen& seen);
  bool TakeContent(const std::string& path, const OpenedFile& opened, Seen& seen);
  bool TakeArchive(const std::string& path, const struct stat& status, Seen& seen);
  void BeginLarge(const std::string& path, OpenedFile opened, Seen& seen);
  void EndLarge(const ApartFiles::End& end);
  void PutAwayAgain(const std::string& path, Seen& seen);
  void PutAwayHeld(const std::string& path, OpenedFile opened, Seen& seen);
  void Recover(const std::string& aside);
  void TellOnce(Seen& seen, const std::string& text);

  FolderSettings settings_;
  Archives& archives_;
  std::string workshop_;
  TreeWatch watch_;
  ApartFiles large_;
  QTimer interval_, soon_;
  std::unordered_map<std::string, Seen> seen_;
  std::unordered_map<std::string, Time> writing_;  // the last that was heard of who writes
  unsigned long long scan_ = 0;
  std::deque<std::string> toLook_;  // what the last scan found
  std::chrono::system_clock::time_point began_ = std::chrono::system_clock::now();
};

}  // namespace ostrel
