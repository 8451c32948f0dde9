// The words of one command of a told day.
#pragma once

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "base/numbers.h"
#include "tests/support/virtual_station.h"

namespace ostrel {

class Words {
 public:
  explicit Words(const std::string& command) : words_(command) {}
  std::string Next() {
    std::string word;
    words_ >> word;
    return word;
  }
  int Number() { return std::stoi(Next()); }
  /// "125ms", "3s", "10m" or "2h".
  milliseconds Time() {
    std::size_t unit = 0;
    const auto word = Next();
    const long count = std::stol(word, &unit);
    const auto name = word.substr(unit);
    return name == "ms"  ? count * 1ms
           : name == "s" ? count * 1s
           : name == "m" ? count * 1min
                         : count * 1h;
  }
  std::string Rest() {
    std::string rest;
    std::getline(words_ >> std::ws, rest);
    return rest;
  }
  std::vector<std::size_t> Positions() { return {std::istream_iterator<std::size_t>(words_), {}}; }
  /// A text, or as much of one as a number says.
  std::string Content() {
    const auto rest = Rest();
    return IsNumber(rest) ? SampleText(std::stoul(rest)) : rest;
  }

 private:
  std::istringstream words_;
};

}  // namespace ostrel
