// A product that is too large for the station, on its way to the folder of what is kept apart: its
// bytes are on the disk as they come, and never all in memory.
#pragma once

#include <QCryptographicHash>
#include <memory>
#include <string>
#include <string_view>

#include "feed/placing.h"

namespace ostrel {

class ApartProduct {
 public:
  /// `given` is the name that it came under, `name` the one that it gets in `folder`. `room` is
  /// what it holds of the bound on the folder. Throws Failure.
  ApartProduct(std::string given, const std::string& folder, const std::string& name,
               std::shared_ptr<const void> room)
      : given_(std::move(given)), room_(std::move(room)), file_(folder, name) {}

  /// Throws Failure. Flushes now and then: one flush of all of it would take long.
  void Write(std::string_view bytes) {
    file_.Write(bytes);
    hash_.addData({bytes.data(), static_cast<qsizetype>(bytes.size())});
    unflushed_ += bytes.size();
    if (unflushed_ < kFlushed) return;
    file_.Flush();
    unflushed_ = 0;
  }
  const std::string& given() const { return given_; }
  std::string Hash() const { return hash_.result().toHex().toStdString(); }
  HiddenFile& file() { return file_; }

 private:
  static constexpr std::size_t kFlushed = 1024 * 1024;

  std::string given_;
  std::shared_ptr<const void> room_;
  HiddenFile file_;
  QCryptographicHash hash_{QCryptographicHash::Sha256};
  std::size_t unflushed_ = 0;
};

}  // namespace ostrel
