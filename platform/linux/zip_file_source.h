// A file that the zip library reads through Files.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <zip.h>

#include "base/failure.h"
#include "platform/files.h"

namespace ostrel {

class ZipFileSource {
 public:
  ZipFileSource(Files& files, std::string path) : files_(files), path_(std::move(path)) {}

  /// Opens the archive for reading. Returns null with the library's number in `error` when it is no
  /// archive; throws Failure when the file cannot be read. The source must outlive the archive.
  zip_t* Open(int& error);
  /// Throws Failure when the file could not be read since: what looks damaged is none.
  void CheckReadings() const;

 private:
  static zip_int64_t Call(void* source, void* data, zip_uint64_t size, zip_source_cmd_t command);
  zip_int64_t Answer(void* data, zip_uint64_t size, zip_source_cmd_t command);
  zip_int64_t Read(void* data, zip_uint64_t size);

  Files& files_;
  std::string path_;
  std::int64_t size_ = 0;
  std::int64_t offset_ = 0;
  std::optional<Failure> failure_;
  zip_error_t error_{};
};

}  // namespace ostrel
