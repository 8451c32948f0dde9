// A station as a text. What is taken from one is written again so that it is read as the same, and
// the second writing is the first.
#include "base/failure.h"
#include "profile/profile_text.h"
#include "tests/fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ostrel;
  std::vector<ProfileEntry> first;
  try {
    first = ParseProfile(AsText(data, size));
  } catch (const Failure&) {
    return 0;
  }
  const auto text = FormatProfile(first);
  const auto second = ParseProfile(text);  // no Failure here
  Demand(second.size() == first.size(), "no key is lost");
  for (std::size_t i = 0; i < first.size(); ++i)
    Demand(second[i].Name() == first[i].Name() && second[i].values == first[i].values,
           "values survive");
  Demand(FormatProfile(second) == text, "the same bytes");
  return 0;
}
