#include "feed/apart_files.h"

#include <fcntl.h>

#include "base/names.h"
#include "platform/linux/file_io.h"
#include "platform/linux/system_error.h"

namespace ostrel {

ApartFiles::ApartFiles(Delivery& delivery, std::size_t source, std::function<void(const End&)> tell)
    : delivery_(delivery), source_(source), tell_(std::move(tell)) {
  QObject::connect(&next_, &QTimer::timeout, &next_, [this] { GoOn(); });
}

void ApartFiles::Begin(const std::string& path, OpenedFile opened) {
  auto product = delivery_.BeginApart(std::string(FileNameOf(path)),
                                      static_cast<std::uintmax_t>(opened.status.st_size));
  fcntl(opened.file.Get(), F_SETLEASE, F_UNLCK);  // a writer does not wait for the copy
  copying_ = {path, std::move(opened), std::move(product)};
  next_.start(0);
}

void ApartFiles::GoOn() {
  End end{.path = copying_->path, .state = StateOf(copying_->opened.status)};
  try {
    if (CopyMore()) return;
    Finish();
  } catch (const std::exception& error) {
    end.trouble = error.what();
  }
  next_.stop();
  copying_.reset();
  tell_(end);
}

bool ApartFiles::CopyMore() {
  auto& [path, opened, product, done] = *copying_;
  std::string piece(1024 * 1024, '\0');
  const auto count = ReadFully(opened.file.Get(), done, piece);
  if (count < 0) ThrowFileFailure(static_cast<int>(-count), path);
  product->Write(std::string_view(piece).substr(0, static_cast<std::size_t>(count)));
  done += count;
  return count > 0 && done <= opened.status.st_size;  // or somebody adds to it
}

void ApartFiles::Finish() {
  auto& [path, opened, product, done] = *copying_;
  if (!IsUnchanged(opened.file.Get(), opened.status)) ThrowFileFailure(EBUSY, path);
  delivery_.TakeApart(source_, *product, {.key = path, .state = StateOf(opened.status)});
}

}  // namespace ostrel
