#include "profile/profile_text.h"

#include <algorithm>
#include <fmt/format.h>
#include <sstream>
#include <toml++/toml.h>

#include "base/failure.h"
#include "base/text.h"
#include "base/utf8.h"

namespace ostrel {

namespace {

constexpr const char* kBytes = "hex";  // the key of a text that is no UTF-8
constexpr std::string_view kNul("\0", 1);

[[noreturn]] void Refuse(const toml::node& at, const std::string& why) {
  throw Failure(failure_number::kTypeMismatch,
                fmt::format("line {}: {}", at.source().begin.line, why));
}

std::string Quoted(const std::string& text) {
  std::ostringstream quoted;
  quoted << toml::toml_formatter(toml::value<std::string>(text),
                                 toml::format_flags::allow_unicode_strings);
  return quoted.str();
}

std::string ValueText(const std::string& text) {
  if (IsUtf8(text)) return Quoted(text);
  std::string digits;
  for (const char byte : text) digits += fmt::format("{:02x}", static_cast<unsigned char>(byte));
  return fmt::format("{{ {} = \"{}\" }}", kBytes, digits);
}

std::string ListText(const std::vector<std::string>& values) {
  std::string text;
  for (const auto& value : values) text += fmt::format("  {},\n", ValueText(value));
  return text.empty() ? "[]" : fmt::format("[\n{}]", text);
}

std::string BytesOf(const toml::node& at) {
  const auto* const digits = at.as_string();
  if (digits == nullptr || digits->get().size() % 2 != 0 ||
      digits->get().find_first_not_of("0123456789abcdef") != std::string::npos)
    Refuse(at, "two hexadecimal digits stand for a byte.");
  std::string bytes;
  for (std::size_t i = 0; i < digits->get().size(); i += 2)
    bytes += static_cast<char>(std::stoi(digits->get().substr(i, 2), nullptr, 16));
  return bytes;
}

/// A text without the characters that its place cannot hold.
std::string ValueOf(const toml::node& at, std::string_view unwanted) {
  const auto* const table = at.as_table();
  const auto* const bytes = table != nullptr && table->size() == 1 ? table->get(kBytes) : nullptr;
  if (bytes == nullptr && !at.is_string()) Refuse(at, "a value is a text in quotes.");
  auto text = bytes != nullptr ? BytesOf(*bytes) : at.as_string()->get();
  if (text.find_first_of(unwanted) != std::string::npos)
    Refuse(at, "the text has a character that it cannot have.");
  return text;
}

/// Names as the station has them, which need no quotes.
void CheckName(std::string_view name, const toml::node& at) {
  const auto isPlain = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  };
  if (name.empty() || !std::all_of(name.begin(), name.end(), isPlain))
    Refuse(at, fmt::format("\"{}\" is no name.", name));
}

ProfileEntry EntryOf(std::string_view table, std::string_view key, const toml::node& at) {
  CheckName(table, at);
  CheckName(key, at);
  ProfileEntry entry{.table = std::string(table),
                     .key = std::string(key),
                     .isList = at.is_array(),
                     .line = static_cast<int>(at.source().begin.line)};
  if (!entry.isList) {
    entry.values.push_back(ValueOf(at, kNul));
    return entry;
  }
  for (const auto& value : *at.as_array()) {
    entry.values.push_back(ValueOf(value, kLineEnd));
    entry.lines.push_back(static_cast<int>(value.source().begin.line));
  }
  return entry;
}

}  // namespace

std::string FormatProfile(const std::vector<ProfileEntry>& entries) {
  std::string text;
  const std::string* table = nullptr;
  for (const auto& entry : entries) {
    if (table == nullptr || *table != entry.table) text += fmt::format("\n[{}]\n", entry.table);
    table = &entry.table;
    if (!entry.comment.empty()) text += fmt::format("# {}\n", entry.comment);
    text += fmt::format("{} = {}\n", entry.key,
                        entry.isList ? ListText(entry.values) : ValueText(entry.values.front()));
  }
  return text;
}

std::vector<ProfileEntry> ParseProfile(std::string_view text) {
  try {
    std::vector<ProfileEntry> entries;
    for (const auto& [table, node] : toml::parse(text)) {
      if (!node.is_table()) Refuse(node, fmt::format("\"{}\" stands in no table.", table.str()));
      for (const auto& [key, value] : *node.as_table())
        entries.push_back(EntryOf(table.str(), key.str(), value));
    }
    return entries;
  } catch (const toml::parse_error& error) {
    throw Failure(failure_number::kTypeMismatch,
                  fmt::format("line {}: {}", error.source().begin.line, error.description()));
  }
}

}  // namespace ostrel
