// What the tests of sources have: a tree and an ingest folder, a delivery between them, and events
// that come.
#pragma once

#include <QCoreApplication>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <thread>

#include "feed/delivery.h"
#include "feed/folder_source.h"
#include "feed/placing.h"
#include "tests/support/virtual_station.h"

namespace ostrel {

namespace fs = std::filesystem;
using Names = std::multiset<std::string>;

inline constexpr const char* kLong =
    "A_WFUS53KDMX161430_C_KWIN_20260516143012_123456-1-TORDMXIA.TXT";

class SourcesTest : public testing::Test {
 protected:
  SourcesTest() {
    fs::create_directories(folder_ / "tree");
    fs::create_directory(folder_ / "in");
  }
  Delivery MakeDelivery(FeedMemory& memory) {
    return Delivery({.memory = memory,
                     .book = book_,
                     .now = [] { return FeedMemory::Time(std::chrono::seconds(1'000'000)); },
                     .ingestFolder = [this] { return folder_ / "in"; },
                     .unknownFolder = folder_ / "in",
                     .outbox = {},
                     .repeats = std::chrono::seconds(600)},
                    NameRules({}));
  }
  /// Lets events come until `isTrue`, or for long.
  template <typename Test>
  static bool Until(Test&& isTrue) {
    for (int look = 0; look < 1500 && !isTrue(); ++look) {
      QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
      std::this_thread::sleep_for(10ms);
    }
    return isTrue();
  }
  static void Wait(milliseconds duration) {
    const auto end = std::chrono::steady_clock::now() + duration;
    Until([&] { return std::chrono::steady_clock::now() >= end; });
  }
  Names In(const std::string& folder) const {
    Names names;
    for (const auto& entry : fs::directory_iterator(folder_ / folder))
      names.insert(entry.path().filename().string() + "=" + ReadWhole(entry.path().string()));
    return names;
  }
  std::ofstream Write(const std::string& name, const std::string& content) const {
    std::ofstream file(folder_ / "tree/" + name, std::ios::trunc);
    file << content << std::flush;
    return file;
  }
  std::unique_ptr<FolderSource> Watch(FolderSettings settings) {
    settings.paths = {folder_ / "tree"};
    auto source = std::make_unique<FolderSource>(settings, station_.archives, folder_ / "workshop",
                                                 delivery_, book_);
    source->Start();
    return source;
  }

  TemporaryFolder folder_;
  FeedBook book_{folder_ / "log", false};
  FeedMemory memory_{folder_ / "memory.db"};
  Delivery delivery_{MakeDelivery(memory_)};
  VirtualStation station_;
};

}  // namespace ostrel
