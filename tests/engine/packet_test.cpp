#include "engine/packet.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

TEST(Packet, FieldsArePaddedAndCut) {
  const std::pair<const char*, const char*> names[] = {{"a.txt.3", "A.TXT       "},
                                                       {"A.B.TXT", "A.B         "},
                                                       {"ABCDEFGHI.TXT", "ABCDEFGHI.TX"},
                                                       {"ABC.1", "ABC.1       "}};
  for (const auto& [file, field] : names) EXPECT_EQ(NameField(file), field);
  EXPECT_EQ(NumberField(0, 7), " 0     ");
  EXPECT_EQ(NumberField(261120, 7), " 261120");
  EXPECT_EQ(NumberField(123456, 6), " 12345");

  const std::pair<std::int64_t, int> counts[] = {
      {0, 0}, {1, 1}, {1024, 1}, {1025, 2}, {5'000'000'000, 4882813}};
  for (const auto& [length, blocks] : counts) EXPECT_EQ(BlockCount(length), blocks);

  Block full;
  full.fill('\xFF');
  EXPECT_EQ(Checksum(full), 261120u);
}

}  // namespace
}  // namespace ostrel
