// Imported settings. What is taken from a text comes out of its own export unchanged.
#include "base/failure.h"
#include "settings/registry_text.h"
#include "tests/fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ostrel;
  RegistryImport first;
  try {
    first = ParseRegistryText(AsText(data, size));
  } catch (const Failure&) {
    return 0;
  }
  const auto second = ParseRegistryText(FormatRegistryText(first.values));  // no Failure here
  Demand(second.leftOut.empty(), "an export is imported whole");
  Demand(second.values == first.values, "values survive export and import");
  return 0;
}
