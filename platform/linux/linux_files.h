// The real file system. What it creates carries the time of the station's clock, so that a virtual
// clock governs ages as well.
#pragma once

#include <memory>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/linux/file_worker.h"
#include "platform/linux/quiet_files.h"

namespace ostrel {

class LinuxFiles : public Files {
 public:
  /// A small copy is mostly done within this; where it is not, the disk has much else to do.
  static constexpr milliseconds kPatience{10};

  /// `patience` is how long IsReady may wait for a small copy.
  explicit LinuxFiles(Clock& clock, milliseconds patience = kPatience)
      : clock_(clock), patience_(patience) {}
  ~LinuxFiles() override {
    small_->End();
    large_->End();
  }
  LinuxFiles(const LinuxFiles&) = delete;
  LinuxFiles& operator=(const LinuxFiles&) = delete;

  std::optional<std::string> FirstFile(const std::string& folder,
                                       const NameTest& passedOver) override;
  std::vector<std::string> ListFiles(const std::string& folder) override;
  bool Exists(const std::string& path) override;
  std::string ActualPath(const std::string& path) override;
  std::string RealPath(const std::string& path) override;
  FileStatus Status(const std::string& path) override;
  void SetLastWriteTime(const std::string& path, UtcTime time) override;
  std::unique_ptr<FileHold> HoldAlone(const std::string& path, WhenUnknown whenUnknown) override;
  int Copy(const std::string& source, const std::string& destination, Links links,
           Flush flush) override;
  int Place(const std::string& source, const std::string& destination) override;
  bool IsReady(const std::string& source, const std::string& folder, Means means) override;
  void Secure(const std::string& made, const std::string& source) override;
  void Delete(const std::string& path) override;
  void Rename(const std::string& source, const std::string& destination) override;
  void Link(const std::string& existing, const std::string& link) override;
  void CreateFolder(const std::string& path) override;
  std::uint64_t FolderId(const std::string& path) override;
  int NameCount(const std::string& path) override;
  std::int64_t FreeBytes(const std::string& folder) override;
  void RemoveTemporaries(const std::string& folder) override;
  std::size_t ReadBlock(const std::string& path, std::int64_t offset,
                        std::span<char> buffer) override;
  std::string ReadAll(const std::string& path) override;
  void WriteAll(const std::string& path, std::string_view content) override;
  void Append(const std::string& path, std::string_view content) override;

 private:
  FileWorker& WorkerFor(const struct stat& status);
  int CopyOpened(const PlacedSource& source, const std::string& destination, Flush flush);

  Clock& clock_;
  milliseconds patience_;
  QuietFiles quiet_;
  // A small copy need not wait for a large one.
  std::shared_ptr<FileWorker> small_ = std::make_shared<FileWorker>();
  std::shared_ptr<FileWorker> large_ = std::make_shared<FileWorker>();
};

}  // namespace ostrel
