#include "bulletin/codes.h"

#include <map>

#include "base/text.h"
#include "bulletin/letters.h"
#include "bulletin/tables.h"

namespace ostrel {
namespace {

using Meanings = std::map<std::string_view, std::string_view>;  // by code

const std::map<std::string_view, Meanings>& Tables() {
  static const auto tables = [] {
    std::map<std::string_view, Meanings> read;
    ForEachLine(kCodesTable, [&](std::string_view line) {
      if (line.empty() || line.front() == '#') return;
      const auto first = line.find('\t'), second = line.find('\t', first + 1);
      read[line.substr(0, first)][line.substr(first + 1, second - first - 1)] =
          line.substr(second + 1);
    });
    return read;
  }();
  return tables;
}

std::optional<std::string_view> Find(const Meanings& table, std::string_view code) {
  const auto found = table.find(code);
  return found == table.end() ? std::nullopt : std::optional(found->second);
}

const Meanings& TableOf(CodeTable table) {
  static const Meanings* const tables[] = {
      &Tables().at("kind"),         &Tables().at("action"), &Tables().at("phenomenon"),
      &Tables().at("significance"), &Tables().at("office"), &Tables().at("tag"),
      &Tables().at("noidentifier")};
  return *tables[static_cast<std::size_t>(table)];
}

}  // namespace

std::optional<std::string_view> MeaningOf(CodeTable table, std::string_view code) {
  return Find(TableOf(table), code);
}

std::optional<std::chrono::minutes> TimeZoneOffset(std::string_view letters) {
  static const auto& table = Tables().at("zone");
  const auto offset = Find(table, ToUpper(letters));
  if (!offset) return std::nullopt;
  const bool isWest = offset->starts_with('-');
  const auto minutes = WholeNumber(offset->substr(isWest ? 1 : 0)).value();
  return std::chrono::minutes(isWest ? -minutes : minutes);
}

std::optional<std::string> AreaOfSame(std::string_view location) {
  static const auto& table = Tables().at("same");
  if (location.size() != 6 || !WholeNumber(location)) return std::nullopt;
  const auto letters = Find(table, location.substr(1, 2));
  return letters ? std::optional(std::string(*letters) + std::string(location.substr(3)))
                 : std::nullopt;
}

std::optional<Hemispheres> HemispheresOf(std::string_view officeOrArea) {
  static const auto& table = Tables().at("hemisphere");
  for (auto size = std::min<std::size_t>(officeOrArea.size(), 4); size > 0; --size) {
    if (const auto signs = Find(table, officeOrArea.substr(0, size)))
      return Hemispheres{(*signs)[0] == 'S' ? -1 : 1, (*signs)[1] == 'E' ? 1 : -1};
  }
  return std::nullopt;
}

}  // namespace ostrel
