#include "platform/linux/zip_archives.h"

#include <zip.h>

#include "base/failure.h"
#include "base/names.h"
#include "platform/linux/zip_extraction.h"
#include "platform/linux/zip_writer.h"

namespace ostrel {
namespace {

int ErrorNumberOf(const Failure& failure) {
  switch (failure.number()) {
    case failure_number::kPathNotFound:
    case failure_number::kFileNotFound:
      return ZIP_ER_NOENT;
    case failure_number::kDiskFull:
      return ZIP_ER_WRITE;
    default:
      return ZIP_ER_OPEN;
  }
}

}  // namespace

ExtractResult ZipArchives::Extract(const std::string& archive, const std::string& folder,
                                   const ExtractLimits& limits) {
  return ZipExtraction(files_, folder, limits).Run(archive);
}

CreateResult ZipArchives::Create(const std::string& path) {
  // The archive is written when it is closed; whether that can work is found out now.
  const std::string probe = JoinPath(FolderOf(path), ".ostrel-zip.part");
  try {
    files_.WriteAll(probe, {});
    files_.Delete(probe);
    return {std::make_unique<ZipWriter>(files_, clock_, path), ZIP_ER_OK};
  } catch (const Failure& failure) {
    return {nullptr, ErrorNumberOf(failure)};
  }
}

}  // namespace ostrel
