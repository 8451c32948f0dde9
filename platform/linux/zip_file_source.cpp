#include "platform/linux/zip_file_source.h"

#include <cstring>
#include <span>

#include "base/reporting.h"

namespace ostrel {

zip_t* ZipFileSource::Open(int& error) {
  size_ = files_.Status(path_).size;
  zip_error_init(&error_);
  zip_error_t opening;
  zip_error_init(&opening);
  zip_source_t* const source = zip_source_function_create(&ZipFileSource::Call, this, &opening);
  zip_t* const archive = source ? zip_open_from_source(source, ZIP_RDONLY, &opening) : nullptr;
  error = zip_error_code_zip(&opening);
  zip_error_fini(&opening);
  if (source && !archive) zip_source_free(source);
  if (failure_) {
    if (archive) zip_discard(archive);
    throw Failure(*failure_);
  }
  return archive;
}

void ZipFileSource::CheckReadings() const {
  if (failure_) throw Failure(*failure_);
}

zip_int64_t ZipFileSource::Call(void* source, void* data, zip_uint64_t size,
                                zip_source_cmd_t command) {
  return static_cast<ZipFileSource*>(source)->Answer(data, size, command);
}

zip_int64_t ZipFileSource::Answer(void* data, zip_uint64_t size, zip_source_cmd_t command) {
  switch (command) {
    case ZIP_SOURCE_OPEN:
      offset_ = 0;
      return 0;
    case ZIP_SOURCE_CLOSE:
    case ZIP_SOURCE_FREE:
      return 0;
    case ZIP_SOURCE_READ:
      return Read(data, size);
    case ZIP_SOURCE_SEEK: {
      const auto offset =
          zip_source_seek_compute_offset(static_cast<zip_uint64_t>(offset_),
                                         static_cast<zip_uint64_t>(size_), data, size, &error_);
      if (offset < 0) return -1;
      offset_ = offset;
      return 0;
    }
    case ZIP_SOURCE_TELL:
      return offset_;
    case ZIP_SOURCE_STAT: {
      auto* const status = static_cast<zip_stat_t*>(data);
      zip_stat_init(status);
      status->valid = ZIP_STAT_SIZE;
      status->size = static_cast<zip_uint64_t>(size_);
      return sizeof(zip_stat_t);
    }
    case ZIP_SOURCE_ERROR:
      return zip_error_to_data(&error_, data, size);
    case ZIP_SOURCE_SUPPORTS:
      return ZIP_SOURCE_SUPPORTS_SEEKABLE;
    default:
      zip_error_set(&error_, ZIP_ER_OPNOTSUPP, 0);
      return -1;
  }
}

zip_int64_t ZipFileSource::Read(void* data, zip_uint64_t size) {
  try {
    const auto count = files_.ReadBlock(path_, offset_, std::span(static_cast<char*>(data), size));
    offset_ += static_cast<std::int64_t>(count);
    return static_cast<zip_int64_t>(count);
  } catch (const std::exception& failure) {
    failure_ = AsFailure(failure);
    zip_error_set(&error_, ZIP_ER_READ, 0);
    return -1;
  }
}

}  // namespace ostrel
