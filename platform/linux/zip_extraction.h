// One received archive being unpacked. It comes from strangers: names, sizes and contents are
// believed only as far as they were checked.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>
#include <zip.h>

#include "platform/archives.h"
#include "platform/files.h"

namespace ostrel {

class ZipExtraction {
 public:
  ZipExtraction(Files& files, std::string folder, const ExtractLimits& limits)
      : files_(files), folder_(std::move(folder)), limits_(limits) {}

  ExtractResult Run(const std::string& archive);

 private:
  enum class Progress { kContinue, kStop };

  ExtractResult Unpack(const std::string& archive);
  Progress TakeMember(zip_t* archive, zip_uint64_t index);
  Progress TakeContent(zip_t* archive, const zip_stat_t& member, const std::string& name);
  Progress Store(const std::string& name, const std::string& content);
  void TakeBack();
  bool IsOverLimit(std::size_t size, const zip_stat_t& member);
  Progress LeaveOut(const std::string& why);
  Progress Stop(const std::string& why);
  std::string Remark() const;

  Files& files_;
  std::string folder_;
  ExtractLimits limits_;
  std::vector<std::string> written_;
  std::int64_t bytes_ = 0;
  std::map<std::string, int> timesSeen_;  // how often each bare name has come
  std::map<std::string, int> leftOut_;    // how many for each reason
  std::string stopped_;                   // why, when it did
};

}  // namespace ostrel
