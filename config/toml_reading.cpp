#include "config/toml_reading.h"

#include <algorithm>

namespace ostrel {

void Refuse(const toml::node& at, const std::string& why) {
  throw std::runtime_error(fmt::format("line {}: {}", at.source().begin.line, why));
}

void CheckKeys(const toml::table& table, const std::vector<std::string_view>& known) {
  for (const auto& [key, node] : table) {
    if (std::find(known.begin(), known.end(), key.str()) == known.end())
      Refuse(node, fmt::format("\"{}\" means nothing here.", key.str()));
  }
}

int GetNumber(const toml::table& table, std::string_view key, int fallback, int least, int most) {
  const int number = Get<int>(table, key, fallback);
  if (number < least || number > most) {
    const auto* const node = table.get(key);
    Refuse(node != nullptr ? *node : static_cast<const toml::node&>(table),
           fmt::format("\"{}\" is a number from {} to {}.", key, least, most));
  }
  return number;
}

std::vector<std::string> GetTexts(const toml::table& table, std::string_view key,
                                  std::vector<std::string> fallback) {
  const auto* const node = table.get(key);
  if (node == nullptr) return fallback;
  if (!node->is_array()) Refuse(*node, fmt::format("\"{}\" is a list of texts.", key));
  std::vector<std::string> texts;
  for (const auto& element : *node->as_array()) {
    const auto text = element.value<std::string>();
    if (!text) Refuse(element, fmt::format("\"{}\" is a list of texts.", key));
    texts.push_back(*text);
  }
  return texts;
}

std::vector<const toml::table*> GetTables(const toml::table& table, std::string_view key) {
  const auto* const node = table.get(key);
  if (node == nullptr) return {};
  if (!node->is_array()) Refuse(*node, fmt::format("this is written [[{}]].", key));
  std::vector<const toml::table*> tables;
  for (const auto& element : *node->as_array()) {
    if (!element.is_table()) Refuse(element, fmt::format("this is written [[{}]].", key));
    tables.push_back(element.as_table());
  }
  return tables;
}

}  // namespace ostrel
