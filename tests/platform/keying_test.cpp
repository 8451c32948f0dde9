// What a transmitter sees of the port: the keying lines, recorded in front of the system.
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/wait.h>

#include "tests/support/temp_folder.h"

namespace ostrel {
namespace {

/// Runs the keyer under the shim. Returns the recorded events, without times and numbers.
std::vector<std::string> Record(const std::string& folder, const std::string& log,
                                const char* ending) {
  const std::string programs = OSTREL_BINARY_DIR;
  const pid_t child = fork();
  if (child == 0) {
    setenv("LD_PRELOAD", (programs + "/libkeying_shim.so").c_str(), 1);
    setenv("KEYING_LOG", log.c_str(), 1);
    setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
    execl((programs + "/keyer").c_str(), "keyer", folder.c_str(), ending, nullptr);
    _exit(127);
  }
  waitpid(child, nullptr, 0);
  std::vector<std::string> events;
  std::ifstream file(log);
  long long last = 0;
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    long long wall = 0, monotonic = 0;
    std::string process, device, event;
    words >> wall >> monotonic >> process >> device >> std::ws;
    EXPECT_GE(monotonic, last);
    last = monotonic;
    std::getline(words, event);
    events.push_back(event);
  }
  return events;
}

TEST(Keying, GoesInOrderAndBothLinesEndDownHoweverTheProgramEnds) {
  const std::vector<std::string> opening = {"open RTS=1 DTR=1", "set RTS=0 DTR=1",
                                            "set RTS=0 DTR=0", "set RTS=0 DTR=1 hupcl"};
  const std::string keyed = "set RTS=1 DTR=1 hupcl", paused = "set RTS=0 DTR=1 hupcl";
  const std::string down = "set RTS=0 DTR=0 hupcl", gone = "gone RTS=0 DTR=0";
  const struct {
    const char* ending;
    std::vector<std::string> beforeIt;
    bool again;  // opened a second time
    std::vector<std::string> then;
  } rows[] = {{"close", {keyed, paused}, false, {keyed, paused, down, gone}},
              {"replug", {keyed, paused, gone}, true, {keyed, paused, down, gone}},
              {"exit", {keyed}, false, {gone}},
              {"kill", {keyed}, false, {}}};  // the system drops them, by "hupcl"
  for (const auto& row : rows) {
    TempFolder folder;
    auto expected = opening;
    const auto add = [&](const auto& more) {
      expected.insert(expected.end(), more.begin(), more.end());
    };
    add(row.beforeIt);
    if (row.again) add(opening);
    add(row.then);
    EXPECT_EQ(Record(folder.path(), folder / "log", row.ending), expected) << row.ending;
  }
}

}  // namespace
}  // namespace ostrel
