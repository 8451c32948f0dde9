// What the fuzz targets share: the input's parts, files in memory, and a demand that ends the run.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <fmt/format.h>
#include <map>
#include <string>
#include <string_view>

#include "base/failure.h"
#include "base/reporting.h"
#include "platform/linux/linux_files.h"
#include "platform/virtual/virtual_clock.h"
#include "tests/support/faulty_files.h"

namespace ostrel {

inline std::string_view AsText(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Takes the text up to the next zero byte off `input`.
inline std::string_view TakePart(std::string_view& input) {
  const auto end = std::min(input.find('\0'), input.size());
  const auto part = input.substr(0, end);
  input.remove_prefix(std::min(end + 1, input.size()));
  return part;
}

inline void Demand(bool holds, const char* what) {
  if (holds) return;
  fmt::print(stderr, "does not hold: {}\n", what);
  std::abort();
}

/// Holds whole files by path, and nothing else.
class FilesInMemory : public FaultyFiles {
 public:
  FilesInMemory() : FaultyFiles(real_) {}

  bool Exists(const std::string& path) override { return content_.contains(path); }
  std::string ActualPath(const std::string& path) override { return path; }
  std::string ReadAll(const std::string& path) override {
    const auto found = content_.find(path);
    if (found == content_.end()) throw Failure(failure_number::kFileNotFound, "File not found");
    return found->second;
  }
  void WriteAll(const std::string& path, std::string_view content) override {
    content_[path] = content;
  }
  int Copy(const std::string&, const std::string&, Links) override {
    return copy_code::kFileNotFound;
  }

 private:
  VirtualClock clock_{UtcTime{}};
  LinuxFiles real_{clock_};
  std::map<std::string, std::string> content_;
};

struct SilentReporting : Reporting {
  void WriteLog(std::string_view, std::string_view) override {}
  void ReportError(const Failure&, std::string_view, const AdditionalText&) override {}
};

}  // namespace ostrel
