// Counties and zones: their names, centres, and which counties a zone covers.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bulletin/bulletin.h"

namespace ostrel {

struct Area {
  std::string name;
  std::optional<Position> centre;
  std::vector<std::string> counties;  // of a zone: "IAC153"; empty for a county
};

class Areas {
 public:
  /// The table that the program brings along (bulletin/areas.tsv).
  static const Areas& Built();

  /// Built() with the lines of `table` in the place of those with the same codes. Form of a line,
  /// parted by tabs: code, name, latitude and longitude of the centre in degrees (both may be
  /// empty), counties of a zone parted by blanks. Empty lines and those that begin with "#" are of
  /// no account. Throws Failure naming the first line of another form.
  static Areas With(std::string_view table);

  /// Nothing for a code that no table knows.
  const Area* Find(std::string_view code) const;

 private:
  void Add(std::string_view table);

  std::map<std::string, Area, std::less<>> areas_;
};

}  // namespace ostrel
