// Names that receivers and strangers give to products, and a Feed.toml as an operator's editor, or
// chance, left it.
#include <fstream>
#include <stdexcept>

#include "feed/feed_config.h"
#include "feed/product_name.h"
#include "platform/linux/temporary_folder.h"
#include "tests/fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ostrel;
  static const TemporaryFolder folder;
  static const NameRules rules({{"(.*)\\.text", "$1.TXT"}, {"x(.{3}).*(.{3})", "$1.$2"}});
  auto input = AsText(data, size);
  const auto name = TakePart(input);
  if (const auto known = rules.NameOf(name)) {
    Demand(ReadShortName(known->name) == known->name, "the name is short");
    Demand(rules.NameOf(known->name)->name == known->name, "a short name stays");
    Demand(known->urgency >= 0 && known->urgency <= 4, "the urgency is one");
  }
  const auto harmless = HarmlessName(name);
  Demand(!harmless.empty() && harmless.size() <= 200 && harmless.front() != '.', "a visible name");
  Demand(harmless.find_first_of(std::string_view("/\n\0", 3)) == std::string::npos, "no path");

  const auto path = folder / "Feed.toml";
  std::ofstream(path, std::ios::binary | std::ios::trunc) << input;
  try {
    const auto config = ReadFeedConfig(path, "/station");
    Demand(Explain(config).ends_with('\n'), "it can be explained");
  } catch (const std::runtime_error& error) {
    Demand(std::string_view(error.what()).starts_with(path), "the file is named");
  }
  return 0;
}
