#include "platform/virtual/memory_files.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <functional>
#include <gtest/gtest.h>
#include <random>

#include "platform/linux/linux_files.h"
#include "platform/linux/temporary_folder.h"
#include "platform/virtual/virtual_clock.h"
#include "tests/support/failure_of.h"

namespace ostrel {
namespace {

/// One random step on one file system, and what came of it.
std::string Step(Files& files, const std::string& root, std::mt19937 random) {
  const auto path = [&] {
    constexpr std::array kFolders{"", "a/", "b/", "none/"};
    constexpr std::array kNames{"X.TXT", "Y.TXT", "y.txt", ".hidden"};
    return root + "/" + kFolders[random() % kFolders.size()] + kNames[random() % kNames.size()];
  };
  const auto name = path(), other = path();
  std::string answer;
  std::array<char, 5> block{};
  const std::function<void()> steps[] = {
      [&] { files.WriteAll(name, fmt::format("{}", random())); },
      [&] { files.Append(name, "more"); },
      [&] { files.Delete(name); },
      [&] { files.Rename(name, other); },
      [&] { files.Link(name, other); },
      [&] { files.CreateFolder(root + (random() % 2 == 0 ? "/a" : "/none/c")); },
      [&] { answer = fmt::format("{}", files.Copy(name, other, Links::kRefused, Flush::kFirst)); },
      [&] { answer.assign(block.data(), files.ReadBlock(name, 3, block)); },
      [&] { answer = files.ReadAll(name); },
      [&] { answer = fmt::format("{}", files.HoldAlone(name, WhenUnknown::kWait)->Delete()); },
      [&] { answer = files.ActualPath(name).substr(root.size()); },
      [&] { answer = fmt::format("{} {}", files.Status(name).size, files.Exists(other)); }};
  const auto number = FailureOf(steps[random() % std::size(steps)]);
  for (const auto* folder : {"", "/a", "/b", "/none"}) {
    auto names = files.ListFiles(root + folder);
    std::sort(names.begin(), names.end());
    const auto isX = [](const std::string& file) { return file == "X.TXT"; };
    const auto first = files.FirstFile(root + folder, isX);
    answer += fmt::format(" {} {}", fmt::join(names, ","), first.has_value());
    EXPECT_TRUE(!first || (!isX(*first) && std::binary_search(names.begin(), names.end(), *first)));
  }
  return fmt::format("{} {}", number, answer);
}

TEST(MemoryFiles, AnswersAsADiskDoes) {
  VirtualClock clock{std::chrono::sys_days(std::chrono::year(2031) / 5 / 6)};
  TemporaryFolder folder;
  LinuxFiles disk(clock);
  MemoryFiles memory(clock);
  memory.Lay("/m/.hidden", "");
  disk.WriteAll(folder / ".hidden", "");
  for (Files* files : {static_cast<Files*>(&disk), static_cast<Files*>(&memory)})
    files->CreateFolder((files == &disk ? folder.path() : "/m") + "/b");
  for (unsigned seed = 0; seed < 3000; ++seed) {
    const auto wanted = Step(disk, folder.path(), std::mt19937(seed));
    ASSERT_EQ(Step(memory, "/m", std::mt19937(seed)), wanted) << "step " << seed;
  }
}

}  // namespace
}  // namespace ostrel
