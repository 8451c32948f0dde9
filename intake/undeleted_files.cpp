#include "intake/undeleted_files.h"

#include <charconv>
#include <fmt/format.h>
#include <string_view>

#include "base/reporting.h"

namespace ostrel {

namespace {

/// Takes the text up to the next end mark off `rest`. Names hold any byte but this one.
std::string_view TakeField(std::string_view& rest) {
  const auto end = rest.find('\0');
  const auto field = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return field;
}

std::int64_t NumberIn(std::string_view field) {
  std::int64_t number = -1;
  std::from_chars(field.data(), field.data() + field.size(), number);
  return number;
}

}  // namespace

void UndeletedFiles::Load() {
  std::string list;
  TryStep([&] {
    if (files_.Exists(listPath_)) list = files_.ReadAll(listPath_);
  });
  for (std::string_view rest = list; !rest.empty();) {
    FileStatus status;
    status.size = NumberIn(TakeField(rest));
    status.written = UtcTime(milliseconds(NumberIn(TakeField(rest))));
    entries_.insert_or_assign(std::string(TakeField(rest)), status);
  }
  Retry();
}

void UndeletedFiles::Add(const std::string& path) {
  FileStatus status;
  TryStep([&] { status = files_.Status(path); });
  entries_.insert_or_assign(path, status);
  Write();
}

void UndeletedFiles::Retry() {
  const auto before = entries_.size();
  std::erase_if(entries_, [this](const auto& entry) {
    bool isGone = false;
    TryStep([&] { isGone = IsGone(entry.first, entry.second); });
    return isGone;
  });
  if (before != entries_.size() || !isWritten_) Write();
}

/// Where it could not be looked at either, its name says enough while this run lasts: nothing else
/// gets a name that is in use.
bool UndeletedFiles::IsGone(const std::string& path, const FileStatus& status) {
  if (!files_.Exists(path)) return true;
  const bool isKnown = status != FileStatus{};
  if (!isKnown || files_.Status(path) == status) files_.Delete(path);
  return true;
}

void UndeletedFiles::Write() {
  isWritten_ = TryStep([this] {
    if (entries_.empty()) {
      if (files_.Exists(listPath_)) files_.Delete(listPath_);
      return;
    }
    std::string list;
    for (const auto& [path, status] : entries_) {
      if (status == FileStatus{}) continue;  // nothing would tell it from another one later
      list += fmt::format("{}", status.size) + '\0';
      list += fmt::format("{}", status.written.time_since_epoch().count()) + '\0';
      list += path + '\0';
    }
    files_.WriteAll(listPath_, list);
  });
}

}  // namespace ostrel
