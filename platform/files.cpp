#include "platform/files.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/failure.h"

namespace ostrel {

std::string ReadList(Files& files, const std::string& path) {
  auto text = files.ReadAll(path);
  if (text.find('\0') != std::string::npos)
    throw Failure(failure_number::kTypeMismatch, "Damaged, it is no text: " + path);
  return text;
}

std::string_view CopyCodeText(int code) {
  using Text = std::pair<int, std::string_view>;
  static constexpr std::array kTexts = {
      Text{copy_code::kFileNotFound, "The system cannot find the file specified."},
      Text{copy_code::kPathNotFound, "The system cannot find the path specified."},
      Text{copy_code::kAccessDenied, "Access is denied."},
      Text{copy_code::kWriteProtected, "The media is write protected."},
      Text{copy_code::kInUse,
           "The process cannot access the file because it is being used by another process."},
      Text{copy_code::kDiskFull, "There is not enough space on the disk."},
      Text{copy_code::kNameTooLong, "The filename or extension is too long."},
      Text{copy_code::kDeviceError,
           "The request could not be performed because of an I/O device "
           "error."},
  };
  const auto text = std::find_if(kTexts.begin(), kTexts.end(),
                                 [code](const Text& entry) { return entry.first == code; });
  return text == kTexts.end() ? std::string_view{} : text->second;
}

}  // namespace ostrel
