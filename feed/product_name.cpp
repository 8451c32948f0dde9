#include "feed/product_name.h"

#include <algorithm>
#include <fmt/format.h>
#include <stdexcept>

#include "base/names.h"
#include "base/text.h"

namespace ostrel {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
bool IsLetterOrDigit(char c) {
  return IsLetter(c) || IsDigit(c);
}

template <typename Test>
bool Consists(std::string_view text, std::size_t least, std::size_t most, Test&& test) {
  return text.size() >= least && text.size() <= most && std::all_of(text.begin(), text.end(), test);
}

/// Takes what stands before the next `separator` off `rest`; all of it where there is none.
std::string_view TakeUpTo(char separator, std::string_view& rest) {
  const auto end = rest.find(separator);
  const auto part = rest.substr(0, end);
  rest = end == std::string_view::npos ? std::string_view{} : rest.substr(end + 1);
  return part;
}

bool IsHeading(std::string_view text) {
  constexpr std::size_t kBulletin = 10, kTime = 6, kCorrection = 3;
  if (text.size() < kBulletin + kTime) return false;
  const auto correction = text.substr(kBulletin + kTime);
  return Consists(text.substr(0, kBulletin), kBulletin, kBulletin, IsLetterOrDigit) &&
         Consists(text.substr(kBulletin, kTime), kTime, kTime, IsDigit) &&
         (correction.empty() || Consists(correction, kCorrection, kCorrection, IsLetter));
}

/// "123456-1-TORDMXIA.TXT", with or without the urgency.
std::optional<ProductName> ReadLastPart(std::string_view part) {
  const auto serial = TakeUpTo('-', part);
  if (!Consists(serial, 1, 14, IsDigit)) return std::nullopt;
  ProductName product;
  if (part.size() > 2 && part[0] >= '1' && part[0] <= '4' && part[1] == '-') {
    product.urgency = part[0] - '0';
    part.remove_prefix(2);
  }
  const auto name = ReadShortName(part);
  if (!name || name->find('-') != std::string::npos) return std::nullopt;
  product.name = *name;
  return product;
}

}  // namespace

std::optional<std::string> ReadShortName(std::string_view given) {
  const auto period = given.find('.');
  if (period == std::string_view::npos) return std::nullopt;
  const auto inName = [](char c) { return IsLetterOrDigit(c) || c == '-' || c == '_'; };
  if (!Consists(given.substr(0, period), 1, 8, inName) ||
      !Consists(given.substr(period + 1), 1, 3, IsLetterOrDigit))
    return std::nullopt;
  return ToUpper(given);
}

std::optional<ProductName> ReadLongName(std::string_view given) {
  constexpr std::size_t kTime = 14;
  if (!Consists(TakeUpTo('_', given), 1, 1, IsLetter) || !IsHeading(TakeUpTo('_', given)) ||
      ToUpper(TakeUpTo('_', given)) != "C" ||
      !Consists(TakeUpTo('_', given), 4, 4, IsLetterOrDigit) ||
      !Consists(TakeUpTo('_', given), kTime, kTime, IsDigit))
    return std::nullopt;
  return ReadLastPart(given);
}

NameRules::NameRules(const std::vector<NameRule>& rules) {
  for (const auto& rule : rules) {
    try {
      rules_.push_back({std::regex(rule.pattern, std::regex::ECMAScript | std::regex::icase |
                                                     std::regex::optimize),
                        rule.name});
    } catch (const std::regex_error&) {
      throw std::runtime_error(fmt::format("\"{}\" is no pattern.", rule.pattern));
    }
  }
}

std::optional<ProductName> NameRules::NameOf(std::string_view given) const {
  if (given.size() > kLongestName) return std::nullopt;
  if (auto name = ReadShortName(given)) return ProductName{.name = *name};
  if (auto product = ReadLongName(given)) return product;
  const std::string text(given);
  for (const auto& rule : rules_) {
    std::smatch match;
    if (!std::regex_match(text, match, rule.pattern)) continue;
    if (auto name = ReadShortName(match.format(rule.name))) return ProductName{.name = *name};
  }
  // Two files of one name have got numbers.
  const auto bare = StripDupSuffix(given);
  const bool isNumbered = IsNumberedCopy(given) && bare.size() < given.size();
  return isNumbered ? NameOf(bare) : std::nullopt;
}

std::string HarmlessName(std::string_view given) {
  constexpr std::size_t kMost = 200;  // room for a number
  std::string name(given.substr(given.find_last_of('/') + 1).substr(0, kMost));
  std::replace_if(
      name.begin(), name.end(), [](char c) { return c < ' ' || c == 0x7F || c == '\\'; }, '_');
  name.erase(0, name.find_first_not_of('.'));
  return name.empty() ? "unnamed" : name;
}

}  // namespace ostrel
