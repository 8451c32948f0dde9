#include "listen/kept_products.h"

#include <fstream>
#include <gtest/gtest.h>

#include "platform/linux/temporary_folder.h"
#include "tests/bulletin/reading.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

std::string Warning(int number) {
  return fmt::format(
      "WFUS53 KDMX 192054\nTORDMX\nIAC127-192145-\n"
      "/O.NEW.KDMX.TO.W.{:04}.180719T2054Z-180719T2145Z/\n$$\n",
      number);
}

std::string Names(const KeptProducts& products) {
  std::string names;
  for (const auto& product : products.listed()) names += product.name + " ";
  return names;
}

TEST(KeptProducts, ListsWhatComesAgainOnce) {
  const TemporaryFolder folder;
  KeptProducts products(folder.path());
  const auto at = At(2018, 7, 19, 21);
  products.Add("TOR.TXT", Warning(1), at);
  products.Add("FILL.TXT", "nothing", at);
  products.Add("FILL.TXT.1", "nothing", at);
  EXPECT_EQ(Names(products), "FILL.TXT.1 TOR.TXT ");
  products.Add("TOR.TXT.1", Warning(1), at);
  products.Add("TOR.TXT.2", Warning(2), at);
  EXPECT_EQ(Names(products), "TOR.TXT.2 TOR.TXT.1 FILL.TXT.1 ");
  ASSERT_EQ(products.eventful().size(), 2u);
  EXPECT_EQ(products.NameOf(0) + " " + products.NameOf(1), "TOR.TXT.1 TOR.TXT.2");
}

TEST(KeptProducts, AreThoseOfTheFolderAndBounded) {
  const TemporaryFolder folder;
  std::ofstream(folder / "OLD.TXT") << Warning(1);
  std::ofstream(folder / "NEW.TXT") << "text";
  std::ofstream(folder / ".HALF.TXT") << "te";
  fs::create_directory(folder / "FOLDER");
  fs::create_symlink("/etc/passwd", folder / "LINK.TXT");
  fs::last_write_time(folder / "OLD.TXT", fs::file_time_type::clock::now() - std::chrono::hours(9));
  KeptProducts products(folder.path());
  EXPECT_EQ(Names(products), "NEW.TXT OLD.TXT ");
  EXPECT_EQ(products.ContentOf("NEW.TXT"), "text");
  for (const auto* name :
       {"", ".", "..", ".HALF.TXT", "FOLDER/../NEW.TXT", "FOLDER", "LINK.TXT", "NO"})
    EXPECT_FALSE(products.ContentOf(name)) << name;
  for (int i = 0; i < 4100; ++i)
    products.Add(fmt::format("{}", i), Warning(i), At(2018, 7, 19, 21));
  EXPECT_EQ(products.listed().size(), KeptProducts::kMostListed);
  EXPECT_LT(products.eventful().size(), KeptProducts::kMostEventful);
  EXPECT_EQ(products.NameOf(products.eventful().size() - 1), "4099");
}

}  // namespace
}  // namespace ostrel
