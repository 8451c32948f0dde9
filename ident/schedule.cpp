#include "ident/schedule.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/names.h"
#include "base/numbers.h"
#include "base/text.h"

namespace ostrel {

namespace {

constexpr const char* kFile = "RtSched.txt";
constexpr std::size_t kTimeLength = 5;
constexpr std::size_t kPathsColumn = 6;
constexpr std::size_t kShortestLine = 10;

constexpr const char* kFormatMessage =
    "The schedule is not formatted properly.\r\n"
    "Click More Information for the format. \r\n";
constexpr const char* kTimeMessage =
    "The time you entered is not valid.\r\n"
    "Enter the time in the format hh:mm. \r\n"
    "For example: 08:00\r\n";
constexpr const char* kHelp =
    "The proper formatting of schedule entries is essential.\r\n"
    "\r\n"
    "Enter the time in 24 hour format with hours and minutes separated by a colon.\r\n"
    "\r\n"
    "Enter a space.\r\n"
    "\r\n"
    "Enter a fully qualified path and filename where the file to be transmitted is located.\r\n"
    "\r\n"
    "Enter a space.\r\n"
    "\r\n"
    "Enter a fully qualified path and filename where the file to be sent should be copied.";

}  // namespace

ScheduleEntry ParseScheduleEntry(std::string_view line) {
  ScheduleEntry entry;
  entry.time = ParseTimeOfDay(line.substr(0, kTimeLength));
  const auto rest = line.substr(std::min(kPathsColumn, line.size()));
  const auto blank = rest.find(' ');
  if (blank != std::string_view::npos) entry.source = rest.substr(0, blank);
  entry.destination = TrimBlanks(blank == std::string_view::npos ? rest : rest.substr(blank + 1));
  return entry;
}

bool IsScheduleEntry(std::string_view line) {
  return line.find(' ') == kTimeLength && ParseScheduleEntry(line).time;
}

std::string Schedule::Path() const {
  return JoinPath(parts_.programFolder, kFile);
}

void Schedule::ProcessSchedule() {
  // The list can be edited from inside a wait of a copy, so it is walked by position.
  for (std::size_t i = 0; i < parts_.setup.lstSchedule.size(); ++i) {
    const auto entry = ParseScheduleEntry(parts_.setup.lstSchedule[i]);
    const auto now = Calendar(parts_.clock.Now());
    if (!entry.time) {
      LogFailure(TypeMismatch(), entry);
    } else if (*entry.time == TimeOfDay{now.hour, now.minute}) {
      if (!Fire(entry)) waiting_.push_back(entry);
    }
  }
}

void Schedule::ProcessWaiting() {
  std::erase_if(waiting_, [this](const ScheduleEntry& entry) { return Fire(entry); });
}

bool Schedule::Fire(const ScheduleEntry& entry) {
  try {
    const auto source = parts_.files.ActualPath(entry.source);
    const auto destination = parts_.files.ActualPath(entry.destination);
    if (!parts_.files.IsReady(source, std::string(FolderOf(destination)), Means::kCopy))
      return false;
    parts_.copy.CopyFile(source, destination, Links::kFollowed);
  } catch (const std::exception& error) {
    LogFailure(AsFailure(error), entry);
  }
  parts_.reporting.WriteLog("Schedule", "Sent " + entry.source);
  return true;
}

void Schedule::LogFailure(const Failure& failure, const ScheduleEntry& entry) {
  parts_.reporting.WriteLog("checkSched",
                            fmt::format("{} - Source File: {}, Destination File: {}",
                                        DescribeFailure(failure), entry.source, entry.destination));
}

void Schedule::LoadSchedule() {
  const auto failure = FailureIn([this] {
    std::vector<std::string> entries;
    ForEachLine(ReadList(parts_.files, Path()), [&](std::string_view text) {
      const auto line = TrimBlanks(text);
      if (line.size() >= kShortestLine) entries.emplace_back(line);
    });
    parts_.setup.lstSchedule.Assign(entries);
  });
  const bool isUnusable = failure && !failure->IsMissing();
  parts_.status.SetUnusable(kFile, isUnusable ? failure->text() : "");
}

void Schedule::SaveSchedule() {
  TryStep([this] {
    std::string content;
    for (const auto& entry : parts_.setup.lstSchedule) content.append(entry).append(kLineEnd);
    parts_.files.WriteAll(Path(), content);
    parts_.status.SetUnusable(kFile, "");
  });
}

bool Schedule::AddEntry() {
  const auto& text = parts_.setup.txtSchedule.Get();
  if (text.find(' ') != kTimeLength) {
    parts_.dialogs.ShowMessage({"Schedule", kFormatMessage, MessageIcon::kQuestion});
    return false;
  }
  if (!ParseTimeOfDay(std::string_view(text).substr(0, kTimeLength))) {
    parts_.dialogs.ShowMessage({"Schedule Time", kTimeMessage, MessageIcon::kQuestion});
    return false;
  }
  auto entry = ToLower(text);
  if (parts_.setup.lstSchedule.Contains(entry)) return true;
  parts_.setup.lstSchedule.Append(std::move(entry));
  SaveSchedule();
  return true;
}

void Schedule::RemoveEntries(const std::vector<std::size_t>& selected) {
  if (selected.empty()) return;
  parts_.setup.lstSchedule.RemoveEach(selected);
  SaveSchedule();
}

void Schedule::ShowHelp() {
  parts_.dialogs.ShowMessage({"Help with formatting...", kHelp, MessageIcon::kExclamation});
}

}  // namespace ostrel
