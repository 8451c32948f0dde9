#include <fmt/format.h>
#include <iconv.h>

#include "base/failure.h"
#include "base/text.h"
#include "programs/settings/commands.h"
#include "settings/all_settings.h"
#include "settings/registry_text.h"
#include "settings/settings_table.h"

namespace ostrel {

namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";

/// Throws Failure 13 for text that is not in the encoding `from`.
std::string Convert(std::string_view text, const char* from, const char* to) {
  const auto converter = iconv_open(to, from);
  if (converter == iconv_t(-1))
    throw Failure(failure_number::kInvalidArgument, "The system cannot convert text.");
  std::string result(text.size() * 4 + 4, '\0');
  auto* in = const_cast<char*>(text.data());  // iconv does not write there
  auto inLeft = text.size();
  auto* out = result.data();
  auto outLeft = result.size();
  const auto status = iconv(converter, &in, &inLeft, &out, &outLeft);
  iconv_close(converter);
  if (status == static_cast<std::size_t>(-1))
    throw Failure(failure_number::kTypeMismatch, fmt::format("The text is not {}.", from));
  result.resize(result.size() - outLeft);
  return result;
}

/// The characters of a registry file. The older form carries no mark and may be in the code page of
/// the system that wrote it.
std::string Decode(std::string_view file) {
  if (file.starts_with(kUtf16Mark)) return Convert(file.substr(2), "UTF-16LE", "UTF-8");
  if (file.starts_with(kUtf8Mark)) file.remove_prefix(kUtf8Mark.size());
  try {
    return Convert(file, "UTF-8", "UTF-8");
  } catch (const Failure&) {
    return Convert(file, "CP1252", "UTF-8");
  }
}

/// Stores the file's values, all or none.
RegistryImport TakeFile(StationFolder& station, const std::string& file) {
  auto import = ParseRegistryText(Decode(station.files().ReadAll(file)));
  const AllSettings settings(station.path());
  for (const auto& value : import.values) settings.Check(value);
  station.ChangeStore([&](SettingsStore& store) { store.WriteAll(import.values); });
  return import;
}

}  // namespace

void ExportSettings(StationFolder& station, const std::string& file) {
  std::vector<StoredValue> values;
  station.RunLogged([&] { return fmt::format("Export to {} failed", file); },
                    [&] {
                      values = station.OpenStore()->List(kFamilyTree);
                      station.files().WriteAll(
                          file, std::string(kUtf16Mark) +
                                    Convert(FormatRegistryText(values), "UTF-8", "UTF-16LE"));
                    });
  fmt::print("{} values saved to {}\n", values.size(), Printable(file));
}

void ImportSettings(StationFolder& station, const std::string& file) {
  RegistryImport import;
  station.RunLogged([&] { return fmt::format("Import of {} refused, nothing was changed", file); },
                    [&] { import = TakeFile(station, file); });
  for (const auto& leftOut : import.leftOut) {
    fmt::print(stderr, "Import left out {}\n", Printable(leftOut));
    station.Log("Import left out " + leftOut);
  }
  fmt::print("{} values taken from {}\n", import.values.size(), Printable(file));
}

}  // namespace ostrel
