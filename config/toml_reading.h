// Configuration files of the programs beside the station: TOML, every key known, and what is wrong
// told with its line.
#pragma once

#include <fmt/format.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <toml++/toml.h>
#include <vector>

namespace ostrel {

/// Throws std::runtime_error that names the line of `at`.
[[noreturn]] void Refuse(const toml::node& at, const std::string& why);

/// Refuses a key of `table` that is none of the `known` ones.
void CheckKeys(const toml::table& table, const std::vector<std::string_view>& known);

/// The value at `key`, or `fallback` where there is none. Refuses a value of another kind.
template <typename Value>
Value Get(const toml::table& table, std::string_view key, Value fallback) {
  const auto* const node = table.get(key);
  if (node == nullptr) return fallback;
  const auto value = node->value<Value>();
  if (!value) Refuse(*node, fmt::format("\"{}\" is of the wrong kind.", key));
  return *value;
}

/// The number at `key` within its range.
int GetNumber(const toml::table& table, std::string_view key, int fallback, int least, int most);

/// The texts at `key`; none where there are none.
std::vector<std::string> GetTexts(const toml::table& table, std::string_view key,
                                  std::vector<std::string> fallback = {});

/// The tables that stand under [[key]]; none where there are none.
std::vector<const toml::table*> GetTables(const toml::table& table, std::string_view key);

/// Has `take` make something of the table that `parse` returns for the file. Throws
/// std::runtime_error that names file and line for what is wrong.
template <typename Parse, typename Take>
auto TakeToml(const std::string& path, Parse&& parse, Take&& take) {
  try {
    return take(parse());
  } catch (const toml::parse_error& error) {
    throw std::runtime_error(
        fmt::format("{}: line {}: {}.", path, error.source().begin.line, error.description()));
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(fmt::format("{}: {}", path, error.what()));
  }
}

template <typename Take>
auto ReadTomlFile(const std::string& path, Take&& take) {
  return TakeToml(
      path, [&] { return toml::parse_file(path); }, take);
}
/// The same for the file's text, where it was read already.
template <typename Take>
auto ReadTomlText(const std::string& path, std::string_view text, Take&& take) {
  return TakeToml(
      path, [&] { return toml::parse(text, path); }, take);
}

}  // namespace ostrel
