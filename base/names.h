// File names as the queues know them: upper case, with a number behind a period where a name was
// taken. Nothing here looks at a disk.
#pragma once

#include <string>
#include <string_view>

namespace ostrel {

/// A name with two or more periods loses its last period and what follows (A.TXT.3 gives A.TXT);
/// any other name stays (A.TXT, ABC.1).
std::string_view StripDupSuffix(std::string_view name);

/// The part before the first period: what tells one product from another. A.TXT.3 gives A.
std::string_view StripExtension(std::string_view name);

/// True for a name that ends in a period and a number without a leading zero: a numbered copy.
bool IsNumberedCopy(std::string_view name);

/// The last component of a path, and everything in front of it without the separator.
std::string_view FileNameOf(std::string_view path);
std::string_view FolderOf(std::string_view path);

/// `folder` and `name` with one separator between them.
std::string JoinPath(std::string_view folder, std::string_view name);

/// The longest name that a folder holds, in bytes.
inline constexpr std::size_t kLongestName = 255;

/// `name` with its number replaced by `number`. What would be too long for a folder is cut in front
/// of the number.
std::string NumberedName(std::string_view name, int number);

/// The first free name: `name` itself, else with its number replaced by .1, .2 ... The number is
/// taken off the *new* name at each step, so A.TXT gives A.TXT.1, A.TXT.2, but ABC gives ABC.1,
/// ABC.1.2, since one period is not stripped. `taken` tells whether a name is in use.
template <typename Taken>
std::string FirstFreeName(std::string name, Taken&& taken) {
  for (int k = 1; taken(name); ++k) name = NumberedName(name, k);
  return name;
}

}  // namespace ostrel
