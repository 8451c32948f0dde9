// A station as one text in TOML: what stands in it, written and read. It knows neither what the
// keys mean nor where their values live.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// One key with its value. Values are bytes; a text that is no UTF-8 is written as the hexadecimal
/// digits of its bytes.
struct ProfileEntry {
  std::string table, key;
  bool isList = false;
  std::vector<std::string> values = {};  // exactly one where it is no list
  std::string comment = {};
  int line = 0;                 // where it was read
  std::vector<int> lines = {};  // where each value was

  std::string Name() const { return table + "." + key; }
};

/// A key whose value becomes another one.
struct ProfileChange {
  std::optional<ProfileEntry> from;  // nothing where a file was missing
  ProfileEntry to;
};

/// The entries in their order, a heading where the table changes.
std::string FormatProfile(const std::vector<ProfileEntry>& entries);

/// Throws Failure 13, which names the line, for what is no TOML, or nothing that FormatProfile
/// could have written but for order, comments and layout.
std::vector<ProfileEntry> ParseProfile(std::string_view text);

}  // namespace ostrel
