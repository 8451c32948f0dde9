// A storm, a crash in its middle, and whether the history says of each product what the line says.
#include <gtest/gtest.h>

#include "base/names.h"
#include "base/text.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

using Counts = std::map<std::string, int>;

struct Storm : VirtualStation {
  Storm() {
    for (const auto& [list, keyword] : std::map<std::size_t, std::string>{
             {0, "TOR*"}, {8, "OVR*"}, {3, "SND*"}, {6, "OLD*"}, {10, "BLK*"}, {11, "JUNK*"}})
      Rule(list, keyword);
    Set({{"ComBaud", "4800"},
         {"CWIDTime", "0"},
         {"OverWrite8", "1"},
         {"CompressPri3", "1"},
         {"CompressNbrFiles", "5"},
         {"CompressBlockPri", "1"},
         {"PurgeTime", "0.05"},
         {"TxUpTime", "1"}});
    machine.history.isKept = true;
    Start();
  }
  /// Three a second, of all kinds; those of a product that is overwritten come again and again.
  void Receive(int first, int last) {
    const char* const kinds[] = {"TOR", "OVR", "SND", "OLD", "BLK", "JUNK", "XYZ"};
    for (int i = first; i < last; ++i) {
      const std::string kind = kinds[i % 7];
      const auto name = fmt::format("{}{}.TXT", kind, kind == "OVR" ? i % 3 : i);
      ++dropped[name];
      Drop(name, SampleText(static_cast<std::size_t>(i) % 900 + 100, i));
      Run(333ms);
    }
  }
  void Kill() {
    machine.line.Close();
    machine.dialogs.hasEnded = true;
    Restart();
  }
  Counts dropped;
};

TEST(History, NamesEachProductOfAStormOnceWithTheEndThatTheLineTells) {
  Storm storm;
  storm.Receive(0, 250);
  storm.Kill();
  storm.Receive(250, 500);
  storm.Run(15min);

  Counts heard, sent, named;
  std::map<Fate, int> fates;
  for (const auto& product : storm.Products()) ++heard[product.name];
  for (const auto& [id, row] : storm.machine.history.rows) {
    ++fates[row.fate];
    EXPECT_TRUE(row.ended || row.name.starts_with("BLK")) << row.name;  // some await a block
    if (row.timesSent > 0) sent[ToUpper(StripDupSuffix(row.sentAs))] += row.timesSent;
    if (!row.name.starts_with("COMP")) ++named[row.name];
    if (row.fate != Fate::kArchived) continue;
    EXPECT_EQ(storm.machine.history.rows.at(row.archive).fate, Fate::kSent);
  }
  EXPECT_EQ(named, storm.dropped);
  EXPECT_EQ(fates[Fate::kUnknown], 0);
  for (const auto fate : {Fate::kSent, Fate::kReplaced, Fate::kPurged, Fate::kDiscarded,
                          Fate::kNoRule, Fate::kArchived})
    EXPECT_GT(fates[fate], 10) << kFateWords[static_cast<std::size_t>(fate)];
  // What was whole on the line when the station was killed, and had not drained, came again.
  int repeated = 0;
  for (const auto& [name, count] : heard) {
    EXPECT_GE(count, sent[name]) << name;
    repeated += count - sent[name];
  }
  EXPECT_LE(repeated, 2);
  EXPECT_EQ(sent.size(), heard.size());
}

}  // namespace
}  // namespace ostrel
