// What is put out of the way keeps its reason and its place, and comes back.
#include "intake/quarantine.h"

#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

struct Keeper : VirtualStation {
  Keeper() {
    machine.history.isKept = true;
    Rule(2, "AFD*");
    StartBusy();
  }
  Quarantine& quarantine() { return station->quarantine(); }
  std::string Take(const std::string& place, std::optional<Priority> p, const std::string& reason) {
    WriteFile(Path(place), "a product");
    return quarantine().Take(Path(place), p, std::string(FileNameOf(place)), reason);
  }
  Lines Fates() {
    Lines fates;
    for (const auto& [id, row] : machine.history.rows)
      fates.push_back(row.name + " " + kFateWords[static_cast<std::size_t>(row.fate)]);
    return fates;
  }
};

TEST(Quarantine, KeepsReasonAndPlaceOverARestartWhateverTheNamesHold) {
  Keeper station;
  const std::string odd = "A%2\t\n.TXT", plain = "AFDB.TXT";
  station.Take("KvData/RxFiles/" + odd, {}, "Permission\ndenied\t100%");
  station.Take("KvData/RtPri3/" + plain, Priority(3), "Device I/O error");
  station.Take("KvData/RxFiles/" + plain, {}, "once more");
  EXPECT_EQ(station.Names("KvData/RtQuarantine"), (Lines{odd, plain, "AFDB.TXT.1"}));
  station.Restart();
  station.Start();
  const auto items = station.quarantine().List();
  ASSERT_EQ(items.size(), 3U);
  EXPECT_EQ(items[0].reason, "Permission\ndenied\t100%");
  EXPECT_EQ(items[0].origin, station.Path("KvData/RxFiles/" + odd));
  EXPECT_EQ(items[1].p, Priority(3));
  EXPECT_GE(items[1].since, kNoon);
  EXPECT_EQ(station.quarantine().Find("afdb.txt.1")->reason, "once more");

  station.quarantine().Delete(items[0]);
  station.WriteFile(station.Path("KvData/RxFiles/" + plain), "taken meanwhile");
  EXPECT_EQ(station.quarantine().Restore(items[2]), station.Path("KvData/RxFiles/AFDB.TXT.1"));
  EXPECT_EQ(station.quarantine().Restore(items[1]), station.Path("KvData/RtPri3/" + plain));
  EXPECT_TRUE(station.quarantine().List().empty());
  station.Run(1s);
  EXPECT_EQ(station.Queue(3).size(), 3U);
  station.Restart();
  EXPECT_TRUE(station.quarantine().List().empty());
  EXPECT_EQ(station.ReadFile(station.Path("KvData/RtQuarantine/.reasons")), "")
      << "what is gone is forgotten";
}

TEST(Quarantine, EndsTheProductAndGoesBesideWhereItCannotBeReached) {
  Keeper station;
  const auto refuseOnce = [&](std::int32_t number) {
    station.files.renameFault = [=, left = 1](const std::string&) mutable {
      if (left-- > 0) throw Failure(number, "as told");
    };
  };
  refuseOnce(18);  // another file system
  const auto there = station.Take("KvData/RxFiles/AFDA.TXT", {}, "why");
  EXPECT_EQ(there, station.Path("KvData/RxFiles/.RtQuarantine/AFDA.TXT"));
  EXPECT_EQ(station.quarantine().Find("AFDA.TXT")->reason, "why");
  EXPECT_EQ(station.Fates(), (Lines{"BUSY.TXT on the air", "AFDA.TXT set aside"}));

  station.files.appendFault = [](const std::string& path) {
    if (path.ends_with(".reasons")) throw Failure(failure_number::kDiskFull, "Disk full");
  };
  EXPECT_NO_THROW(station.Take("KvData/RtPri3/AFDC.TXT", Priority(3), "no room for the reason"));
  EXPECT_EQ(station.quarantine().Find("AFDC.TXT")->reason, "no room for the reason");
  EXPECT_EQ(station.Fates().back(), "AFDC.TXT set aside");
  refuseOnce(failure_number::kFileNotFound);
  EXPECT_THROW(station.Take("KvData/RtPri3/AFDD.TXT", {}, ""), Failure);
  EXPECT_EQ(station.Fates().back(), "AFDC.TXT set aside");
}

}  // namespace
}  // namespace ostrel
