#include "receive/packet_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <fmt/format.h>
#include <numeric>
#include <optional>

namespace ostrel {
namespace {

using std::string_view_literals::operator""sv;

struct Mark {
  std::size_t offset;
  std::string_view text;
};
constexpr std::array<Mark, kHeaderMarks> kMarks{
    {{0, "/PF"}, {15, "/PN"}, {24, "/PT"}, {33, "/CS"}, {43, "/FD"}, {78, "\r\n"}}};

constexpr auto kZeros = "\0\0\0\0\0\0"sv;
constexpr int kLargestSum = 255 * 1024;

std::string_view WithoutPadding(std::string_view field) {
  return field.substr(0, field.find_last_not_of(' ') + 1);
}

std::optional<int> ReadDigits(std::string_view digits) {
  int value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc{} || end != digits.data() + digits.size() || digits.front() == '-') {
    return std::nullopt;
  }
  return value;
}

// A blank in the place of the sign, digits without leading zeros, blanks.
std::optional<int> ReadNumberField(std::string_view field) {
  const std::string_view digits = WithoutPadding(field).substr(field.front() == ' ' ? 1 : 0);
  if (field.front() != ' ' || digits.empty()) return std::nullopt;
  if (digits.size() > 1 && digits.front() == '0') return std::nullopt;
  return ReadDigits(digits);
}

// Reads digits up to `separator` off the front of `text`: at least `least`, at most `most` of them,
// and no leading zero where their number may vary.
std::optional<int> TakeNumber(std::string_view& text, char separator, std::size_t least,
                              std::size_t most) {
  const std::size_t end = std::min(text.find(separator), text.size());
  const std::string_view digits = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  if (digits.size() < least || digits.size() > most) return std::nullopt;
  if (least != most && digits.front() == '0') return std::nullopt;
  return ReadDigits(digits);
}

bool IsDate(std::string_view& text) {
  using namespace std::chrono;
  const auto monthNumber = TakeNumber(text, '/', 1, 2);
  const auto dayNumber = TakeNumber(text, '/', 1, 2);
  const auto yearNumber = TakeNumber(text, ' ', 4, 4);
  if (!monthNumber || !dayNumber || !yearNumber) return false;
  return year_month_day{year{*yearNumber}, month{static_cast<unsigned>(*monthNumber)},
                        day{static_cast<unsigned>(*dayNumber)}}
      .ok();
}

bool IsTimeOfDay(std::string_view text) {
  if (text == "12:00:00 AM") return false;  // midnight is the date alone
  const auto hour = TakeNumber(text, ':', 1, 2);
  const auto minute = TakeNumber(text, ':', 2, 2);
  const auto second = TakeNumber(text, ' ', 2, 2);
  if (!hour || !minute || !second) return false;
  return *hour >= 1 && *hour <= 12 && *minute < 60 && *second < 60 &&
         (text == "AM" || text == "PM");
}

// 10/27/2003 4:28:30 PM, or the date alone at midnight.
bool IsStamp(std::string_view text) {
  const bool dateAlone = text.find(' ') == std::string_view::npos;
  return IsDate(text) && (dateAlone || IsTimeOfDay(text));
}

// A name that may stand in a folder: a separator or a leading period would lead out of it or hide.
bool IsName(std::string_view name) {
  const auto allowed = [](unsigned char c) {
    return c >= 0x20 && c != '/' && (c < 'a' || c > 'z');
  };
  return !name.empty() && name.front() != '.' && std::all_of(name.begin(), name.end(), allowed);
}

void CheckFrame(std::string_view bytes, std::vector<std::string>& problems) {
  if (!bytes.starts_with(kZeros)) problems.emplace_back("no six zero bytes in front");
  if (!bytes.ends_with(kZeros)) problems.emplace_back("no six zero bytes behind");
  if (CountHeaderMarks(bytes.substr(kReceivedZeros, kReceivedHeader)) != kHeaderMarks) {
    problems.emplace_back("a header mark is wrong");
  }
}

void CheckFields(const ReceivedPacket& packet, std::vector<std::string>& problems) {
  if (!IsName(packet.name)) problems.emplace_back("no file name");
  if (packet.block < 1 || packet.count < 1 || packet.block > packet.count) {
    problems.emplace_back("the block numbers are wrong");
  }
  if (!IsStamp(packet.stamp)) problems.emplace_back("no time stamp");
}

void CheckSum(std::string_view field, std::string_view data, std::vector<std::string>& problems) {
  const int sum = std::accumulate(data.begin(), data.end(), 0, [](int total, char c) {
    return total + static_cast<unsigned char>(c);
  });
  const auto told = ReadNumberField(field);
  if (!told || *told > kLargestSum) {
    problems.emplace_back("no checksum");
  } else if (*told != sum) {
    problems.push_back(fmt::format("the checksum says {}, the data {}", *told, sum));
  }
}

}  // namespace

int CountHeaderMarks(std::string_view header) {
  return static_cast<int>(std::count_if(kMarks.begin(), kMarks.end(), [&](const Mark& mark) {
    return header.size() >= mark.offset + mark.text.size() &&
           header.substr(mark.offset, mark.text.size()) == mark.text;
  }));
}

PacketReading ReadPacket(std::string_view bytes) {
  const std::string_view header = bytes.substr(kReceivedZeros, kReceivedHeader);
  PacketReading reading;
  ReceivedPacket& packet = reading.packet;
  packet.name = WithoutPadding(header.substr(3, 12));
  packet.block = ReadNumberField(header.substr(18, 6)).value_or(0);
  packet.count = ReadNumberField(header.substr(27, 6)).value_or(0);
  packet.stamp = WithoutPadding(header.substr(46, 32));
  packet.data = bytes.substr(kReceivedZeros + kReceivedHeader, kReceivedBlock);
  CheckFrame(bytes, reading.problems);
  CheckFields(packet, reading.problems);
  CheckSum(header.substr(36, 7), packet.data, reading.problems);
  return reading;
}

}  // namespace ostrel
