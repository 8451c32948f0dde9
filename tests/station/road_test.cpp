// The road of a received file, from the ingest folder to the air.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

std::vector<std::string> NamesOf(const std::vector<ReceivedPacket>& packets) {
  std::vector<std::string> names;
  for (const auto& packet : packets) {
    if (packet.name != "FILLFILE.TXT")
      names.push_back(packet.name + " " + std::to_string(packet.block));
  }
  return names;
}

TEST(Road, ProductsArriveAtTheReceiverByteForByteAndByPriority) {
  VirtualStation station;
  station.Set("ComBaud", "38400");
  station.Rule(0, "TOR*");
  station.Rule(4, "AFD*");
  station.Rule(kDiscardList, "ADM*");
  station.Rule(kCopiesList, "TORXXX.TXT | C=2");
  const auto forecast = SampleText(3000, 1), warning = SampleText(1024, 2);
  station.Drop("afdxxx.txt", forecast);
  station.Drop("ADMIN.TXT", "nobody needs this");
  station.Drop("NORULE.TXT", "nor this");
  station.Drop("AFDEMPTY.TXT", "");
  station.Start();
  station.Run(10s);
  station.Drop("TORXXX.TXT", warning);
  station.Run(60s);

  std::vector<std::pair<std::string, std::string>> received;
  for (const auto& product : station.Products()) {
    if (product.name != "FILLFILE.TXT") received.emplace_back(product.name, product.data);
  }
  const std::vector<std::pair<std::string, std::string>> expected = {
      {"AFDXXX.TXT", forecast}, {"TORXXX.TXT", warning}, {"TORXXX.TXT", warning}};
  EXPECT_EQ(received, expected);
  for (const auto* folder : {"KvData/RxFiles", "KvData/RtPri1", "KvData/RtPri5", "KvData/RtXmit"})
    EXPECT_EQ(station.Names(folder), std::vector<std::string>{}) << folder;
  EXPECT_EQ(station.Names("KvData/RtSent"),
            (std::vector<std::string>{"AFDEMPTY.TXT", "AFDXXX.TXT", "FILLFILE.TXT", "TORXXX.TXT",
                                      "TORXXX.TXT.1"}));
}

TEST(Road, AMoreUrgentFileCutsInAtTheNextBlockAndTheOtherGoesOn) {
  VirtualStation station;
  station.Rule(0, "TOR*");
  station.Rule(2, "AFD*");
  station.Drop("AFDXXX.TXT", SampleText(4 * 1024));
  station.Start();
  station.Run(25s);  // a block takes 10.2 s at 1200 baud
  station.Drop("TORXXX.TXT", SampleText(2 * 1024));
  station.Run(50s);
  EXPECT_EQ(NamesOf(station.Packets()),
            (std::vector<std::string>{"AFDXXX.TXT 1", "AFDXXX.TXT 2", "AFDXXX.TXT 3",
                                      "TORXXX.TXT 1", "TORXXX.TXT 2", "AFDXXX.TXT 4"}));
}

}  // namespace
}  // namespace ostrel
