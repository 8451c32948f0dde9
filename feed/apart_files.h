// The files of a source that are too large for the station, while they are copied to what is kept
// apart: one at a time and a piece at a time, for others must not wait for them, and a memory may
// be smaller than one.
#pragma once

#include <QTimer>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "feed/delivery.h"
#include "feed/opened_file.h"

namespace ostrel {

class ApartFiles {
 public:
  /// How it ended with one; it was taken unless there was `trouble`.
  struct End {
    std::string path, state;
    std::string trouble = {};
  };
  /// `tell` is called out of the event loop.
  ApartFiles(Delivery& delivery, std::size_t source, std::function<void(const End&)> tell);

  bool IsBusy() const { return copying_.has_value(); }
  /// Throws Failure.
  void Begin(const std::string& path, OpenedFile opened);

 private:
  struct Copying {
    std::string path;
    OpenedFile opened;
    std::unique_ptr<ApartProduct> product;
    std::int64_t done = 0;
  };

  void GoOn();
  bool CopyMore();
  void Finish();

  Delivery& delivery_;
  std::size_t source_;
  std::function<void(const End&)> tell_;
  std::optional<Copying> copying_;
  QTimer next_;
};

}  // namespace ostrel
