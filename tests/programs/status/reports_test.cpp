// What the page and the metrics make of a station's answer.
#include "programs/status/reports.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "programs/status/asked_host.h"

namespace ostrel {
namespace {

constexpr const char* kStatus = R"({
  "version": "3.0.0", "now": "2026-11-26T00:40:12Z", "started": "2026-11-25T06:00:01Z",
  "state": "idle", "endsIn": 0, "keyed": true, "port": "Com Port # 1 opened for transmit.",
  "rate": 1200, "sincePacket": 75.0, "sinceArrival": null, "onAir": null,
  "queues": [{"priority": 1, "files": 2, "bytes": 3000, "outIn": null, "oldest": 61.0},
             {"priority": 2, "files": 0, "bytes": 0, "outIn": null, "oldest": null}],
  "sinceMidnight": {"files": 1, "packets": 2, "fills": 3, "discarded": 4, "unmatched": 5,
                    "purged": 6, "replaced": 7, "errors": {"Timer": 8}},
  "sinceStart": {"files": 11, "packets": 12, "fills": 13, "discarded": 14, "unmatched": 15,
                 "purged": 16, "replaced": 17, "errors": {"Timer": 18, "MakePacket": 1}},
  "compressionRatio": 1.5, "nextIdentification": null, "freeBytes": 1.25e9, "intakePaused": true,
  "silentFor": 75.0, "silentBecause": "The fill file cannot be sent. It is empty",
  "intake": {
    "ingest": {"files": 10000, "more": true, "oldest": 3661.0, "trouble": null},
    "holding": {"files": 0, "more": false, "oldest": null, "trouble": "Device I/O error"},
    "compression": {"files": 0, "more": false, "oldest": null, "trouble": null},
    "kept": {"files": 3, "more": false, "oldest": 5.0, "trouble": null},
    "quarantine": {"files": 1, "more": false, "oldest": 8.0, "trouble": null},
    "blocked": {"folder": "RxFiles", "name": "A\u001b.TXT", "reason": "Permission denied",
                "for": 61.0, "nextTry": null},
    "refused": [{"folder": "RtPri3", "name": "B.TXT", "reason": "Disk full", "for": 90.0,
                 "nextTry": 20.0}], "refusedCount": 4}
})";

void ExpectIn(const std::string& text, const std::vector<std::string>& parts) {
  for (const auto& part : parts) EXPECT_NE(text.find(part), std::string::npos) << part;
}

TEST(StatusReports, TellPeopleWhatIsWrongAndNothingOfWhatIsNot) {
  const auto page = PageOf(Status::parse(kStatus));
  ExpectIn(page,
           {"Station              idle, keyed\n", "Last packet          1 min 15 s ago\n",
            "Last arrival         never, intake paused by an operator\n",
            "In the ingest folder 10000 or more, the oldest 1 h 1 min\n",
            "In holding folders   Device I/O error\n", "Kept, a list is lost 3, the oldest 5 s\n",
            "In the quarantine    1, the oldest 8 s\n",
            "Held up by           RxFiles/A\\x1B.TXT for 1 min 1 s: Permission denied\n",
            "Refused              RtPri3/B.TXT for 1 min 30 s: Disk full (tried again in 20 s)\n",
            "Refused              3 more\n",
            "Silent because       The fill file cannot be sent. It is empty\n",
            "Free on the disk     1.2 GB\n",
            "Since midnight       1 files, 2 packets, 3 fills, 4 discarded, 5 unmatched, "
            "6 purged, 7 replaced, 8 errors\n",
            "Since the start      11 files, 12 packets, 13 fills, 14 discarded, "
            "15 unmatched, 16 purged, 17 replaced, 19 errors\n",
            "         1       2       3000    1 min 1 s\n"});
  EXPECT_EQ(page.find("Awaiting a block"), std::string::npos);
}

TEST(StatusReports, GiveMetricsThatCountFromTheStart) {
  const auto metrics = MetricsOf(Status::parse(kStatus));
  ExpectIn(metrics, {"ostrel_state{state=\"idle\"} 1\n",
                     "ostrel_state{state=\"sending\"} 0\n",
                     "ostrel_keyed 1\n",
                     "ostrel_last_packet_age_seconds 75\n",
                     "ostrel_silent_seconds 75\n",
                     "ostrel_free_bytes 1250000000\n",
                     "ostrel_queue_files{priority=\"1\"} 2\n",
                     "ostrel_queue_bytes{priority=\"1\"} 3000\n",
                     "ostrel_queue_oldest_seconds{priority=\"1\"} 61\n",
                     "ostrel_queue_oldest_seconds{priority=\"2\"} 0\n",
                     "ostrel_folder_files{folder=\"ingest\"} 10000\n",
                     "ostrel_folder_oldest_seconds{folder=\"kept\"} 5\n",
                     "ostrel_ingest_blocked_seconds 61\n",
                     "ostrel_refused_files 4\n",
                     "ostrel_files_total 11\n",
                     "ostrel_packets_total 12\n",
                     "ostrel_fills_total 13\n",
                     "ostrel_discarded_total 14\n",
                     "ostrel_unmatched_total 15\n",
                     "ostrel_purged_total 16\n",
                     "ostrel_replaced_total 17\n",
                     "ostrel_errors_total{procedure=\"MakePacket\"} 1\n",
                     "ostrel_up 1\n"});
  EXPECT_EQ(metrics.find("ostrel_last_arrival"), std::string::npos) << "nothing came";
  EXPECT_EQ(MetricsOf(nullptr).find("ostrel_keyed"), std::string::npos);
  ExpectIn(MetricsOf(nullptr), {"ostrel_up 0\n"});
}

TEST(AskedHost, IsAnAddressOrANameThatWasTold) {
  for (const auto* host : {"", "127.0.0.1", "127.0.0.1:8080", "[::1]:8080", "[::1]", "LocalHost:80",
                           "shed.lan", "SHED.lan:8080"})
    EXPECT_TRUE(IsMeant(host, {"Shed.lan"})) << host;
  for (const auto* host : {"evil.example", "127.0.0.1.evil.example", "localhost.evil.example:8080",
                           "shed.lan.evil.example", "[::1].evil.example", "1.2.3", "[", "a:b:c"})
    EXPECT_FALSE(IsMeant(host, {"shed.lan"})) << host;
}

}  // namespace
}  // namespace ostrel
