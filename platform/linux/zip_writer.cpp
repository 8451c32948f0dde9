#include "platform/linux/zip_writer.h"

#include <cstdint>
#include <span>

#include "base/failure.h"
#include "base/names.h"

namespace ostrel {
namespace {

constexpr int kStrongest = 9;

[[noreturn]] void ArchiveFails(const char* why) {
  throw Failure(failure_number::kDeviceError, std::string("Archive: ") + why);
}

/// An archive without members is its end record alone; the library would write no file at all.
std::string EmptyArchive() {
  return std::string("PK\5\6") + std::string(18, '\0');
}

std::string ReadSource(zip_source_t* source) {
  zip_stat_t status;
  if (zip_source_open(source) != 0 || zip_source_stat(source, &status) != 0) {
    ArchiveFails(zip_error_strerror(zip_source_error(source)));
  }
  std::string bytes(status.size, '\0');
  const zip_int64_t count = zip_source_read(source, bytes.data(), bytes.size());
  zip_source_close(source);
  if (count != static_cast<zip_int64_t>(bytes.size())) ArchiveFails("cannot be read back");
  return bytes;
}

}  // namespace

ZipWriter::ZipWriter(Files& files, Clock& clock, std::string path)
    : files_(files),
      clock_(clock),
      path_(std::move(path)),
      output_(zip_source_buffer_create(nullptr, 0, 0, nullptr)) {
  zip_error_t error;
  zip_error_init(&error);
  archive_.reset(zip_open_from_source(output_.get(), ZIP_CREATE | ZIP_TRUNCATE, &error));
  if (!archive_) ArchiveFails(zip_error_strerror(&error));
  zip_source_keep(output_.get());  // the archive frees its own hold at closing
  zip_register_cancel_callback_with_state(archive_.get(), &ZipWriter::CheckStop, nullptr, this);
}

/// Asked by the library between portions. Nothing may be thrown through it.
int ZipWriter::CheckStop(zip_t* /*archive*/, void* writer) {
  auto& self = *static_cast<ZipWriter*>(writer);
  try {
    self.clock_.CheckStop();
  } catch (const StopRequested&) {
    self.isStopped_ = true;
  }
  return self.isStopped_ ? 1 : 0;
}

std::string ZipWriter::ReadProduct(const std::string& path) {
  constexpr std::size_t kPortion = 256 * 1024;
  std::string content;
  for (std::size_t have = 0;; have += kPortion) {
    clock_.CheckStop();
    content.resize(have + kPortion);
    const auto count =
        files_.ReadBlock(path, static_cast<std::int64_t>(have), std::span(content).subspan(have));
    if (count == kPortion) continue;
    content.resize(have + count);
    content.shrink_to_fit();
    return content;
  }
}

void ZipWriter::Add(const std::string& folder, const std::string& name) {
  const std::string path = JoinPath(folder, name);
  const auto time = std::chrono::floor<seconds>(files_.Status(path).written).time_since_epoch();
  const auto& content = contents_.emplace_back(ReadProduct(path));
  const std::string bareName(FileNameOf(name));
  zip_t* const archive = archive_.get();
  zip_source_t* const source = zip_source_buffer(archive, content.data(), content.size(), 0);
  const zip_int64_t added = zip_file_add(archive, bareName.c_str(), source, ZIP_FL_ENC_GUESS);
  if (added < 0) {
    zip_source_free(source);
    ArchiveFails(zip_strerror(archive));
  }
  const auto index = static_cast<zip_uint64_t>(added);
  if (zip_set_file_compression(archive, index, ZIP_CM_DEFLATE, kStrongest) != 0 ||
      zip_file_set_mtime(archive, index, time.count(), 0) != 0) {
    ArchiveFails(zip_strerror(archive));
  }
}

void ZipWriter::Close() {
  files_.WriteAll(path_, ArchiveBytes());
}

std::string ZipWriter::ArchiveBytes() {
  if (contents_.empty()) return EmptyArchive();
  if (zip_close(archive_.get()) != 0) {
    if (isStopped_) throw StopRequested{};
    ArchiveFails(zip_strerror(archive_.get()));
  }
  [[maybe_unused]] const zip_t* const closed = archive_.release();  // the library has freed it
  contents_.clear();
  return ReadSource(output_.get());
}

}  // namespace ostrel
