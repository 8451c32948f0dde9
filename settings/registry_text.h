// The text form of the settings tree, as registry editors write and read it: "Windows Registry
// Editor Version 5.00", or the older "REGEDIT4". Characters only; the file's encoding is the
// settings tool's affair.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/settings_store.h"

namespace ostrel {

/// The lines that such a file begins with.
inline constexpr std::string_view kRegistryHeader = "Windows Registry Editor Version 5.00";
inline constexpr std::string_view kOldRegistryHeader = "REGEDIT4";

/// The text of an export: the header, then each key, those that only hold keys too, with its
/// values. `values` are ordered by path and lie in the family's tree.
std::string FormatRegistryText(const std::vector<StoredValue>& values);

/// What an import holds for this station.
struct RegistryImport {
  std::vector<StoredValue> values;
  /// What was not taken, a line each: deletions, keys of other trees, paths with a drive letter.
  std::vector<std::string> leftOut;
};

/// Reads the whole of `text` (UTF-8). Values of the family's tree are taken, also from where a
/// 64-bit system keeps it. Throws Failure 13 with the line number for text that is no registry file
/// or is damaged anywhere: then nothing of it counts.
RegistryImport ParseRegistryText(std::string_view text);

}  // namespace ostrel
