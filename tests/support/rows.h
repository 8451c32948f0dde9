// Tables of what is read and what it tells, as text beside the tests that go over them.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "base/text.h"

namespace ostrel {

/// What the text of a row stands for: \n, \r, \t, \\ and \xNN are written out.
inline std::string Unescaped(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char next = text[i] == '\\' && i + 1 < text.size() ? text[++i] : '\0';
    if (next == 'x') {
      plain += static_cast<char>(std::strtol(std::string(text.substr(i + 1, 2)).c_str(), {}, 16));
      i += 2;
    } else {
      plain += next == 'n' ? '\n' : next == 'r' ? '\r' : next == 't' ? '\t' : text[i];
    }
  }
  return plain;
}

/// Expects of each row "what is read => what it tells" of the table that the section's teller tells
/// just that. Sections begin with "[name]", comments with "# ". Blanks around both do not count,
/// and each teller must have rows and each section a teller.
inline void ExpectRows(
    const std::string& table,
    const std::map<std::string, std::function<std::string(const std::string&)>>& tellers) {
  std::ifstream file(OSTREL_SOURCE_DIR "/tests/" + table);
  std::string section;
  std::set<std::string> seen;
  int number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    if (line.empty() || line.starts_with("# ")) continue;
    const auto arrow = line.find("=>");
    if (arrow == std::string::npos) {
      section = line.substr(1, line.size() - 2);
      ASSERT_TRUE(tellers.contains(section)) << table << ":" << number;
      continue;
    }
    seen.insert(section);
    const auto given = Unescaped(TrimBlanks(std::string_view(line).substr(0, arrow)));
    const auto told = Unescaped(TrimBlanks(std::string_view(line).substr(arrow + 2)));
    EXPECT_EQ(TrimBlanks(tellers.at(section)(given)), TrimBlanks(told)) << table << ":" << number;
  }
  EXPECT_EQ(seen.size(), tellers.size()) << table;
}

}  // namespace ostrel
