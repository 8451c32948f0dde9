// What the fuzz targets share: the input's parts, files in memory, and a demand that ends the run.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <fmt/format.h>
#include <string>
#include <string_view>

#include "base/reporting.h"
#include "platform/virtual/memory_files.h"
#include "platform/virtual/virtual_clock.h"

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

/// A clock and a disk that start anew with each input.
struct Workshop {
  const std::string folder = "/station";
  VirtualClock clock{UtcTime{} + std::chrono::hours(8)};
  MemoryFiles files{clock};
  Workshop() { files.CreateFolder(folder); }
};

struct SilentReporting : Reporting {
  void WriteLog(std::string_view, std::string_view) override {}
  void ReportError(const Failure&, std::string_view, const AdditionalText&) override {}
};

}  // namespace ostrel
