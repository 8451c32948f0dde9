// One zip archive being made, in memory until it is closed.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <zip.h>

#include "platform/archives.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace ostrel {

class ZipWriter : public ArchiveWriter {
 public:
  ZipWriter(Files& files, Clock& clock, std::string path);

  void Add(const std::string& folder, const std::string& name) override;
  void Close() override;

 private:
  struct Discard {
    void operator()(zip_t* archive) const { zip_discard(archive); }
  };
  struct FreeSource {
    void operator()(zip_source_t* source) const { zip_source_free(source); }
  };

  std::string ReadProduct(const std::string& path);
  std::string ArchiveBytes();
  static int CheckStop(zip_t* archive, void* writer);

  Files& files_;
  Clock& clock_;
  std::string path_;
  std::deque<std::string> contents_;  // what the library reads from when the archive is closed
  std::unique_ptr<zip_source_t, FreeSource> output_;
  std::unique_ptr<zip_t, Discard> archive_;
  bool isStopped_ = false;
};

}  // namespace ostrel
