#include "programs/simulate/arrivals.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <optional>

#include "base/failure.h"
#include "base/text.h"

namespace ostrel {

namespace fs = std::filesystem;

namespace {

constexpr milliseconds kDay{86'400'000};
constexpr std::size_t kLargest = 64 * 1024 * 1024;

/// Words as products have them: about as compressible as the real ones.
std::string MadeUpContent(std::size_t size) {
  constexpr const char* kWords[] = {"WIND ",  "NORTH ", "RAIN ", "GUSTS ", "SNOW ", "COUNTY ",
                                    "UNTIL ", "LOW ",   "HIGH ", "NEAR ",  "FOG ",  "RIVER "};
  std::string content;
  for (std::uint32_t word = 1; content.size() < size; word = word * 1103515245 + 12345)
    content += kWords[(word >> 16) % std::size(kWords)];
  content.resize(size);
  return content;
}

std::vector<std::string_view> FieldsOf(std::string_view line) {
  std::vector<std::string_view> fields;
  for (;;) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t,"), line.size()));
    if (line.empty()) return fields;
    const auto end = std::min(line.find_first_of(" \t,"), line.size());
    fields.push_back(line.substr(0, end));
    line.remove_prefix(end);
  }
}

std::optional<int> WholeNumber(std::string_view text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size() || value < 0) return std::nullopt;
  return value;
}

/// "yyyy-mm-dd" as days since the epoch.
std::optional<long long> ParseDate(std::string_view text) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
  const auto year = WholeNumber(text.substr(0, 4)), month = WholeNumber(text.substr(5, 2)),
             day = WholeNumber(text.substr(8, 2));
  if (!year || !month || !day) return std::nullopt;
  const auto date =
      std::chrono::year(*year) / static_cast<unsigned>(*month) / static_cast<unsigned>(*day);
  if (!date.ok()) return std::nullopt;
  return std::chrono::sys_days(date).time_since_epoch().count();
}

std::optional<milliseconds> ParseClock(std::string_view text) {
  const auto minutes = ParseTimeOfDay(text.substr(0, 5));
  if (!minutes) return std::nullopt;
  std::optional<int> second = 0;
  if (text.size() == 8 && text[5] == ':') {
    second = WholeNumber(text.substr(6));
  } else if (text.size() != 5) {
    return std::nullopt;
  }
  if (!second || *second > 59) return std::nullopt;
  return std::chrono::hours(minutes->hour) + std::chrono::minutes(minutes->minute) +
         seconds(*second);
}

/// One line of a list: its date, if it has one, and the arrival within its day.
struct Line {
  std::optional<long long> date;
  Arrival arrival;
};

std::optional<Line> ParseLine(std::string_view text) {
  auto fields = FieldsOf(text);
  Line line;
  if (!fields.empty() && fields[0].size() > 10) {  // date and time joined by a T
    fields.insert(fields.begin() + 1, fields[0].substr(11));
    fields[0] = fields[0].substr(0, 10);
  }
  if (fields.size() == 4) {
    line.date = ParseDate(fields[0]);
    if (!line.date) return std::nullopt;
    fields.erase(fields.begin());
  }
  if (fields.size() != 3) return std::nullopt;
  const auto time = ParseClock(fields[0]);
  const auto size = WholeNumber(fields[2]);
  const auto name = fields[1];
  const bool isPath = name.find('/') != std::string_view::npos || name.starts_with('.');
  if (!time || !size || *size > static_cast<int>(kLargest) || isPath || name.size() > 255)
    return std::nullopt;
  line.arrival = {*time, std::string(name), MadeUpContent(static_cast<std::size_t>(*size))};
  return line;
}

void SortByTime(std::vector<Arrival>& arrivals) {
  std::stable_sort(arrivals.begin(), arrivals.end(),
                   [](const Arrival& a, const Arrival& b) { return a.at < b.at; });
}

}  // namespace

std::vector<Arrival> ParseArrivals(std::string_view list) {
  std::vector<Line> lines;
  std::optional<long long> firstDate;
  int number = 0;
  ForEachLine(list, [&](std::string_view text) {
    ++number;
    if (TrimBlanks(text).empty() || text.starts_with('#')) return;
    auto line = ParseLine(text);
    if (!line) {
      throw Failure(failure_number::kTypeMismatch,
                    fmt::format("line {} is no arrival (time, name, size): {}", number, text));
    }
    if (line->date) firstDate = std::min(firstDate.value_or(*line->date), *line->date);
    lines.push_back(std::move(*line));
  });
  std::vector<Arrival> arrivals;
  for (auto& line : lines) {
    if (line.date) line.arrival.at += kDay * (*line.date - *firstDate);
    arrivals.push_back(std::move(line.arrival));
  }
  SortByTime(arrivals);
  return arrivals;
}

std::vector<Arrival> ArrivalsFromFolder(const std::string& folder) {
  if (!fs::is_directory(folder))
    throw Failure(failure_number::kPathNotFound, "There is no folder " + folder);
  std::vector<Arrival> arrivals;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream file(entry.path(), std::ios::binary);
    arrivals.push_back({milliseconds(0),
                        entry.path().filename().string(),
                        {std::istreambuf_iterator<char>(file), {}}});
  }
  std::sort(arrivals.begin(), arrivals.end(),
            [](const Arrival& a, const Arrival& b) { return a.name < b.name; });
  for (std::size_t i = 0; i < arrivals.size(); ++i)
    arrivals[i].at = kDay * static_cast<long long>(i) / static_cast<long long>(arrivals.size());
  return arrivals;
}

std::vector<Arrival> RepeatDaily(const std::vector<Arrival>& arrivals, int days) {
  std::vector<Arrival> all;
  for (int day = 0; day < days; ++day) {
    for (auto arrival : arrivals) {
      arrival.at += kDay * day;
      all.push_back(std::move(arrival));
    }
  }
  SortByTime(all);
  return all;
}

milliseconds WholeDays(const std::vector<Arrival>& arrivals, int days) {
  const auto last = arrivals.empty() ? milliseconds(0) : arrivals.back().at;
  return std::max(kDay * days, kDay * (last / kDay + 1));
}

}  // namespace ostrel
