#include "platform/linux/zip_extraction.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fmt/format.h>
#include <memory>
#include <sys/stat.h>

#include "base/failure.h"
#include "base/names.h"
#include "base/reporting.h"
#include "base/text.h"
#include "platform/linux/zip_file_source.h"

namespace ostrel {
namespace {

// No product comes more often in one archive; finding the next free name takes ever longer.
constexpr int kMostOfOneName = 100;
// Below this a high ratio is no harm: a blank file packs well.
constexpr std::size_t kRatioMatters = 1024 * 1024;

struct Discard {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};
struct CloseMember {
  void operator()(zip_file_t* file) const { zip_fclose(file); }
};

/// The name that a member gets: without its folders, in upper case, without control characters.
std::string BareName(std::string_view name) {
  std::string bare = ToUpper(name.substr(name.find_last_of("/\\") + 1));
  const auto isControl = [](char c) { return (c >= '\0' && c < ' ') || c == '\x7f'; };
  std::replace_if(bare.begin(), bare.end(), isControl, '_');
  return bare;
}

/// The kind of file that a member was on the system that packed it; 0 when not told.
mode_t FileKind(zip_t* archive, zip_uint64_t index) {
  zip_uint8_t system = 0;
  zip_uint32_t attributes = 0;
  if (zip_file_get_external_attributes(archive, index, 0, &system, &attributes) != 0) return 0;
  return system == ZIP_OPSYS_UNIX ? (attributes >> 16) & S_IFMT : 0;
}

std::string OpenError(int code) {
  zip_error_t error;
  zip_error_init_with_code(&error, code);
  std::string text = zip_error_strerror(&error);
  zip_error_fini(&error);
  return text;
}

/// Errors that say nothing about the archive: tried again, it may well open.
bool LiesInTheMachine(int code) {
  return code == ZIP_ER_OPEN || code == ZIP_ER_READ || code == ZIP_ER_MEMORY;
}

/// A name that no folder of this file system can hold; another try would end the same.
bool NameIsImpossible(const Failure& failure) {
  return failure.number() == ENAMETOOLONG || failure.number() == EILSEQ ||
         failure.number() == EINVAL;
}

}  // namespace

ExtractResult ZipExtraction::Run(const std::string& archive) {
  try {
    return Unpack(archive);
  } catch (...) {
    TakeBack();
    throw;
  }
}

ExtractResult ZipExtraction::Unpack(const std::string& archive) {
  int error = 0;
  ZipFileSource source(files_, archive);
  const std::unique_ptr<zip_t, Discard> opened(source.Open(error));
  if (!opened && LiesInTheMachine(error)) {
    throw Failure(failure_number::kDeviceError, "Archive: " + OpenError(error));
  }
  if (!opened) return {.opened = false, .files = {}, .remark = OpenError(error)};
  const zip_int64_t count = zip_get_num_entries(opened.get(), 0);
  for (zip_int64_t index = 0; index < count; ++index) {
    const bool enough = index >= limits_.members;
    if (enough) Stop(fmt::format("after {} members", limits_.members));
    const bool isEnd =
        enough || TakeMember(opened.get(), static_cast<zip_uint64_t>(index)) == Progress::kStop;
    source.CheckReadings();
    if (isEnd) break;
  }
  return {.opened = true, .files = written_, .remark = Remark()};
}

ZipExtraction::Progress ZipExtraction::TakeMember(zip_t* archive, zip_uint64_t index) {
  zip_stat_t member;
  const char* const fullName = zip_get_name(archive, index, ZIP_FL_ENC_RAW);
  if (fullName == nullptr || zip_stat_index(archive, index, 0, &member) != 0) {
    return LeaveOut("damaged");
  }
  const std::string_view whole = fullName;
  if (whole.ends_with('/') || whole.ends_with('\\')) return Progress::kContinue;
  const mode_t kind = FileKind(archive, index);
  if (kind == S_IFDIR) return Progress::kContinue;
  if (kind != 0 && kind != S_IFREG) return LeaveOut("no plain file");
  if (member.encryption_method != ZIP_EM_NONE) return LeaveOut("encrypted");
  const std::string name = BareName(whole);
  if (name.empty() || name.front() == '.') return LeaveOut("no usable name");
  if (++timesSeen_[name] > kMostOfOneName) return LeaveOut("one name too often");
  return TakeContent(archive, member, name);
}

ZipExtraction::Progress ZipExtraction::TakeContent(zip_t* archive, const zip_stat_t& member,
                                                   const std::string& name) {
  const std::unique_ptr<zip_file_t, CloseMember> file(zip_fopen_index(archive, member.index, 0));
  if (!file) return LeaveOut("damaged or of an unknown method");
  std::string content;
  std::array<char, 64 * 1024> buffer;
  for (;;) {
    const zip_int64_t count = zip_fread(file.get(), buffer.data(), buffer.size());
    if (count < 0) return LeaveOut("damaged");  // a wrong checksum shows at the end
    if (count == 0) break;
    content.append(buffer.data(), static_cast<std::size_t>(count));
    bytes_ += count;  // damaged ones count as well: they cost the same work
    if (IsOverLimit(content.size(), member)) return Progress::kStop;
  }
  if (content.size() != member.size) return LeaveOut("damaged");
  return Store(name, content);
}

ZipExtraction::Progress ZipExtraction::Store(const std::string& name, const std::string& content) {
  const auto taken = [this](const std::string& n) { return files_.Exists(JoinPath(folder_, n)); };
  const auto path = JoinPath(folder_, FirstFreeName(name, taken));
  try {
    files_.WriteAll(path, content);
  } catch (const Failure& failure) {
    if (!NameIsImpossible(failure)) throw;
    return LeaveOut("not written");
  }
  written_.push_back(path);
  return Progress::kContinue;
}

/// What cannot be taken back either comes out twice, which is better than not at all.
void ZipExtraction::TakeBack() {
  for (const auto& path : written_) TryStep([&] { files_.Delete(path); });
}

bool ZipExtraction::IsOverLimit(std::size_t size, const zip_stat_t& member) {
  if (bytes_ > limits_.bytes) {
    Stop(fmt::format("at {} bytes", limits_.bytes));
    return true;
  }
  if (size > kRatioMatters && size / static_cast<std::size_t>(limits_.ratio) >
                                  std::max<zip_uint64_t>(member.comp_size, 1)) {
    Stop(fmt::format("at a member that unpacks to more than {} times its size", limits_.ratio));
    return true;
  }
  return false;
}

ZipExtraction::Progress ZipExtraction::LeaveOut(const std::string& why) {
  ++leftOut_[why];
  return Progress::kContinue;
}

ZipExtraction::Progress ZipExtraction::Stop(const std::string& why) {
  stopped_ = why;
  return Progress::kStop;
}

std::string ZipExtraction::Remark() const {
  std::string remark = stopped_.empty() ? "" : "stopped " + stopped_;
  for (const auto& [why, count] : leftOut_) {
    remark += fmt::format("{}{} left out ({})", remark.empty() ? "" : ", ", count, why);
  }
  return remark;
}

}  // namespace ostrel
