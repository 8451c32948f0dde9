// Imported settings. What is taken from a text comes out of its own export unchanged.
#include <optional>

#include "base/failure.h"
#include "config/registry_text.h"
#include "tests/fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ostrel;
  const auto parsed = [](std::string_view text) -> std::optional<RegistryImport> {
    try {
      return ParseRegistryText(text);
    } catch (const Failure&) {
      return std::nullopt;
    }
  };
  const auto first = parsed(AsText(data, size));
  if (!first) return 0;
  const auto second = parsed(FormatRegistryText(first->values));
  Demand(second.has_value(), "an export can be imported");
  Demand(second->leftOut.empty(), "an export is imported whole");
  Demand(std::equal(first->values.begin(), first->values.end(), second->values.begin(),
                    second->values.end(),
                    [](const StoredValue& a, const StoredValue& b) {
                      return a.keyPath == b.keyPath && a.name == b.name && a.value == b.value &&
                             a.isRaw == b.isRaw;
                    }),
         "values survive export and import");
  return 0;
}
